#pragma once

// Counts render() calls so that other threads know when the audio thread can no longer hold a
// pointer they have unpublished: unpublish, take a stamp(), and free once passed(stamp). A render
// that began before the stamp may still use the old pointer; one that begins after cannot see it.

#include <atomic>
#include <cstdint>

namespace sylvora::audio {

struct RenderEpochs {
    std::atomic<std::uint64_t> begun{0};     // written by the audio thread
    std::atomic<std::uint64_t> finished{0};  // written by the audio thread

    // [RT]
    std::uint64_t enter() noexcept { return begun.fetch_add(1, std::memory_order_seq_cst) + 1; }
    void leave(std::uint64_t ticket) noexcept { finished.store(ticket, std::memory_order_release); }

    // [main] [stream] Call after the pointer was unpublished with a seq_cst store.
    std::uint64_t stamp() const noexcept { return begun.load(std::memory_order_seq_cst); }
    bool passed(std::uint64_t stamp) const noexcept {
        return finished.load(std::memory_order_acquire) >= stamp;
    }
};

}  // namespace sylvora::audio
