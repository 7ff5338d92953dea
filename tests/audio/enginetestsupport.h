#pragma once

// Shared by the audio tests: sound files on disk, and the test thread playing the audio thread's
// part by calling Engine::render() itself.

#include <QString>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"
#include "support/soundfiles.h"
#include "support/tempdir.h"

namespace sylvora::test {

// Writes a sound file into `dir` and returns its path; fails the test when it cannot.
std::string makeSound(const TempDir& dir, const QString& name, const ToneSpec& tone);

// Opens an instance, failing the test on a nonzero status.
std::unique_ptr<audio::SoundInstance> openOrFail(audio::Engine& engine, const std::string& path);

// Renders `frames` frames in blocks of `block`, letting the streaming thread catch up before each
// block so that the result does not depend on thread timing. Interleaved stereo. These tests hear
// the voices' own mix: the master limiter (and its look-ahead delay) is switched off.
std::vector<float> renderFrames(audio::Engine& engine, std::size_t frames, std::size_t block = 512);

// Renders until the instance reports done; returns the frames rendered (a whole number of blocks).
std::size_t renderUntilDone(audio::Engine& engine, audio::SoundInstance& instance, std::size_t limit,
                            std::vector<float>* keep = nullptr, std::size_t block = 512);

double peak(const std::vector<float>& stereo, std::size_t fromFrame = 0,
            std::size_t toFrame = ~std::size_t{0});
double rms(const std::vector<float>& stereo, int channel, std::size_t fromFrame, std::size_t toFrame);
// Largest difference between neighbouring samples of one channel.
double largestStep(const std::vector<float>& stereo, int channel);
// Frequency from upward zero crossings of one channel between two frames.
double frequency(const std::vector<float>& stereo, int channel, std::size_t fromFrame, std::size_t toFrame,
                 int sampleRate);
// Index of the last frame whose magnitude exceeds `threshold`, or 0.
std::size_t lastAudibleFrame(const std::vector<float>& stereo, double threshold);

}  // namespace sylvora::test
