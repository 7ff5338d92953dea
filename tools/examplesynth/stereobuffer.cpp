#include "stereobuffer.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>

#include "filters.h"
#include "noise.h"

namespace sylvora::synth {

StereoBuffer::StereoBuffer(double seconds)
    : left(static_cast<std::size_t>(std::lround(seconds * SAMPLE_RATE)), 0.0),
      right(left.size(), 0.0) {}

void StereoBuffer::addMono(const std::vector<double>& mono, std::ptrdiff_t startFrame, double pan, double gain) {
    const double angle = (std::clamp(pan, -1.0, 1.0) + 1.0) * std::numbers::pi / 4.0;
    const double gl = std::cos(angle) * gain;
    const double gr = std::sin(angle) * gain;
    const auto total = static_cast<std::ptrdiff_t>(frames());
    for (std::size_t i = 0; i < mono.size(); ++i) {
        const std::ptrdiff_t at = startFrame + static_cast<std::ptrdiff_t>(i);
        if (at < 0) continue;
        if (at >= total) break;
        left[static_cast<std::size_t>(at)] += mono[i] * gl;
        right[static_cast<std::size_t>(at)] += mono[i] * gr;
    }
}

void StereoBuffer::addStereo(const StereoBuffer& other, double gain) {
    const std::size_t n = std::min(frames(), other.frames());
    for (std::size_t i = 0; i < n; ++i) {
        left[i] += other.left[i] * gain;
        right[i] += other.right[i] * gain;
    }
}

double StereoBuffer::peak() const {
    double p = 0.0;
    for (std::size_t i = 0; i < frames(); ++i) {
        p = std::max({p, std::abs(left[i]), std::abs(right[i])});
    }
    return p;
}

double StereoBuffer::rms() const {
    double sum = 0.0;
    for (std::size_t i = 0; i < frames(); ++i) {
        sum += left[i] * left[i] + right[i] * right[i];
    }
    return frames() ? std::sqrt(sum / (2.0 * static_cast<double>(frames()))) : 0.0;
}

void StereoBuffer::normalize(double rmsDb, double peakDb) {
    const double currentRms = rms();
    const double currentPeak = peak();
    if (currentRms <= 0.0 || currentPeak <= 0.0) return;
    const double gain = std::min(std::pow(10.0, rmsDb / 20.0) / currentRms, std::pow(10.0, peakDb / 20.0) / currentPeak);
    for (std::size_t i = 0; i < frames(); ++i) {
        left[i] *= gain;
        right[i] *= gain;
    }
}

void StereoBuffer::fadeIn(double seconds) {
    const auto n = std::min(frames(), static_cast<std::size_t>(seconds * SAMPLE_RATE));
    for (std::size_t i = 0; i < n; ++i) {
        const double g = std::sin(0.5 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(n));
        left[i] *= g * g;
        right[i] *= g * g;
    }
}

void StereoBuffer::fadeOut(double seconds) {
    const auto n = std::min(frames(), static_cast<std::size_t>(seconds * SAMPLE_RATE));
    for (std::size_t i = 0; i < n; ++i) {
        const double g = std::sin(0.5 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(n));
        left[frames() - 1 - i] *= g * g;
        right[frames() - 1 - i] *= g * g;
    }
}

void StereoBuffer::foldIntoLoop(double overlapSeconds) {
    const auto overlap = static_cast<std::size_t>(overlapSeconds * SAMPLE_RATE);
    if (overlap == 0 || overlap * 2 >= frames()) return;
    const std::size_t loopFrames = frames() - overlap;
    for (std::size_t i = 0; i < overlap; ++i) {
        const double x = 0.5 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(overlap);
        const double in = std::sin(x);
        const double out = std::cos(x);
        left[i] = left[i] * in + left[loopFrames + i] * out;
        right[i] = right[i] * in + right[loopFrames + i] * out;
    }
    left.resize(loopFrames);
    right.resize(loopFrames);
}

void StereoBuffer::addAmbience(double wet, unsigned seed) {
    // Eight taps per side at scattered delays, each a little darker and softer than the last.
    Random random(seed);
    const StereoBuffer dry = *this;
    for (int side = 0; side < 2; ++side) {
        const std::vector<double>& source = side == 0 ? dry.right : dry.left;  // reflections cross over
        std::vector<double>& target = side == 0 ? left : right;
        double delaySeconds = 0.011 + 0.006 * side;
        double gain = wet;
        for (int tap = 0; tap < 8; ++tap) {
            delaySeconds += random.uniform(0.012, 0.035);
            gain *= 0.72;
            OnePole darken(6000.0 - 550.0 * tap, SAMPLE_RATE);
            const auto delay = static_cast<std::size_t>(delaySeconds * SAMPLE_RATE);
            for (std::size_t i = delay; i < target.size(); ++i) {
                target[i] += darken.lowpass(source[i - delay]) * gain;
            }
        }
    }
}

namespace {
struct SndfileCloser {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
}  // namespace

bool writeSound(const std::string& path, const StereoBuffer& sound, std::string& error) {
    SF_INFO info{};
    info.samplerate = SAMPLE_RATE;
    info.channels = 2;
    const bool wav = path.size() > 4 && path.compare(path.size() - 4, 4, ".wav") == 0;
    info.format = (wav ? SF_FORMAT_WAV : SF_FORMAT_FLAC) | SF_FORMAT_PCM_16;
    std::unique_ptr<SNDFILE, SndfileCloser> file(sf_open(path.c_str(), SFM_WRITE, &info));
    if (!file) {
        error = sf_strerror(nullptr);
        return false;
    }
    std::vector<float> interleaved(sound.frames() * 2);
    for (std::size_t i = 0; i < sound.frames(); ++i) {
        interleaved[2 * i] = static_cast<float>(std::clamp(sound.left[i], -1.0, 1.0));
        interleaved[2 * i + 1] = static_cast<float>(std::clamp(sound.right[i], -1.0, 1.0));
    }
    const auto frames = static_cast<sf_count_t>(sound.frames());
    if (sf_writef_float(file.get(), interleaved.data(), frames) != frames) {
        error = sf_strerror(file.get());
        return false;
    }
    return true;
}

}  // namespace sylvora::synth
