#pragma once

// Voices of animals heard from afar (gulls, a dog, owls): a tone rich in harmonics whose pitch
// follows a contour, shaped by a resonance like a throat's, with a little breath and roughness.

#include <cstddef>
#include <vector>

#include "noise.h"

namespace sylvora::synth {

struct Call {
    double length;       // seconds
    double pitch[3];     // Hz at the start, the middle and the end; the curve passes smoothly through them
    int harmonics;       // 1 for a pure hoot, more for a bark or a cry
    double formantHz;    // centre of the resonance the harmonics pass through
    double roughness;    // 0..1, a fast irregular wobble of the level
    double breath;       // 0..1, noise mixed in
    double attack;       // share of the length spent rising
};

// One call, mono, silent at both ends.
std::vector<double> sing(const Call& call, Random& random);

// Lays calls one after another with gaps (seconds before each call) into one mono line.
std::vector<double> sequence(const std::vector<std::pair<double, std::vector<double>>>& gapsAndCalls);

}  // namespace sylvora::synth
