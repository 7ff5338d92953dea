#include "loopsounds.h"

#include <cmath>
#include <numbers>

#include "drift.h"
#include "filters.h"
#include "noise.h"
#include "scatter.h"

namespace sylvora::synth {

namespace {

constexpr double FOLD_SECONDS = 4.0;
constexpr double TWO_PI = 2.0 * std::numbers::pi;

// A drop of water on a leaf: a short decaying ping.
std::vector<double> makeDrop(Random& random) {
    const double frequency = random.uniform(1800.0, 5200.0);
    const double decay = random.uniform(0.004, 0.018);
    const auto n = static_cast<std::size_t>(decay * 6.0 * SAMPLE_RATE);
    std::vector<double> drop(n);
    double phase = random.unit() * TWO_PI;
    for (std::size_t i = 0; i < n; ++i) {
        const double t = static_cast<double>(i) / SAMPLE_RATE;
        // The pitch falls a little as the ripple spreads.
        phase += TWO_PI * frequency * (1.0 - 0.25 * t / (decay * 6.0)) / SAMPLE_RATE;
        const double attack = std::min(1.0, t / 0.0006);
        drop[i] = std::sin(phase) * std::exp(-t / decay) * attack;
    }
    return drop;
}

// An air bubble in running water: a sine whose pitch rises as it nears the surface.
std::vector<double> makeBubble(Random& random) {
    const double frequency = random.uniform(350.0, 1300.0);
    const double rise = random.uniform(1.5, 5.0);
    const double decay = random.uniform(0.012, 0.045);
    const auto n = static_cast<std::size_t>(decay * 5.0 * SAMPLE_RATE);
    std::vector<double> bubble(n);
    double phase = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        const double t = static_cast<double>(i) / SAMPLE_RATE;
        phase += TWO_PI * frequency * (1.0 + rise * t) / SAMPLE_RATE;
        const double attack = std::min(1.0, t / 0.002);
        bubble[i] = std::sin(phase) * std::exp(-t / decay) * attack;
    }
    return bubble;
}

}  // namespace

StereoBuffer makeRain(double seconds, unsigned seed) {
    StereoBuffer rain(seconds + FOLD_SECONDS);
    Random random(seed);
    for (int side = 0; side < 2; ++side) {
        std::vector<double>& out = side == 0 ? rain.left : rain.right;
        Random noise(seed * 31 + static_cast<unsigned>(side) + 7);
        Biquad hissHighPass(Biquad::Kind::HighPass, 600.0, 0.7, SAMPLE_RATE);
        Biquad hissLowPass(Biquad::Kind::LowPass, 6500.0, 0.7, SAMPLE_RATE);
        PinkNoise pink;
        Biquad patterLowPass(Biquad::Kind::LowPass, 1100.0, 0.7, SAMPLE_RATE);
        Biquad patterHighPass(Biquad::Kind::HighPass, 120.0, 0.7, SAMPLE_RATE);
        Drift sideIntensity(6.0, SAMPLE_RATE, seed + 1);  // the same movement on both sides
        for (double& sample : out) {
            const double level = 0.75 + 0.25 * sideIntensity.next();
            const double white = noise.bipolar();
            const double hiss = hissLowPass.process(hissHighPass.process(white));
            const double patter = patterHighPass.process(patterLowPass.process(pink.process(noise.bipolar())));
            sample = level * (0.55 * hiss + 0.9 * patter);
        }
    }
    scatter(rain, 55.0, 0.9, 0.02, 0.16, random, makeDrop);
    rain.foldIntoLoop(FOLD_SECONDS);
    rain.normalize(-23.0, -7.5);
    return rain;
}

StereoBuffer makeWind(double seconds, unsigned seed) {
    StereoBuffer wind(seconds + FOLD_SECONDS);
    for (int side = 0; side < 2; ++side) {
        std::vector<double>& out = side == 0 ? wind.left : wind.right;
        Random noise(seed * 17 + static_cast<unsigned>(side) + 3);
        PinkNoise pink;
        Biquad howl(Biquad::Kind::BandPass, 400.0, 1.4, SAMPLE_RATE);
        Biquad body(Biquad::Kind::LowPass, 700.0, 0.6, SAMPLE_RATE);
        Biquad leaves(Biquad::Kind::HighPass, 2600.0, 0.7, SAMPLE_RATE);
        // Gusts move both sides together, the pitch of the howl a little apart.
        Drift gust(7.0, SAMPLE_RATE, seed + 11);
        Drift pitch(5.0, SAMPLE_RATE, seed + 21 + static_cast<unsigned>(side));
        OnePole rustleLevel(0.8, SAMPLE_RATE);
        for (std::size_t i = 0; i < out.size(); ++i) {
            const double g = gust.next();
            const double p = pitch.next();
            if (i % 32 == 0) {
                howl.set(260.0 * std::pow(2.0, 1.3 * (0.6 * g + 0.4 * p)), 1.6);
            }
            const double pinkSample = pink.process(noise.bipolar());
            const double strength = 0.35 + 0.65 * g * g;
            const double rustle = rustleLevel.lowpass(g * g * g);
            out[i] = strength * (1.4 * howl.process(pinkSample) + 0.45 * body.process(pinkSample)) +
                     0.07 * rustle * leaves.process(noise.bipolar());
        }
    }
    wind.foldIntoLoop(FOLD_SECONDS);
    wind.normalize(-24.0, -7.5);
    return wind;
}

StereoBuffer makeStream(double seconds, unsigned seed) {
    StereoBuffer stream(seconds + FOLD_SECONDS);
    Random random(seed);
    for (int side = 0; side < 2; ++side) {
        std::vector<double>& out = side == 0 ? stream.left : stream.right;
        Random noise(seed * 13 + static_cast<unsigned>(side) + 5);
        Biquad rush(Biquad::Kind::BandPass, 900.0, 0.5, SAMPLE_RATE);
        Biquad low(Biquad::Kind::LowPass, 300.0, 0.7, SAMPLE_RATE);
        BrownNoise brown;
        Drift flow(3.0, SAMPLE_RATE, seed + 41 + static_cast<unsigned>(side));
        for (std::size_t i = 0; i < out.size(); ++i) {
            const double f = flow.next();
            if (i % 32 == 0) {
                rush.set(700.0 + 700.0 * f, 0.55);
            }
            const double white = noise.bipolar();
            out[i] = (0.6 + 0.4 * f) * rush.process(white) + 0.35 * low.process(brown.process(white));
        }
    }
    scatter(stream, 38.0, 0.6, 0.05, 0.35, random, makeBubble);
    stream.foldIntoLoop(FOLD_SECONDS);
    stream.normalize(-23.0, -7.5);
    return stream;
}

}  // namespace sylvora::synth
