#pragma once

// Compressed sound files (MP3, Opus, M4A/AAC, ALAC) written by the tests through libavcodec, for
// the formats that libsndfile cannot write.

#include <string>
#include <vector>

namespace sylvora::test {

struct EncodeSettings {
    std::string codec;  // libavcodec encoder name: "libmp3lame", "libopus", "aac", "alac"
    int sampleRate = 48000;
    int channels = 2;
    bool lengthHeader = true;  // MP3 only: false leaves out the Xing/LAME length header
    bool indexFirst = false;   // MP4 only: the index before the sound, as files made for streaming have it
};

// Encodes interleaved float frames into `path` (the container follows the extension).
// Returns an empty string on success, else what went wrong.
std::string writeEncodedFile(const std::string& path, const EncodeSettings& settings,
                             const std::vector<float>& interleaved);

// A sine of `frequency` at `amplitude`, the same in every channel.
std::vector<float> sineFrames(double frequency, double amplitude, long frames, int sampleRate, int channels);

}  // namespace sylvora::test
