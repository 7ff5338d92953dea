#pragma once

// The example world's loop sounds: long beds of filtered noise with slow movement, each folded
// into a seamless loop. Every call with the same seed gives the same sound.

#include "stereobuffer.h"

namespace sylvora::synth {

StereoBuffer makeRain(double seconds, unsigned seed);
StereoBuffer makeWind(double seconds, unsigned seed);
StereoBuffer makeStream(double seconds, unsigned seed);

}  // namespace sylvora::synth
