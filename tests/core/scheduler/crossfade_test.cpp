// Loop sounds: the chain of instances and the crossfade volumes, tick by tick.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <utility>

#include "support/worldfixture.h"

namespace sylvora::test {
namespace {

// One 6-s loop with a 2-s crossfade: the second instance is due at 4 s, enters silently, rises
// along the fade-in while the first falls along the fade-out, and when the first ends the next
// instance is due 2 s before the second's end.
TEST(LoopCrossfade, OneLoopSoundCrossfadesWithItselfTickByTick) {
    WorldFixture w;
    w.world.setLoopSoundsCrossFadeDuration(2);
    const SoundID loop = w.addLoop(w.writeSound("loop.wav", 6.0, 440.0));
    const double t0 = w.now();
    w.world.start();
    const int first = 0;
    const int second = 1;
    ASSERT_EQ(w.entriesOf(loop), (std::vector<int>{first, second}));

    int checkedFades = 0;
    bool endChecked = false;
    w.runTicks(100, [&](int tick) {
        const double now = w.timeOfTick(tick);
        const MovieEntry& a = w.entry(first);
        const MovieEntry& b = w.entry(second);
        if (tick == 0) {
            EXPECT_NE(a.movie->rate(), 0.0);
            EXPECT_EQ(a.movie->volume(), 0);
            return;
        }
        if (tick < 60) {  // before 4 s: the first plays alone at full volume
            EXPECT_EQ(a.movie->volume(), 256) << tick;
            EXPECT_EQ(b.movie->rate(), 0.0) << tick;
            return;
        }
        if (tick == 60) {  // due now: starts silent, on the sample the crossfade begins
            EXPECT_TRUE(b.movie->isCued());
            EXPECT_EQ(b.movie->volume(), 0);
            EXPECT_EQ(a.movie->volume(), 256);
            return;
        }
        if (tick < 90) {
            const double pa = w.positionOf(first);
            const double pb = w.positionOf(second);
            EXPECT_NEAR(pa, tick * TICK, 1e-3);
            EXPECT_NEAR(pb, (tick - 60) * TICK, 1e-3);
            EXPECT_EQ(b.movie->volume(), expectedVolume(fadeInGain(pb / 2.0), 1.0, 1.0)) << tick;
            EXPECT_EQ(a.movie->volume(), expectedVolume(fadeOutGain((pa - 4.0) / 2.0), 1.0, 1.0)) << tick;
            if (tick == 75) {  // midway both are at 0.75
                EXPECT_EQ(a.movie->volume(), 192);
                EXPECT_EQ(b.movie->volume(), 192);
            }
            ++checkedFades;
            return;
        }
        // The first reaches its end at 6 s (a streamed sound's end is noticed one block later);
        // the next instance is then due 2 s before the second's end, whichever tick noticed it.
        if (!endChecked && a.movie->rate() == 0.0) {
            endChecked = true;
            EXPECT_LE(tick, 91);
            EXPECT_FALSE(a.skipFadeIn);
            EXPECT_NEAR(a.startTime, now + (6.0 - w.positionOf(second)) - 2.0, 1e-9);
            EXPECT_NEAR(a.startTime, t0 + 8.0, 1e-3);
            EXPECT_EQ(w.world.getNumMovies(), 2) << "the free instance is reused";
            EXPECT_EQ(b.movie->volume(), 256);
        }
    });
    EXPECT_EQ(checkedFades, 29);
    EXPECT_TRUE(endChecked);
}

TEST(LoopCrossfade, ZeroCrossfadeChainsInstancesEndToEndAtFullVolume) {
    WorldFixture w;
    w.world.setLoopSoundsCrossFadeDuration(0);
    w.addLoop(w.writeSound("loop.wav", 2.0, 440.0));
    w.world.start();
    StartLog log;
    w.runSeconds(10.0, [&](int tick) {
        EXPECT_EQ(log.onTick(w, tick), 1) << "tick " << tick;
        for (int i = 0; i < w.world.getNumMovies(); ++i) {
            if (w.entry(i).movie->rate() != 0.0) {
                EXPECT_EQ(w.entry(i).movie->volume(), 256) << "tick " << tick;
            }
        }
    });
    EXPECT_EQ(w.world.getNumMovies(), 2);
    EXPECT_EQ(log.starts.size(), 5u);
}

// 3-s loop, 2-s crossfade: the fade-in rules the first 2 s, then the fade-out applies at once.
TEST(LoopCrossfade, ALoopShorterThanTwoCrossfadesFadesInThenOutAtOnce) {
    WorldFixture w;
    w.world.setLoopSoundsCrossFadeDuration(2);
    w.addLoop(w.writeSound("loop.wav", 3.0, 440.0));
    w.world.start();
    const int second = 1;
    int fadeInTicks = 0;
    int fadeOutTicks = 0;
    w.runTicks(60, [&](int tick) {
        if (tick <= 15) return;  // due at 1 s
        const double p = w.positionOf(second);
        const int volume = w.entry(second).movie->volume();
        if (p < 2.0) {
            EXPECT_EQ(volume, expectedVolume(fadeInGain(p / 2.0), 1.0, 1.0)) << tick;
            ++fadeInTicks;
        } else {
            EXPECT_EQ(volume, expectedVolume(fadeOutGain((p - 1.0) / 2.0), 1.0, 1.0)) << tick;
            ++fadeOutTicks;
        }
    });
    EXPECT_EQ(fadeInTicks, 29);
    EXPECT_EQ(fadeOutTicks, 15);
}

TEST(LoopCrossfade, ACrossfadeLongerThanTheLoopMakesTheNextInstanceDueAtOnce) {
    WorldFixture w;
    w.world.setLoopSoundsCrossFadeDuration(5);
    w.addLoop(w.writeSound("loop.wav", 2.0, 440.0));
    const double now = w.now();
    w.world.start();
    EXPECT_DOUBLE_EQ(w.entry(1).startTime, now + 2.0 - 5.0);
    EXPECT_GT(w.entry(1).startTime, 0.0) << "the clock leaves room for the crossfade";
    w.runTicks(1);
    EXPECT_NE(w.entry(0).movie->rate(), 0.0);
    EXPECT_NE(w.entry(1).movie->rate(), 0.0);
}

TEST(LoopCrossfade, SeveralLoopSoundsArePickedAtRandomAndFollowTheChain) {
    WorldFixture w(21);
    w.world.setLoopSoundsCrossFadeDuration(1);
    std::vector<SoundID> loops;
    for (int i = 0; i < 3; ++i) loops.push_back(w.addLoop(w.writeSound(QStringLiteral("l%1.wav").arg(i), 2.0, 300.0 + 100 * i)));
    w.world.start();
    StartLog log;
    int maxPlaying = 0;
    // An instance can end and be handed over again between two ticks, which no tick sees as a
    // new start: each play is told by its entry and start time.
    std::set<std::pair<int, double>> plays;
    w.runSeconds(40.0, [&](int tick) {
        const int playing = log.onTick(w, tick);
        maxPlaying = std::max(maxPlaying, playing);
        EXPECT_GE(playing, 1);
        for (int i = 0; i < w.world.getNumMovies(); ++i) {
            if (w.entry(i).startTime > 0.0 && w.entry(i).startTime <= w.now()) plays.insert({i, w.entry(i).startTime});
        }
    });
    EXPECT_EQ(maxPlaying, 2) << "never more than the two halves of a crossfade";
    for (const SoundID loop : loops) EXPECT_GE(log.countOf(loop), 3) << loop;
    // A 2-s loop overlapping the next by 1 s: one start a second, each on its sample.
    EXPECT_GE(plays.size(), 39u);
    EXPECT_LE(plays.size(), 40u);
}

}  // namespace
}  // namespace sylvora::test
