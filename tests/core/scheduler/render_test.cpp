// What a listener hears: a world rendered offline through the real engine, measured in the output.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "support/signalanalysis.h"
#include "support/worldfixture.h"

namespace sylvora::test {
namespace {

constexpr int RATE = WorldFixture::RATE;
constexpr std::size_t BLOCK = RATE / 15;  // one tick of audio; 600, 1050 and 3000 Hz fit whole cycles
constexpr double LOW = 600.0;
constexpr double HIGH = 1050.0;
constexpr double CLICK = 3000.0;

using Start = StartLog::Start;

// Two loop sounds, tones of different pitch, crossfading over 2 s: in the output, each tone's
// amplitude follows its equal-power curve block by block. The volume a tick sets is ramped across
// the block after it, so a block's amplitude lies between the curve at its two ends.
TEST(OfflineRender, TwoLoopSoundsCrossfadeAlongEqualPowerCurves) {
    WorldFixture w(4);
    w.world.setLoopSoundsCrossFadeDuration(2);
    const SoundID low = w.addLoop(w.writeSound("low.wav", 6.0, LOW));
    const SoundID high = w.addLoop(w.writeSound("high.wav", 6.0, HIGH));
    const std::map<SoundID, double> pitch{{low, LOW}, {high, HIGH}};
    w.world.start();

    Recording out;
    StartLog log;
    w.runSeconds(40.0, [&](int tick) { log.onTick(w, tick); },
                 [&](const float* samples, std::size_t frames, std::uint64_t) { out.append(samples, frames); });
    ASSERT_EQ(out.left().size(), static_cast<std::size_t>(40 * RATE));
    EXPECT_EQ(w.engine.underruns(), 0u);
    ASSERT_GE(log.starts.size(), 9u);
    ASSERT_EQ(log.starts[0].tick, 0);

    const auto block = [&](int k, double frequency) {
        return out.amplitude(static_cast<std::size_t>(k) * BLOCK, BLOCK, frequency, RATE);
    };
    const double full = block(20, pitch.at(log.starts[0].sound));
    ASSERT_GT(full, 0.2);
    EXPECT_LT(block(20, pitch.at(log.starts[0].sound) == LOW ? HIGH : LOW), 0.01 * full) << "one tone alone";

    int crossfadesMeasured = 0;
    for (std::size_t n = 1; n + 1 < log.starts.size(); ++n) {
        const Start& out_ = log.starts[n - 1];
        const Start& in = log.starts[n];
        if (out_.sound == in.sound) continue;  // the same tone twice cannot be told apart
        // The incoming instance is due 2 s before the outgoing one ends: 60 ticks after its start.
        ASSERT_EQ(in.tick - out_.tick, 60) << "start " << n;
        for (int k = in.tick + 1; k < in.tick + 30; ++k) {
            const double xIn[2] = {(k - 1 - in.tick) / 30.0, (k - in.tick) / 30.0};
            const double xOut[2] = {(k - 1 - out_.tick - 60) / 30.0, (k - out_.tick - 60) / 30.0};
            const double heardIn = block(k, pitch.at(in.sound)) / full;
            const double heardOut = block(k, pitch.at(out_.sound)) / full;
            const double tolerance = 0.02;
            EXPECT_GE(heardIn, std::min(fadeInGain(xIn[0]), fadeInGain(xIn[1])) - tolerance) << "block " << k;
            EXPECT_LE(heardIn, std::max(fadeInGain(xIn[0]), fadeInGain(xIn[1])) + tolerance) << "block " << k;
            EXPECT_GE(heardOut, std::min(fadeOutGain(xOut[0]), fadeOutGain(xOut[1])) - tolerance) << "block " << k;
            EXPECT_LE(heardOut, std::max(fadeOutGain(xOut[0]), fadeOutGain(xOut[1])) + tolerance) << "block " << k;
        }
        // Midway each is at three quarters, well above the half a linear fade would give.
        EXPECT_NEAR(block(in.tick + 15, pitch.at(in.sound)) / full, 0.74, 0.03);
        EXPECT_NEAR(block(in.tick + 15, pitch.at(out_.sound)) / full, 0.76, 0.03);
        // Once the outgoing instance has ended only the incoming tone is heard, at full volume.
        EXPECT_LT(block(in.tick + 32, pitch.at(out_.sound)) / full, 0.01);
        EXPECT_NEAR(block(in.tick + 32, pitch.at(in.sound)) / full, 1.0, 0.01);
        ++crossfadesMeasured;
    }
    EXPECT_GE(crossfadesMeasured, 2);
}

// A short click as an environment sound over a loop: every click heard is a play the world started,
// at the tick it started (when plays are due is the scheduler test's business).
TEST(OfflineRender, EnvironmentClicksFallInsideTheirIntervals) {
    WorldFixture w(8);
    w.world.setLoopSoundsCrossFadeDuration(1);
    w.addLoop(w.writeSound("bed.wav", 4.0, LOW, 0.3));
    const SoundID click = w.addEnvironment(w.writeSound("click.wav", 0.2, CLICK));
    w.world.setEnvironmentSoundMinInterval(click, 1);
    w.world.setEnvironmentSoundMaxInterval(click, 3);
    w.world.start();

    Recording out;
    StartLog log;
    w.runSeconds(60.0, [&](int tick) { log.onTick(w, tick); },
                 [&](const float* samples, std::size_t frames, std::uint64_t) { out.append(samples, frames); });

    std::vector<int> heard;  // first block of each click in the output
    bool inClick = false;
    for (std::size_t k = 0; (k + 1) * BLOCK <= out.left().size(); ++k) {
        const bool loud = out.amplitude(k * BLOCK, BLOCK, CLICK, RATE) > 0.05;
        if (loud && !inClick) heard.push_back(static_cast<int>(k));
        inClick = loud;
    }
    std::vector<int> started;
    for (const Start& s : log.starts) {
        if (s.sound == click) started.push_back(s.tick);
    }
    ASSERT_GE(heard.size(), 15u);
    EXPECT_EQ(heard, started);
}

// Blocks end on the 1/15-s grid and the world's timer fires once at every boundary, across render
// calls of any length and over ten minutes without drift, at rates where a tick is a whole number
// of frames and where it is not.
TEST(OfflineRender, BlocksAndTimersFollowTheTickGridWithoutDrift) {
    for (const int rate : {8000, 11025, 44100, 48000}) {
        SCOPED_TRACE(rate);
        audio::Engine engine(rate);
        VirtualEventLoop loop;
        OfflineRenderer renderer(engine, loop);
        int ticks = 0;
        loop.installTimer(0.0, TICK, [&] { ++ticks; });
        std::vector<std::pair<std::uint64_t, std::size_t>> blocks;
        const auto sink = [&](const float*, std::size_t frames, std::uint64_t first) { blocks.emplace_back(first, frames); };
        renderer.render(600, sink);
        renderer.render(1000, sink);
        renderer.renderSeconds(600.0, sink);
        const std::uint64_t total = 1600 + 600ULL * static_cast<std::uint64_t>(rate);
        EXPECT_EQ(renderer.framesRendered(), total);
        if (rate == 8000) {
            const std::vector<std::pair<std::uint64_t, std::size_t>> expected{{0, 533}, {533, 67}, {600, 467}, {1067, 533}};
            EXPECT_EQ(std::vector(blocks.begin(), blocks.begin() + 4), expected);
        }
        // Contiguous, and every block ends on a tick's frame or where a render call ended.
        int misplaced = 0;
        std::uint64_t next = 0;
        for (const auto& [first, frames] : blocks) {
            const std::uint64_t end = first + frames;
            const auto tick = static_cast<std::uint64_t>(std::llround(static_cast<double>(end) * 15.0 / rate));
            const bool callEnd = end == 600 || end == 1600 || end == total;
            misplaced += (first != next || (renderer.frameOfTick(tick) != end && !callEnd)) ? 1 : 0;
            next = end;
        }
        EXPECT_EQ(misplaced, 0);
        EXPECT_EQ(renderer.frameOfTick(15 * 600), 600ULL * static_cast<std::uint64_t>(rate));
        // One firing per tick whose frame has been reached (a tick on the last frame fires with the
        // next render).
        std::uint64_t reached = 0;
        while (renderer.frameOfTick(reached) < total) ++reached;
        EXPECT_EQ(static_cast<std::uint64_t>(ticks), reached);
    }
}

}  // namespace
}  // namespace sylvora::test
