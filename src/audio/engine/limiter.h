#pragma once

// The master limiter every render passes through, so that no world can clip whatever it piles up:
// a look-ahead peak limiter with its ceiling below full scale. It delays the sound by its
// look-ahead, sees each peak coming, and lowers the gain smoothly before the peak arrives, then
// lets it back up slowly. Below its ceiling it multiplies by exactly 1: a quiet world passes
// unchanged (only later by the look-ahead). Deterministic: the same input gives the same output.
//
// Lifecycle: construct [main] (allocates) -> process() [RT] block after block, never allocating.

#include <cstddef>
#include <vector>

namespace sylvora::audio {

class Limiter {
public:
    static constexpr double LOOKAHEAD_SECONDS = 0.005;
    static constexpr double CEILING = 0.891250938;   // -1 dBFS
    static constexpr double RELEASE_SECONDS = 0.08;  // time constant of the return to full gain

    explicit Limiter(int sampleRate);

    // [RT] Limits `frames` frames of interleaved stereo in place; what comes out is what went in
    // latencyFrames() earlier, with the limiter's gain applied.
    void process(float* interleaved, std::size_t frames) noexcept;

    std::size_t latencyFrames() const noexcept { return lookahead_; }
    double gain() const noexcept { return gain_; }  // the gain applied to the last frame out

private:
    double wantedGain(float left, float right) const noexcept;
    double windowMinimum(double wanted) noexcept;  // least wanted gain over the look-ahead
    void delayOnly(float* interleaved, std::size_t frames) noexcept;

    std::size_t lookahead_;
    double releaseCoefficient_;
    std::vector<float> delay_;  // lookahead_ frames of interleaved stereo
    std::vector<float> spare_;  // the next delay line, filled by a long block
    std::size_t delayAt_ = 0;
    // Monotonic queue of (frame, wanted gain) whose front is the window's minimum.
    std::vector<double> queueGain_;
    std::vector<std::size_t> queueFrame_;
    std::size_t queueHead_ = 0;
    std::size_t queueSize_ = 0;
    std::size_t frame_ = 0;
    // Box average over the look-ahead of the window minimum: reaches a peak's gain exactly when
    // the peak leaves the delay, along a straight ramp rather than a step.
    std::vector<double> box_;
    std::size_t boxAt_ = 0;
    double boxSum_;
    long boxBelow_ = 0;  // entries of box_ below 1
    double gain_ = 1.0;
};

}  // namespace sylvora::audio
