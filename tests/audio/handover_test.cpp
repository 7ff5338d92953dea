// Loop handovers as heard: a one-loop world of a sine that holds a whole number of cycles, played
// at crossfade 0, must come out as one unbroken sine in every format people bring. For a pure sine
// x[n] - 2cos(w)x[n-1] + x[n-2] is zero, so any gap, overlap, fade or drift at a seam shows in it.

#include <gtest/gtest.h>

#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>

#include "audio/decoders/decoder.h"
#include "audio/engine/engineimpl.h"
#include "encodedfile.h"
#include "support/signalanalysis.h"
#include "support/soundfiles.h"
#include "support/worldfixture.h"

namespace sylvora::test {
namespace {

constexpr int RATE = 48000;
constexpr double FREQUENCY = 1000.0;  // 48 samples a cycle
constexpr double AMPLITUDE = 0.5;
// 503 whole cycles: a length off the timer's 1/15-s grid, so no tick can hide a late start.
constexpr long LOOP_FRAMES = 503 * 48;

struct Format {
    const char* name;
    const char* file;
    const char* codec;  // empty: written by libsndfile
    // The residual at a seam must stay below this, relative to the tone. A lossy codec rebuilds the
    // sound's edges only approximately (its encoder saw silence before the first sample), which no
    // player can undo; that the player adds nothing is shown by its output being the decoded file's
    // samples, over and over.
    double worstStepDb;
};

QString writeLoop(const TempDir& dir, const Format& format) {
    const QString path = dir.filePath(QString::fromLatin1(format.file));
    if (*format.codec == '\0') {
        ToneSpec tone;
        tone.frequency = FREQUENCY;
        tone.amplitude = AMPLITUDE;
        tone.seconds = static_cast<double>(LOOP_FRAMES) / RATE;
        tone.sampleRate = RATE;
        EXPECT_TRUE(writeSoundFile(path, tone));
        return path;
    }
    EncodeSettings settings;
    settings.codec = format.codec;
    settings.sampleRate = RATE;
    const std::string error = writeEncodedFile(QFileInfo(path).filePath().toStdString(), settings,
                                               sineFrames(FREQUENCY, AMPLITUDE, LOOP_FRAMES, RATE, 2));
    EXPECT_EQ(error, "") << format.name;
    return path;
}

// |x[n] - 2cos(w)x[n-1] + x[n-2]| at every frame.
std::vector<double> residual(const std::vector<float>& x) {
    const double c = 2.0 * std::cos(2.0 * std::numbers::pi * FREQUENCY / RATE);
    std::vector<double> r(x.size(), 0.0);
    for (std::size_t n = 2; n < x.size(); ++n)
        r[n] = std::fabs(x[n] - c * x[n - 1] + x[n - 2]);
    return r;
}

double decibels(double value) {
    return 20.0 * std::log10(std::max(value, 1e-12) / AMPLITUDE);
}

// How many samples the tone in `x` from `from` on lags a sine that starts there at phase 0
// (a least-squares fit over whole cycles).
double phaseOffset(const std::vector<float>& x, std::size_t from, std::size_t count) {
    const double w = 2.0 * std::numbers::pi * FREQUENCY / RATE;
    double inPhase = 0.0;
    double quadrature = 0.0;
    for (std::size_t m = 0; m < count; ++m) {
        inPhase += x[from + m] * std::sin(w * static_cast<double>(m));
        quadrature += x[from + m] * std::cos(w * static_cast<double>(m));
    }
    return std::atan2(quadrature, inPhase) / w;
}

// The left channel of the whole file as the project's decoder gives it, with no player between.
std::vector<float> decodedLeft(const QString& path) {
    std::unique_ptr<audio::Decoder> decoder;
    if (audio::openDecoder(path.toStdString(), decoder) != noErr)
        return {};
    const auto channels = static_cast<std::size_t>(decoder->format().channels);
    std::vector<float> block(4096 * channels);
    std::vector<float> left;
    while (const std::size_t n = decoder->read(block.data(), 4096)) {
        for (std::size_t i = 0; i < n; ++i)
            left.push_back(block[i * channels]);
    }
    return left;
}

class LoopHandover : public ::testing::TestWithParam<Format> {};

TEST_P(LoopHandover, EveryInstanceFollowsTheLastToTheSample) {
    const Format format = GetParam();
    WorldFixture w(3, RATE);
    w.world.setLoopSoundsCrossFadeDuration(0);
    const QString file = writeLoop(w.dir, format);
    ASSERT_NE(w.addLoop(file), 0u);
    EXPECT_NEAR(w.entry(0).duration, static_cast<double>(LOOP_FRAMES) / RATE, 0.5 / RATE)
        << format.name << ": the decoded length is the sound's own, encoder delay and padding left out";
    w.world.start();
    Recording heard;
    w.runSeconds(4.0, {}, [&](const float* interleaved, std::size_t frames, std::uint64_t) {
        heard.append(interleaved, frames);
    });
    // What the master limiter's look-ahead holds back comes out that much later.
    const auto delay = static_cast<long>(w.engine.impl().limiter.latencyFrames());
    const std::vector<float> x(heard.left().begin() + delay, heard.left().end());
    const std::vector<double> r = residual(x);

    // The first instance starts at frame 0; every later one must be the same samples, unfaded,
    // each beginning on the frame after the last one's end.
    double worstSeam = 0.0;
    double worstElsewhere = 0.0;
    double worstDifference = 0.0;
    long silentFrames = 0;
    int seams = 0;
    const auto loop = static_cast<std::size_t>(LOOP_FRAMES);
    for (std::size_t seam = loop; seam + loop <= x.size(); seam += loop, ++seams) {
        for (std::size_t m = 0; m < loop; ++m)
            worstDifference = std::max(worstDifference, static_cast<double>(std::fabs(x[seam + m] - x[m])));
        for (std::size_t n = seam - 32; n < seam + 32; ++n) {
            worstSeam = std::max(worstSeam, r[n]);
            // A sine of this amplitude never has two samples in a row this close to zero.
            if (std::fabs(x[n]) < 1e-3 && std::fabs(x[n - 1]) < 1e-3)
                ++silentFrames;
        }
        worstElsewhere = std::max(worstElsewhere, *std::max_element(r.begin() + static_cast<long>(seam - loop / 2 - 2000),
                                                                    r.begin() + static_cast<long>(seam - loop / 2 + 2000)));
    }
    // The same decoded sound joined end to start offline: the step the file itself holds at its
    // seam. Where the player's seam is no worse, and its output is the decoded samples over and
    // over, the step is the codec's and the player adds nothing.
    // (Its stated length, as the engine plays it: Vorbis decodes its last page whole, past it.)
    std::vector<float> decoded = decodedLeft(file);
    ASSERT_GE(decoded.size(), loop) << format.name;
    decoded.resize(loop);
    std::vector<float> joined;
    for (int copy = 0; copy < 3; ++copy)
        joined.insert(joined.end(), decoded.begin(), decoded.end());
    const std::vector<double> rj = residual(joined);
    const double offlineJoin = std::max(*std::max_element(rj.begin() + static_cast<long>(loop - 32), rj.begin() + static_cast<long>(loop + 32)),
                                        *std::max_element(rj.begin() + static_cast<long>(2 * loop - 32), rj.begin() + static_cast<long>(2 * loop + 32)));
    double offPlayer = 0.0;
    for (std::size_t n = 0; n + loop <= x.size(); ++n)
        offPlayer = std::max(offPlayer, static_cast<double>(std::fabs(x[n] - decoded[n % loop])));
    std::printf("handover %-6s worst step at a seam %5.1f dB below the tone; the decoded file joined offline %5.1f dB "
                "(player adds %+.1f dB); mid-sound %5.1f dB; %.2f ms silent; instances differ by %.1e, "
                "output from the decoded file by %.1e\n",
                format.name, -decibels(worstSeam), -decibels(offlineJoin), decibels(worstSeam) - decibels(offlineJoin),
                -decibels(worstElsewhere), 1000.0 * silentFrames / RATE, worstDifference, offPlayer);
    EXPECT_LT(offPlayer, 1e-6) << format.name << ": the player plays the decoded sound, sample for sample";
    EXPECT_GE(seams, 6);
    EXPECT_LT(worstDifference, 1e-6) << format.name << ": a gap, an overlap or a fade at a seam";
    EXPECT_EQ(silentFrames, 0) << format.name;
    EXPECT_LT(decibels(worstSeam), format.worstStepDb) << format.name;
    // (Seen modulo one cycle of 48 samples; an encoder's delay is never a whole number of them.)
    EXPECT_NEAR(phaseOffset(x, 250 * 48, 9600), 0.0, 0.05)
        << format.name << ": the sound starts on its first sample, not before or after it";
    EXPECT_NEAR(heard.amplitude(static_cast<std::size_t>(delay) + loop / 2, 9600, FREQUENCY, RATE), AMPLITUDE, 0.03)
        << format.name;
}

INSTANTIATE_TEST_SUITE_P(EveryFormat, LoopHandover,
                         ::testing::Values(Format{"WAV", "loop.wav", "", -70.0},
                                           Format{"FLAC", "loop.flac", "", -70.0},
                                           Format{"MP3", "loop.mp3", "libmp3lame", -24.0},
                                           Format{"Vorbis", "loop.ogg", "libvorbis", -30.0},
                                           Format{"AAC", "loop.m4a", "aac", -24.0},
                                           Format{"Opus", "loop.opus", "libopus", -28.0}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace sylvora::test
