#pragma once

// Real sound files written by the tests themselves (the repository ships no audio).

#include <QString>

namespace sylvora::test {

enum class Waveform { Sine, Noise, Silence };

struct ToneSpec {
    Waveform waveform = Waveform::Sine;
    double frequency = 440.0;  // Hz, for Sine
    double amplitude = 0.5;    // peak, 0..1
    double seconds = 1.0;
    int sampleRate = 48000;
    int channels = 2;
    unsigned seed = 1;  // for Noise
};

// Writes a sound file; the format follows the extension (.wav, .flac, .ogg, .aiff, .caf).
// Returns false when libsndfile cannot write it.
bool writeSoundFile(const QString& path, const ToneSpec& tone);

}  // namespace sylvora::test
