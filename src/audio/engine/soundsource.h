#pragma once

// What every instance of one sound file shares: its format, its exact length and, for a short
// sound, the whole sound decoded at the engine's rate. Immutable once made, so the audio thread
// reads it without synchronisation; freed with the last instance that holds it.

#include <cstdint>
#include <string>
#include <vector>

namespace sylvora::audio {

struct SoundSource {
    std::string path;
    int sourceRate = 0;
    std::int64_t sourceFrames = 0;  // exact
    int channels = 0;               // 1 or 2, as mixed
    std::int64_t frames = 0;        // at the engine rate
    bool streamed = false;
    std::vector<float> samples;  // frames * channels when not streamed
};

}  // namespace sylvora::audio
