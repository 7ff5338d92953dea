#pragma once

// Lock-free single-producer single-consumer ring of engine-rate frames for one play of a streamed
// instance. The streaming thread writes, the audio thread reads. A ring belongs to one segment of
// play (a start or a rewind) and begins at that segment's frame; the audio thread ignores a ring
// of another segment, so a stale ring can never be heard at the wrong place.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace sylvora::audio {

class StreamRing {
  public:
    StreamRing(std::uint32_t segment, std::int64_t startFrame, int channels, std::size_t requestedFrames);

    const std::uint32_t segment;
    const std::int64_t startFrame;
    const int channels;

    // [stream] Space for more frames, as up to two contiguous spans; commit what was written.
    std::size_t writableFrames() const noexcept;
    float* writeSpan(std::size_t& frames) noexcept;
    void commitWrite(std::size_t frames) noexcept;
    // [stream] Nothing follows what has been written.
    void markEnd() noexcept { ended_.store(true, std::memory_order_release); }

    // [RT] Frames ready to read, the first contiguous span of them, and consuming them.
    std::size_t readableFrames() const noexcept;
    const float* readSpan(std::size_t& frames) const noexcept;
    void consume(std::size_t frames) noexcept;
    // [RT] Every frame the ring will ever hold has been read.
    bool exhausted() const noexcept;
    // [any] Engine frame that the next read delivers.
    std::int64_t readFrame() const noexcept;
    // [any] Engine frame that follows the last one written.
    std::int64_t writtenEnd() const noexcept;
    std::size_t capacityFrames() const noexcept { return capacity_; }
    bool full() const noexcept { return writableFrames() == 0 || ended_.load(std::memory_order_acquire); }

  private:
    std::vector<float> data_;
    std::size_t capacity_;  // frames, a power of two
    std::size_t mask_;
    std::atomic<std::uint64_t> written_{0};  // written by the streaming thread
    std::atomic<std::uint64_t> read_{0};     // written by the audio thread
    std::atomic<bool> ended_{false};         // written by the streaming thread
};

}  // namespace sylvora::audio
