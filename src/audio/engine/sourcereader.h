#pragma once

// A sound file as the mixer wants it: frames at the engine's rate, mono kept as one channel and
// everything else folded to stereo, and exactly `totalFrames()` of them however the codec and the
// resampler round (short endings are padded with silence, overlong ones cut).
// Used on the main thread to decode short sounds whole, and on the streaming thread to feed rings.

#include <cstdint>
#include <memory>
#include <vector>

#include "audio/decoders/decoder.h"

namespace sylvora::audio {

class Resampler;

class SourceReader {
  public:
    SourceReader(std::unique_ptr<Decoder> decoder, std::int64_t sourceFrames, int engineRate);
    ~SourceReader();
    SourceReader(const SourceReader&) = delete;
    SourceReader& operator=(const SourceReader&) = delete;

    static int outputChannels(int sourceChannels) noexcept { return sourceChannels == 1 ? 1 : 2; }
    // Length at the engine rate of `sourceFrames` frames at `sourceRate`.
    static std::int64_t engineFrames(std::int64_t sourceFrames, int sourceRate, int engineRate) noexcept;

    bool valid() const noexcept;
    int channels() const noexcept { return channels_; }
    std::int64_t totalFrames() const noexcept { return total_; }
    std::int64_t position() const noexcept { return produced_; }

    // Starts reading at engine frame `frame`; false when the source cannot get there.
    bool seek(std::int64_t frame);
    // Delivers up to `frames` frames into `out`; 0 once totalFrames() have been delivered, or once
    // the source ran out well before them (see cameUpShort()).
    std::size_t read(float* out, std::size_t frames);
    // The source ended more than SHORT_TOLERANCE_FRAMES before its stated length: the file was cut
    // or changed since it was measured. A codec's own rounding stays within the tolerance and is
    // padded with silence instead.
    bool cameUpShort() const noexcept { return short_; }
    static constexpr std::int64_t SHORT_TOLERANCE_FRAMES = 4096;

  private:
    bool refill();

    std::unique_ptr<Decoder> decoder_;
    std::unique_ptr<Resampler> resampler_;
    SoundFormat format_;
    int engineRate_ = 0;
    int channels_ = 0;
    std::int64_t total_ = 0;
    std::int64_t produced_ = 0;
    bool sourceEnded_ = false;
    bool drained_ = false;
    bool short_ = false;
    std::vector<float> raw_;     // decoder output, source channels
    std::vector<float> folded_;  // channels_ per frame
    std::size_t foldedFrames_ = 0;
    std::size_t foldedOffset_ = 0;
};

// Reads every frame of `decoder` once to learn its exact length, then rewinds it. -1 on failure.
std::int64_t countFrames(Decoder& decoder);

}  // namespace sylvora::audio
