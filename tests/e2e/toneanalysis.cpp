#include "toneanalysis.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>

namespace sylvora::test {

namespace {

// The window's samples with a Hann window applied, which keeps a strong tone's leakage from
// hiding where its peak is.
std::vector<double> windowed(const std::vector<float>& samples, std::size_t from, std::size_t count) {
    std::vector<double> out(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double hann = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(count - 1));
        out[i] = samples[from + i] * hann;
    }
    return out;
}

double goertzelPower(const std::vector<double>& samples, int rate, double frequency) {
    const double coefficient = 2.0 * std::cos(2.0 * std::numbers::pi * frequency / rate);
    double s1 = 0.0, s2 = 0.0;
    for (const double sample : samples) {
        const double s0 = sample + coefficient * s1 - s2;
        s2 = s1;
        s1 = s0;
    }
    return s1 * s1 + s2 * s2 - coefficient * s1 * s2;
}

double scan(const std::vector<double>& samples, int rate, double low, double high, double step) {
    double best = low;
    double bestPower = -1.0;
    for (double f = low; f <= high; f += step) {
        const double power = goertzelPower(samples, rate, f);
        if (power > bestPower) {
            bestPower = power;
            best = f;
        }
    }
    return best;
}

}  // namespace

std::vector<float> monoFromS16Stereo(const QByteArray& raw) {
    const std::size_t frames = static_cast<std::size_t>(raw.size()) / 4;
    std::vector<float> mono(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        std::int16_t left = 0, right = 0;
        std::memcpy(&left, raw.constData() + 4 * i, 2);
        std::memcpy(&right, raw.constData() + 4 * i + 2, 2);
        mono[i] = static_cast<float>((left + right) / 65536.0);
    }
    return mono;
}

double rms(const std::vector<float>& samples, std::size_t from, std::size_t count) {
    double sum = 0.0;
    for (std::size_t i = from; i < from + count && i < samples.size(); ++i) sum += double{samples[i]} * samples[i];
    return count ? std::sqrt(sum / static_cast<double>(count)) : 0.0;
}

std::size_t loudestWindow(const std::vector<float>& samples, std::size_t count) {
    std::size_t best = 0;
    double bestLevel = -1.0;
    const std::size_t step = std::max<std::size_t>(1, count / 4);
    for (std::size_t from = 0; from + count <= samples.size(); from += step) {
        const double level = rms(samples, from, count);
        if (level > bestLevel) {
            bestLevel = level;
            best = from;
        }
    }
    return best;
}

double dominantFrequency(const std::vector<float>& samples, std::size_t from, std::size_t count, int rate, double low,
                         double high) {
    const std::vector<double> window = windowed(samples, from, count);
    const double coarse = scan(window, rate, low, high, 5.0);
    return scan(window, rate, coarse - 5.0, coarse + 5.0, 0.1);
}

}  // namespace sylvora::test
