#pragma once

#include <QImage>

namespace sylvora::synth {

// An evening forest: a dusk sky from deep blue to a warm glow at the horizon, the first stars, a
// low moon and rows of pine silhouettes, darker as they come closer. Drawn the same on every run.
QImage makeEveningForestPicture(int width, int height, unsigned seed);

}  // namespace sylvora::synth
