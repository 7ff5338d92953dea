#pragma once

// The example world's one-shots: three bird calls, crickets and a distant roll of thunder. Each
// starts and ends in silence, so it can begin and stop anywhere without a click.

#include "stereobuffer.h"

namespace sylvora::synth {

StereoBuffer makeBlackbirdCall(unsigned seed);  // two falling whistles, twice
StereoBuffer makeWrenTrill(unsigned seed);      // a fast rising trill that ends on a high note
StereoBuffer makeRobinWhistle(unsigned seed);  // a wavering "tee-oo", answered once
StereoBuffer makeCrickets(unsigned seed);
StereoBuffer makeThunder(unsigned seed);

}  // namespace sylvora::synth
