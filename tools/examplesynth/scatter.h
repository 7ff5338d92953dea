#pragma once

// Short events strewn over a sound at the times of a Poisson process, each placed and levelled at
// random, and the thinned variant whose density follows an envelope (rattles that die away).

#include <cmath>
#include <cstddef>
#include <vector>

#include "noise.h"
#include "stereobuffer.h"

namespace sylvora::synth {

// Adds `perSecond` events on average; a kept event's gain lies between `minGain` and `maxGain`
// (evenly in decibels) and its pan within ±`spread`. `density(t)`, 0..1, keeps that share of the
// events at time t.
template <typename MakeEvent, typename Density>
void scatter(StereoBuffer& sound, double perSecond, double spread, double minGain, double maxGain,
             Random& random, MakeEvent makeEvent, Density density) {
    double t = random.exponential(perSecond);
    while (t < sound.seconds()) {
        const double keep = density(t);
        if (keep >= 1.0 || random.unit() < keep) {
            const std::vector<double> event = makeEvent(random);
            const double gain = minGain * std::pow(maxGain / minGain, random.unit());
            sound.addMono(event, static_cast<std::ptrdiff_t>(t * SAMPLE_RATE), random.uniform(-spread, spread), gain);
        }
        t += random.exponential(perSecond);
    }
}

template <typename MakeEvent>
void scatter(StereoBuffer& sound, double perSecond, double spread, double minGain, double maxGain,
             Random& random, MakeEvent makeEvent) {
    scatter(sound, perSecond, spread, minGain, maxGain, random, makeEvent, [](double) { return 1.0; });
}

}  // namespace sylvora::synth
