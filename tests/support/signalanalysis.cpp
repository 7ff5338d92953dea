#include "signalanalysis.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace sylvora::test {

namespace {

template <typename Sample>
double goertzelPower(const Sample* samples, std::size_t count, int rate, double frequency) {
    const double coefficient = 2.0 * std::cos(2.0 * std::numbers::pi * frequency / rate);
    double s1 = 0.0;
    double s2 = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        const double s0 = samples[i] + coefficient * s1 - s2;
        s2 = s1;
        s1 = s0;
    }
    return s1 * s1 + s2 * s2 - coefficient * s1 * s2;
}

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

double scan(const std::vector<double>& samples, int rate, double low, double high, double step) {
    double best = low;
    double bestPower = -1.0;
    for (double f = low; f <= high; f += step) {
        const double power = goertzelPower(samples.data(), samples.size(), rate, f);
        if (power > bestPower) {
            bestPower = power;
            best = f;
        }
    }
    return best;
}

}  // namespace

void Recording::append(const float* interleaved, std::size_t frames) {
    for (std::size_t i = 0; i < frames; ++i) left_.push_back(interleaved[2 * i]);
}

double Recording::amplitude(std::size_t firstFrame, std::size_t frames, double frequency, int rate) const {
    if (firstFrame >= left_.size()) return 0.0;
    frames = std::min(frames, left_.size() - firstFrame);
    if (frames == 0) return 0.0;
    const double power = goertzelPower(left_.data() + firstFrame, frames, rate, frequency);
    return 2.0 * std::sqrt(std::max(0.0, power)) / static_cast<double>(frames);
}

std::vector<float> monoFromS16Stereo(const QByteArray& raw) {
    const std::size_t frames = static_cast<std::size_t>(raw.size()) / 4;
    std::vector<float> mono(frames);
    const auto sample = [&raw](std::size_t at) {
        const auto low = static_cast<unsigned char>(raw[static_cast<qsizetype>(at)]);
        const auto high = static_cast<unsigned char>(raw[static_cast<qsizetype>(at + 1)]);
        return static_cast<std::int16_t>(static_cast<std::uint16_t>(low | (high << 8)));
    };
    for (std::size_t i = 0; i < frames; ++i) mono[i] = static_cast<float>((sample(4 * i) + sample(4 * i + 2)) / 65536.0);
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
