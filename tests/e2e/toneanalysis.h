#pragma once

// Measuring a recording the way an ear would check it: is there sound, and at what pitch.

#include <QByteArray>
#include <cstddef>
#include <vector>

namespace sylvora::test {

// Signed 16-bit little-endian interleaved stereo, averaged to mono in -1..1.
std::vector<float> monoFromS16Stereo(const QByteArray& raw);

double rms(const std::vector<float>& samples, std::size_t from, std::size_t count);

// The start of the loudest window of `count` samples, looked for in steps of count / 4.
std::size_t loudestWindow(const std::vector<float>& samples, std::size_t count);

// The frequency between `low` and `high` Hz with the most energy in the window, to within a
// tenth of a hertz (Goertzel's filter, a coarse scan refined around its peak).
double dominantFrequency(const std::vector<float>& samples, std::size_t from, std::size_t count, int rate,
                         double low, double high);

}  // namespace sylvora::test
