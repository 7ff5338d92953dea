#include "goertzel.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace sylvora::test {

double toneAmplitude(const float* samples, std::size_t count, double frequency, int rate) {
    if (count == 0) return 0.0;
    const double coefficient = 2.0 * std::cos(2.0 * std::numbers::pi * frequency / rate);
    double previous = 0.0;
    double beforePrevious = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        const double current = samples[i] + coefficient * previous - beforePrevious;
        beforePrevious = previous;
        previous = current;
    }
    const double power = previous * previous + beforePrevious * beforePrevious - coefficient * previous * beforePrevious;
    return 2.0 * std::sqrt(std::max(0.0, power)) / static_cast<double>(count);
}

void Recording::append(const float* interleaved, std::size_t frames) {
    for (std::size_t i = 0; i < frames; ++i) left_.push_back(interleaved[2 * i]);
}

double Recording::amplitude(std::size_t firstFrame, std::size_t frames, double frequency, int rate) const {
    if (firstFrame >= left_.size()) return 0.0;
    frames = std::min(frames, left_.size() - firstFrame);
    return toneAmplitude(left_.data() + firstFrame, frames, frequency, rate);
}

double Recording::peak(std::size_t firstFrame, std::size_t frames) const {
    double result = 0.0;
    for (std::size_t i = firstFrame; i < std::min(left_.size(), firstFrame + frames); ++i) {
        result = std::max(result, static_cast<double>(std::fabs(left_[i])));
    }
    return result;
}

}  // namespace sylvora::test
