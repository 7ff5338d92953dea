#include "support/soundfiles.h"

#include <sndfile.h>

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

namespace sylvora::test {

namespace {
int formatFor(const QString& path) {
    const QString ext = path.section(QLatin1Char('.'), -1).toLower();
    if (ext == QLatin1String("flac")) return SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
    if (ext == QLatin1String("ogg")) return SF_FORMAT_OGG | SF_FORMAT_VORBIS;
    if (ext == QLatin1String("aiff") || ext == QLatin1String("aif")) return SF_FORMAT_AIFF | SF_FORMAT_PCM_16;
    if (ext == QLatin1String("caf")) return SF_FORMAT_CAF | SF_FORMAT_PCM_16;
    return SF_FORMAT_WAV | SF_FORMAT_PCM_16;
}
}  // namespace

bool writeSoundFile(const QString& path, const ToneSpec& tone) {
    SF_INFO info{};
    info.samplerate = tone.sampleRate;
    info.channels = tone.channels;
    info.format = formatFor(path);
    SNDFILE* file = sf_open(path.toLocal8Bit().constData(), SFM_WRITE, &info);
    if (!file) return false;

    const auto frames = static_cast<sf_count_t>(std::llround(tone.seconds * tone.sampleRate));
    std::mt19937 random(tone.seed);
    std::uniform_real_distribution<float> noise(-1.0f, 1.0f);
    std::vector<float> block(static_cast<std::size_t>(4096 * tone.channels));
    sf_count_t written = 0;
    while (written < frames) {
        const sf_count_t n = std::min<sf_count_t>(4096, frames - written);
        for (sf_count_t i = 0; i < n; ++i) {
            float value = 0.0f;
            const double t = static_cast<double>(written + i) / tone.sampleRate;
            if (tone.waveform == Waveform::Sine)
                value = static_cast<float>(tone.amplitude * std::sin(2.0 * std::numbers::pi * tone.frequency * t));
            else if (tone.waveform == Waveform::Noise)
                value = static_cast<float>(tone.amplitude) * noise(random);
            for (int c = 0; c < tone.channels; ++c) block[static_cast<std::size_t>(i * tone.channels + c)] = value;
        }
        if (sf_writef_float(file, block.data(), n) != n) {
            sf_close(file);
            return false;
        }
        written += n;
    }
    return sf_close(file) == 0;
}

}  // namespace sylvora::test
