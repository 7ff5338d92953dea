#include "voices.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "filters.h"
#include "stereobuffer.h"

namespace sylvora::synth {

std::vector<double> sing(const Call& call, Random& random) {
    constexpr double TWO_PI = 2.0 * std::numbers::pi;
    const auto n = static_cast<std::size_t>(call.length * SAMPLE_RATE);
    std::vector<double> out(n);
    Biquad throat(Biquad::Kind::BandPass, call.formantHz, 1.8, SAMPLE_RATE);
    Biquad breathBand(Biquad::Kind::BandPass, call.formantHz, 1.2, SAMPLE_RATE);
    OnePole wobble(45.0, SAMPLE_RATE);
    double phase = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        const double x = static_cast<double>(i) / static_cast<double>(n);
        // A quadratic through the three pitches: start at x=0, middle at x=0.5, end at x=1.
        const double p0 = call.pitch[0], p1 = call.pitch[1], p2 = call.pitch[2];
        const double frequency = p0 * (1 - x) * (1 - 2 * x) + 4 * p1 * x * (1 - x) + p2 * x * (2 * x - 1);
        phase += TWO_PI * frequency / SAMPLE_RATE;
        double tone = 0.0;
        for (int h = 1; h <= call.harmonics; ++h) tone += std::sin(h * phase) / h;
        const double voiced = call.harmonics > 1 ? 1.6 * throat.process(tone) + 0.25 * tone : tone;
        const double rough = 1.0 - call.roughness * 0.5 * (1.0 + wobble.lowpass(random.bipolar() * 6.0));
        const double rise = std::min(1.0, x / std::max(call.attack, 1e-3));
        const double fall = std::min(1.0, (1.0 - x) / 0.25);
        const double envelope = std::sin(0.5 * std::numbers::pi * rise) * std::sin(0.5 * std::numbers::pi * fall);
        out[i] = envelope * (rough * voiced + call.breath * 3.0 * breathBand.process(random.bipolar()));
    }
    return out;
}

std::vector<double> sequence(const std::vector<std::pair<double, std::vector<double>>>& gapsAndCalls) {
    std::vector<double> line;
    for (const auto& [gap, call] : gapsAndCalls) {
        line.resize(line.size() + static_cast<std::size_t>(gap * SAMPLE_RATE), 0.0);
        line.insert(line.end(), call.begin(), call.end());
    }
    return line;
}

}  // namespace sylvora::synth
