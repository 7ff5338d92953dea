#pragma once

// A stereo sound being synthesized, in doubles so that summing many layers loses nothing before
// the final level is set.

#include <cstddef>
#include <string>
#include <vector>

namespace sylvora::synth {

inline constexpr int SAMPLE_RATE = 44100;

struct StereoBuffer {
    std::vector<double> left;
    std::vector<double> right;

    explicit StereoBuffer(double seconds);
    std::size_t frames() const { return left.size(); }
    double seconds() const { return static_cast<double>(frames()) / SAMPLE_RATE; }

    // Adds `mono` at `startFrame`, placed by `pan` (-1 left .. 1 right, equal power).
    void addMono(const std::vector<double>& mono, std::ptrdiff_t startFrame, double pan, double gain);
    void addStereo(const StereoBuffer& other, double gain);

    double peak() const;
    double rms() const;
    // Scales to `rmsDb` (dBFS) but never lets the peak pass `peakDb`.
    void normalize(double rmsDb, double peakDb);
    void fadeIn(double seconds);
    void fadeOut(double seconds);

    // Makes the end run seamlessly into the start: the last `overlapSeconds` are folded onto the
    // first ones with an equal-power crossfade and cut off, so playing the result back to back
    // has no seam. The buffer must be longer than the wanted loop by `overlapSeconds`.
    void foldIntoLoop(double overlapSeconds);

    // A small room around a dry sound: early reflections crossing sides and a soft diffuse tail.
    void addAmbience(double wet, unsigned seed);
};

// Writes 16-bit FLAC (or WAV for a ".wav" name) through libsndfile; false with `error` filled on failure.
bool writeSound(const std::string& path, const StereoBuffer& sound, std::string& error);

}  // namespace sylvora::synth
