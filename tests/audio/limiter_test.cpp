// The master limiter: nothing a world piles up reaches full scale, and what stays below the
// ceiling comes out as it went in.

#include <gtest/gtest.h>

#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <numbers>

#include "audio/engine/limiter.h"
#include "encodedfile.h"
#include "support/signalanalysis.h"
#include "support/soundfiles.h"
#include "support/worldfixture.h"

namespace sylvora::test {
namespace {

using audio::Limiter;

constexpr int RATE = 48000;

// A 440 Hz sine whose level jumps from `quiet` to `loud` for half a second and back.
std::vector<float> burst(double quiet, double loud) {
    std::vector<float> out(2 * 3 * RATE);
    for (std::size_t i = 0; i < out.size() / 2; ++i) {
        const bool inBurst = i >= RATE && i < RATE + RATE / 2;
        const double level = inBurst ? loud : quiet;
        const auto v = static_cast<float>(level * std::sin(2.0 * std::numbers::pi * 440.0 * static_cast<double>(i) / RATE));
        out[2 * i] = v;
        out[2 * i + 1] = -v;
    }
    return out;
}

TEST(MasterLimiter, KeepsEveryPeakUnderTheCeilingAndLeavesTheRestAlone) {
    for (const double loud : {0.5, 0.95, 1.8, 6.0}) {
        const std::vector<float> in = burst(0.4, loud);
        std::vector<float> out = in;
        Limiter limiter(RATE);
        for (std::size_t at = 0; at < out.size() / 2; at += 700)
            limiter.process(out.data() + 2 * at, std::min<std::size_t>(700, out.size() / 2 - at));
        const std::size_t delay = limiter.latencyFrames();
        EXPECT_GE(delay, static_cast<std::size_t>(RATE / 1000)) << "a look-ahead of milliseconds";
        EXPECT_LE(delay, static_cast<std::size_t>(RATE / 100));
        float peak = 0.0f;
        for (const float v : out) peak = std::max(peak, std::fabs(v));
        EXPECT_LE(peak, Limiter::CEILING + 1e-6) << loud;
        // Before the burst, and once released after it, what comes out is what went in, later.
        const auto untouched = [&](std::size_t from, std::size_t to) {
            float worst = 0.0f;
            for (std::size_t i = from; i < to; ++i)
                worst = std::max(worst, std::fabs(out[2 * (i + delay)] - in[2 * i]));
            return worst;
        };
        EXPECT_EQ(untouched(0, RATE - delay - 1), 0.0f) << loud;
        EXPECT_EQ(untouched(RATE * 5 / 2, 3 * RATE - delay), 0.0f) << loud << ": released to exactly 1";
        if (loud <= Limiter::CEILING) {
            EXPECT_EQ(untouched(0, 3 * RATE - delay), 0.0f) << loud << ": below the ceiling nothing changes";
        } else {
            // The loud part is held just under the ceiling, not squashed far below it.
            EXPECT_GT(peak, 0.97 * Limiter::CEILING) << loud;
        }
    }
}

// Two loops recorded near full scale and a loud environment sound: summed they reach 2.8.
TEST(MasterLimiter, ALoudWorldNeverReachesTheRailInARender) {
    WorldFixture w(5, RATE);
    w.world.setLoopSoundsCrossFadeDuration(2);
    ASSERT_NE(w.addLoop(w.writeSound("a.wav", 7.0, 300.0, 0.95)), 0u);
    ASSERT_NE(w.addLoop(w.writeSound("b.wav", 5.0, 450.0, 0.95)), 0u);
    const SoundID rain = w.addEnvironment(w.writeSound("rain.wav", 3.0, 700.0, 0.9));
    ASSERT_NE(rain, 0u);
    w.world.setEnvironmentSoundMinInterval(rain, 1);
    w.world.setEnvironmentSoundMaxInterval(rain, 2);
    w.world.start();
    long railed = 0;
    float peak = 0.0f;
    const float rail = static_cast<float>(std::pow(10.0, -0.2 / 20.0));
    w.runSeconds(60.0, {}, [&](const float* interleaved, std::size_t frames, std::uint64_t) {
        for (std::size_t i = 0; i < 2 * frames; ++i) {
            const float v = std::fabs(interleaved[i]);
            peak = std::max(peak, v);
            railed += v >= rail ? 1 : 0;
        }
    });
    EXPECT_EQ(railed, 0) << "samples at or beyond -0.2 dBFS";
    EXPECT_GT(peak, 0.85f) << "the world was loud enough to need the limiter";
    EXPECT_LE(peak, Limiter::CEILING + 1e-6);
}

TEST(MasterLimiter, AWorldBelowMinusSixDecibelsKeepsItsLevel) {
    WorldFixture w(5, RATE);
    w.world.setLoopSoundsCrossFadeDuration(0);
    ASSERT_NE(w.addLoop(w.writeSound("tone.wav", 2.0, 500.0, 0.5)), 0u);
    w.world.start();
    Recording heard;
    w.runSeconds(3.0, {}, [&](const float* interleaved, std::size_t frames, std::uint64_t) {
        heard.append(interleaved, frames);
    });
    const double level = heard.amplitude(RATE / 2, RATE, 500.0, RATE);
    EXPECT_NEAR(20.0 * std::log10(level / 0.5), 0.0, 0.05) << "dB";
}

}  // namespace
}  // namespace sylvora::test
