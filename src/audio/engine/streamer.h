#pragma once

// The one streaming thread: it opens, decodes and resamples every streamed instance that is
// playing or about to, into a ring of its own, and frees rings that are no longer wanted once the
// audio thread cannot be reading them. It never blocks the audio thread; the audio thread never
// waits for it (a ring that runs dry plays silence and is counted).

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "audio/engine/renderepochs.h"

namespace sylvora::audio {

class StreamRing;
class Voice;

class Streamer {
  public:
    // Rings share one memory budget: a ring is sized when its play is readied, from the budget
    // and the rings then in use, between MIN_RING_FRAMES (0.34 s at 48 kHz; a hundred such stereo
    // rings are the budget) and MAX_RING_FRAMES (2.7 s). A few playing streams get long rings,
    // refilled in large reads a second or so apart; a hundred get short ones, and all the longer
    // rings together add at most 3.5 MiB to what a hundred short ones hold.
    static constexpr std::size_t RING_BUDGET_BYTES = 100 * 16384 * 2 * sizeof(float);
    static constexpr std::size_t MIN_RING_FRAMES = 16384;
    static constexpr std::size_t MAX_RING_FRAMES = 131072;
    // The thread sleeps until the emptiest draining ring is down to its refill mark, tops every
    // ring up in one pass, emptiest first, and sleeps again. The mark is half a long ring, and a
    // short ring's three quarters (0.26 s at 48 kHz left to ride out a busy core or a slow disk).
    static constexpr std::size_t MIN_REFILL_AT = MIN_RING_FRAMES * 3 / 4;
    // [any] The frames a ring is refilled at.
    static std::size_t refillAt(const StreamRing& ring) noexcept;
    // The frames of a ring of `channels` readied while `ringsInUse` others are.
    static std::size_t ringFrames(std::size_t ringsInUse, int channels) noexcept;

    Streamer(int engineRate, const RenderEpochs& epochs);
    ~Streamer();
    Streamer(const Streamer&) = delete;
    Streamer& operator=(const Streamer&) = delete;

    void add(std::shared_ptr<Voice> voice);  // [main]
    void remove(const Voice* voice);         // [main]
    void wake();                             // [main]
    // [main] Serves every request made so far and fills every ring, on the calling thread: an
    // offline render pulls faster than real time, and handing each block to the streaming thread
    // and back would cost more than the filling itself. The result is the same either way.
    void serveNow();
    // [main] The same guarantee for the next `frames` frames of every ring about to be read: it
    // fills only rings that lack them, itself, and wakes the streaming thread to fill ahead those
    // running low while the caller mixes and writes. The next `frames` render as after serveNow().
    void serveAhead(std::size_t frames);
    std::size_t ringsInUse() const noexcept { return rings_.load(std::memory_order_relaxed); }  // [any]

  private:
    using Clock = std::chrono::steady_clock;

    void run();                                       // [stream]
    enum class Need { Nothing, Soon, Frames };
    // [main] Whether the ring of `voice` must be filled before `frames` more are read.
    Need needs(const Voice& voice, std::size_t frames) const;
    // [stream] [main] One pass over every voice, under passMutex_; returns when the next is due.
    Clock::time_point pass();
    bool serve(Voice& voice, bool stalled);           // [stream] [main] true: check again soon
    void openRing(Voice& voice, std::uint64_t want);  // [stream] [main]
    void fill(Voice& voice, std::size_t upTo = ~std::size_t{0});  // [stream] [main]
    void retire(std::unique_ptr<StreamRing> ring);    // [stream] [main]

    const int engineRate_;
    const RenderEpochs& epochs_;

    std::mutex mutex_;
    std::condition_variable wake_;
    std::vector<std::shared_ptr<Voice>> voices_;  // guarded by mutex_
    bool stopping_ = false;                       // guarded by mutex_
    bool nudged_ = false;                         // guarded by mutex_

    // One pass at a time; the pass's own state below belongs to whoever holds it. A voice's
    // streaming state is guarded by its own lock, so that an offline main thread can fill one
    // ring while the streaming thread fills another.
    std::mutex passMutex_;
    std::vector<std::shared_ptr<Voice>> passVoices_;
    std::vector<std::pair<std::size_t, std::size_t>> passOrder_;  // ring level, index in passVoices_
    std::mutex graveyardMutex_;
    std::vector<std::pair<std::unique_ptr<StreamRing>, std::uint64_t>> graveyard_;  // guarded by it
    std::uint64_t lastFinished_ = 0;
    Clock::time_point lastProgress_ = Clock::now();
    int idlePasses_ = 0;
    std::atomic<std::size_t> rings_{0};

    std::thread thread_;
};

}  // namespace sylvora::audio
