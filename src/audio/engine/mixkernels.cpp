#include "audio/engine/mixkernels.h"

namespace sylvora::audio::mixkernels {

void addMono(const float* __restrict source, float* __restrict out, float gain, std::size_t frames) noexcept {
    for (std::size_t i = 0; i < frames; ++i) {
        const float s = source[i] * gain;
        out[2 * i] += s;
        out[2 * i + 1] += s;
    }
}

void addMono(const float* __restrict source, float* __restrict out, const float* __restrict gains,
             std::size_t frames) noexcept {
    for (std::size_t i = 0; i < frames; ++i) {
        const float s = source[i] * gains[i];
        out[2 * i] += s;
        out[2 * i + 1] += s;
    }
}

void addStereo(const float* __restrict source, float* __restrict out, float gain,
               std::size_t frames) noexcept {
    for (std::size_t i = 0; i < 2 * frames; ++i)
        out[i] += source[i] * gain;
}

void addStereo(const float* __restrict source, float* __restrict out, const float* __restrict gains,
               std::size_t frames) noexcept {
    for (std::size_t i = 0; i < frames; ++i) {
        out[2 * i] += source[2 * i] * gains[i];
        out[2 * i + 1] += source[2 * i + 1] * gains[i];
    }
}

void fillRamp(float* __restrict gains, float first, float step, std::size_t frames) noexcept {
    for (std::size_t i = 0; i < frames; ++i)
        gains[i] = first + step * static_cast<float>(i);
}

void scaleRamp(float* __restrict gains, float first, float step, std::size_t frames) noexcept {
    for (std::size_t i = 0; i < frames; ++i)
        gains[i] *= first + step * static_cast<float>(i);
}

void fill(float* __restrict gains, float value, std::size_t frames) noexcept {
    for (std::size_t i = 0; i < frames; ++i)
        gains[i] = value;
}

}  // namespace sylvora::audio::mixkernels
