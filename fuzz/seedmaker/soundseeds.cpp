#include "seedmaker/soundseeds.h"

#include <sndfile.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <vector>

namespace sylvora::fuzz {

namespace {

struct Kind {
    const char* name;
    int format;
    int sampleRate;
    int channels;
};

constexpr Kind KINDS[] = {
    {"pcm16.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 22050, 2},
    {"float.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 44100, 1},
    {"ulaw.wav", SF_FORMAT_WAV | SF_FORMAT_ULAW, 8000, 1},
    {"adpcm.wav", SF_FORMAT_WAV | SF_FORMAT_MS_ADPCM, 22050, 2},
    {"pcm24.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_24, 48000, 2},
    {"alac.caf", SF_FORMAT_CAF | SF_FORMAT_ALAC_16, 44100, 2},
    {"tone.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 22050, 2},
    {"vorbis.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 22050, 2},
    {"opus.ogg", SF_FORMAT_OGG | SF_FORMAT_OPUS, 48000, 1},
    {"layer3.mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 44100, 2},
};

bool encode(const std::string& path, const Kind& kind, double seconds) {
    SF_INFO info{};
    info.samplerate = kind.sampleRate;
    info.channels = kind.channels;
    info.format = kind.format;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file) return false;
    const auto frames = static_cast<sf_count_t>(seconds * kind.sampleRate);
    std::vector<float> samples(static_cast<std::size_t>(frames * kind.channels));
    for (sf_count_t f = 0; f < frames; ++f)
        for (int c = 0; c < kind.channels; ++c)
            samples[static_cast<std::size_t>(f * kind.channels + c)] =
                0.5f * static_cast<float>(std::sin(2.0 * M_PI * 440.0 * (c + 1) * f / kind.sampleRate));
    const bool written = sf_writef_float(file, samples.data(), frames) == frames;
    sf_close(file);
    return written;
}

std::string readAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

}  // namespace

std::vector<EncodedSound> encodeSoundSeeds(const std::string& scratchFolder) {
    std::vector<EncodedSound> sounds;
    for (const Kind& kind : KINDS) {
        const std::string path = scratchFolder + "/" + kind.name;
        if (encode(path, kind, 0.05)) sounds.push_back({kind.name, readAll(path)});
    }
    return sounds;
}

std::string encodeTinySound(const std::string& scratchFolder, const std::string& extension) {
    for (const Kind& kind : KINDS) {
        const std::string name = kind.name;
        if (name.substr(name.find('.') + 1) != extension) continue;
        const std::string path = scratchFolder + "/tiny." + extension;
        if (encode(path, kind, 0.02)) return readAll(path);
    }
    return {};
}

}  // namespace sylvora::fuzz
