#pragma once

// libsoxr converting interleaved float frames from a source rate to the engine's rate. soxr removes
// its own filter delay, so output frame 0 lines up with input frame 0.

#include <cstddef>

struct soxr;

namespace sylvora::audio {

class Resampler {
  public:
    Resampler(int inputRate, int outputRate, int channels);
    ~Resampler();
    Resampler(const Resampler&) = delete;
    Resampler& operator=(const Resampler&) = delete;

    bool valid() const noexcept { return soxr_ != nullptr; }
    // Converts what it can of `in` (null with inFrames 0 at the end of the input, to drain the
    // filter) into `out`; reports how much of each side was used.
    bool process(const float* in, std::size_t inFrames, std::size_t& inUsed, float* out,
                 std::size_t outFrames, std::size_t& outMade);

  private:
    soxr* soxr_ = nullptr;
};

}  // namespace sylvora::audio
