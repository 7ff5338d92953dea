#include "audio/engine/streamring.h"

#include <algorithm>
#include <bit>

namespace sylvora::audio {

StreamRing::StreamRing(std::uint32_t segmentId, std::int64_t start, int channelCount,
                       std::size_t requestedFrames)
    : segment(segmentId),
      startFrame(start),
      channels(channelCount),
      capacity_(std::bit_ceil(requestedFrames)),
      mask_(capacity_ - 1) {
    data_.resize(capacity_ * static_cast<std::size_t>(channels));
}

std::size_t StreamRing::writableFrames() const noexcept {
    const std::uint64_t w = written_.load(std::memory_order_relaxed);
    const std::uint64_t r = read_.load(std::memory_order_acquire);
    return capacity_ - static_cast<std::size_t>(w - r);
}

float* StreamRing::writeSpan(std::size_t& frames) noexcept {
    const std::uint64_t w = written_.load(std::memory_order_relaxed);
    const std::size_t at = static_cast<std::size_t>(w) & mask_;
    frames = std::min(writableFrames(), capacity_ - at);
    return data_.data() + at * static_cast<std::size_t>(channels);
}

void StreamRing::commitWrite(std::size_t frames) noexcept {
    written_.store(written_.load(std::memory_order_relaxed) + frames, std::memory_order_release);
}

std::size_t StreamRing::readableFrames() const noexcept {
    return static_cast<std::size_t>(written_.load(std::memory_order_acquire) -
                                    read_.load(std::memory_order_relaxed));
}

const float* StreamRing::readSpan(std::size_t& frames) const noexcept {
    const std::uint64_t r = read_.load(std::memory_order_relaxed);
    const std::size_t at = static_cast<std::size_t>(r) & mask_;
    frames = std::min(readableFrames(), capacity_ - at);
    return data_.data() + at * static_cast<std::size_t>(channels);
}

void StreamRing::consume(std::size_t frames) noexcept {
    read_.store(read_.load(std::memory_order_relaxed) + frames, std::memory_order_release);
}

bool StreamRing::exhausted() const noexcept {
    // The end flag is read first: once it is set, no write follows it.
    return ended_.load(std::memory_order_acquire) && readableFrames() == 0;
}

std::int64_t StreamRing::readFrame() const noexcept {
    return startFrame + static_cast<std::int64_t>(read_.load(std::memory_order_acquire));
}

std::int64_t StreamRing::writtenEnd() const noexcept {
    return startFrame + static_cast<std::int64_t>(written_.load(std::memory_order_acquire));
}

}  // namespace sylvora::audio
