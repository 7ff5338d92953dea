#pragma once

// The inner loops of the mix: add `frames` frames of a mono or stereo source into interleaved
// stereo, with one gain or a gain per frame. Built with -O3 so that they vectorise.

#include <cstddef>

namespace sylvora::audio::mixkernels {

void addMono(const float* source, float* out, float gain, std::size_t frames) noexcept;            // [RT]
void addMono(const float* source, float* out, const float* gains, std::size_t frames) noexcept;    // [RT]
void addStereo(const float* source, float* out, float gain, std::size_t frames) noexcept;          // [RT]
void addStereo(const float* source, float* out, const float* gains, std::size_t frames) noexcept;  // [RT]

// gains[i] = first + step * i, and the same as a factor on what is there.
void fillRamp(float* gains, float first, float step, std::size_t frames) noexcept;   // [RT]
void scaleRamp(float* gains, float first, float step, std::size_t frames) noexcept;  // [RT]
void fill(float* gains, float value, std::size_t frames) noexcept;                   // [RT]

}  // namespace sylvora::audio::mixkernels
