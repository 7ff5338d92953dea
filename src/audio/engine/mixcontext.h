#pragma once

// What the audio thread hands each voice for one block: preallocated scratch and the engine's
// constants, so that mixing never allocates.

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace sylvora::audio {

struct MixContext {
    static constexpr std::size_t MAX_BLOCK = 1024;  // render() works in blocks of at most this

    std::size_t declickFrames = 0;  // length of the fade that softens starts and stops
    std::size_t rampFrames = 0;     // length of the glide to a new volume
    float* gains = nullptr;         // MAX_BLOCK floats of scratch
    float* tailGains = nullptr;     // MAX_BLOCK floats of scratch
    std::atomic<std::uint64_t>* underruns = nullptr;
};

}  // namespace sylvora::audio
