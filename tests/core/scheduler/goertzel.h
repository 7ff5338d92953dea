#pragma once

// Measuring rendered audio: the amplitude of one frequency over a window (Goertzel), and the
// left channel of a render kept in memory.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace sylvora::test {

// Peak amplitude of a sine of `frequency` in `samples`. Exact for a steady sine that completes a
// whole number of cycles in the window.
double toneAmplitude(const float* samples, std::size_t count, double frequency, int rate);

class Recording {
public:
    void append(const float* interleaved, std::size_t frames);
    const std::vector<float>& left() const { return left_; }
    double amplitude(std::size_t firstFrame, std::size_t frames, double frequency, int rate) const;
    double peak(std::size_t firstFrame, std::size_t frames) const;

private:
    std::vector<float> left_;
};

}  // namespace sylvora::test
