#pragma once

// Measuring rendered or recorded audio the way an ear would check it: how loud, how loud at one
// pitch (Goertzel's filter), and at what pitch.

#include <QByteArray>
#include <cstddef>
#include <vector>

namespace sylvora::test {

// The left channel of a render, kept in memory.
class Recording {
public:
    void append(const float* interleaved, std::size_t frames);
    const std::vector<float>& left() const { return left_; }
    // Peak amplitude of a sine of `frequency` in the window; exact for a steady sine that
    // completes a whole number of cycles in it.
    double amplitude(std::size_t firstFrame, std::size_t frames, double frequency, int rate) const;

private:
    std::vector<float> left_;
};

// Signed 16-bit little-endian interleaved stereo, averaged to mono in -1..1.
std::vector<float> monoFromS16Stereo(const QByteArray& raw);

double rms(const std::vector<float>& samples, std::size_t from, std::size_t count);

// The start of the loudest window of `count` samples, looked for in steps of count / 4.
std::size_t loudestWindow(const std::vector<float>& samples, std::size_t count);

// The frequency between `low` and `high` Hz with the most energy in the window, to within a
// tenth of a hertz (a coarse scan refined around its peak).
double dominantFrequency(const std::vector<float>& samples, std::size_t from, std::size_t count, int rate,
                         double low, double high);

}  // namespace sylvora::test
