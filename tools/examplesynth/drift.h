#pragma once

// Slow random movement for levels and filter frequencies: a value that glides with cosine
// interpolation between random targets, one new target every `period` seconds.

#include <cmath>
#include <numbers>

#include "noise.h"

namespace sylvora::synth {

class Drift {
public:
    Drift(double periodSeconds, double sampleRate, std::uint64_t seed)
        : step(1.0 / (periodSeconds * sampleRate)), random(seed), from(random.unit()), to(random.unit()) {}

    // The next value, 0..1.
    double next() {
        phase += step;
        if (phase >= 1.0) {
            phase -= 1.0;
            from = to;
            to = random.unit();
        }
        const double blend = 0.5 - 0.5 * std::cos(std::numbers::pi * phase);
        return from + (to - from) * blend;
    }

private:
    double step;
    double phase = 0.0;
    Random random;
    double from;
    double to;
};

}  // namespace sylvora::synth
