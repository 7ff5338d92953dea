// The sleep timer on the virtual clock: the fade's curve heard through the world's volume, the
// stop at the end and the master volume given back, and what does and does not cancel it.

#include "core/playback/sleeptimer.h"

#include <gtest/gtest.h>

#include "support/worldfixture.h"

namespace sylvora::test {
namespace {

constexpr double MASTER = 0.8;
constexpr double AMPLITUDE = 0.5;
// A tick of the fade's own timer moves the gain by at most 2/30 per second of it.
constexpr double VOLUME_TOLERANCE = 0.01;

class SleepTimerTest : public WorldTest {
protected:
    SleepTimerTest() {
        world.setLoopSoundsCrossFadeDuration(0);  // a steady tone, so peaks measure the volume alone
        addLoop(writeSound(QStringLiteral("tone.wav"), 10.0, 440.0, AMPLITUDE));
        world.setVolume(MASTER);
        sleep.setListener([this] { ++heard; });
    }
    void runTo(double seconds) {
        runSeconds(seconds - elapsed);
        elapsed = seconds;
    }

    SleepTimer sleep{world};
    int heard = 0;
    double elapsed = 0.0;
};

TEST_F(SleepTimerTest, FadesAlongTheCurveStopsAndGivesTheVolumeBack) {
    world.start();
    sleep.start(60.0);
    EXPECT_EQ(heard, 1);
    runTo(29.0);
    EXPECT_FALSE(sleep.isFading());
    EXPECT_NEAR(sleep.secondsLeft(), 31.0, 0.1);
    EXPECT_DOUBLE_EQ(world.getVolume(), MASTER);

    for (const double at : {37.5, 45.0, 52.5, 57.0}) {
        SCOPED_TRACE(at);
        runTo(at);
        EXPECT_TRUE(sleep.isFading());
        EXPECT_NEAR(world.getVolume(), MASTER * fadeOutGain((at - 30.0) / 30.0), VOLUME_TOLERANCE);
        EXPECT_DOUBLE_EQ(sleep.masterVolume(), MASTER);
    }
    // What is heard follows: at 57 s the gain is 0.19, and it only falls from there.
    EXPECT_LT(play(2.0), AMPLITUDE * MASTER * 0.2);
    elapsed = 59.0;

    runTo(61.0);
    EXPECT_FALSE(world.isPlaying());
    EXPECT_FALSE(sleep.isActive());
    EXPECT_DOUBLE_EQ(world.getVolume(), MASTER);
    EXPECT_EQ(heard, 2);

    world.start();
    EXPECT_NEAR(play(1.0), AMPLITUDE * MASTER, 0.02);
}

TEST_F(SleepTimerTest, VolumeByHandAndAnotherWorldCarryOnButCancelGivesTheVolumeBack) {
    world.start();
    sleep.start(60.0);
    runTo(45.0);
    world.setVolume(0.5);  // a person picks a level in the menu during the fade
    EXPECT_DOUBLE_EQ(sleep.masterVolume(), 0.5);
    runTo(46.0);
    EXPECT_NEAR(world.getVolume(), 0.5 * fadeOutGain(16.0 / 30.0), VOLUME_TOLERANCE);

    world.resetToInitialState();  // another world opens and plays
    addLoop(writeSound(QStringLiteral("other.wav"), 10.0, 660.0, AMPLITUDE));
    world.start();
    runTo(50.0);
    EXPECT_TRUE(sleep.isFading());
    EXPECT_NEAR(world.getVolume(), 0.5 * fadeOutGain(20.0 / 30.0), VOLUME_TOLERANCE);

    sleep.cancel();
    EXPECT_FALSE(sleep.isActive());
    EXPECT_DOUBLE_EQ(world.getVolume(), 0.5);
    runTo(70.0);
    EXPECT_TRUE(world.isPlaying());
    EXPECT_DOUBLE_EQ(world.getVolume(), 0.5);
}

TEST_F(SleepTimerTest, ATimerShorterThanTheFadeFadesOverAllOfIt) {
    world.start();
    sleep.start(10.0);
    runTo(5.0);
    EXPECT_NEAR(world.getVolume(), MASTER * fadeOutGain(0.5), VOLUME_TOLERANCE);
    runTo(11.0);
    EXPECT_FALSE(world.isPlaying());
    EXPECT_DOUBLE_EQ(world.getVolume(), MASTER);
}

}  // namespace
}  // namespace sylvora::test
