// What the scheduler reads back from an instance: state that changes at once on the calling
// thread, positions that follow what has been heard, ends of plays, and answers from the audio
// thread that arrive late and must not undo what the caller did meanwhile.

#include <gtest/gtest.h>

#include "enginetestsupport.h"

namespace sylvora::test {
namespace {

using audio::Engine;
using audio::SoundInstance;

// A short sound held in memory and a long one streamed from disk must behave alike.
class PlayState : public testing::TestWithParam<double> {
  protected:
    void SetUp() override {
        ToneSpec tone;
        tone.seconds = GetParam();
        tone.sampleRate = 44100;
        sound = openOrFail(engine, makeSound(dir, QStringLiteral("tone.flac"), tone));
        ASSERT_TRUE(sound);
    }
    std::int64_t seconds(double s) const { return std::llround(s * 44100); }

    TempDir dir;
    Engine engine;
    std::unique_ptr<SoundInstance> sound;
};

TEST_P(PlayState, NewInstanceIsStoppedAtItsBeginningAndCallsTakeEffectAtOnce) {
    EXPECT_EQ(sound->rate(), 0.0);
    EXPECT_EQ(sound->time(), 0);
    EXPECT_FALSE(sound->isDone());
    EXPECT_EQ(sound->volume(), 256);
    EXPECT_EQ(sound->duration(), seconds(GetParam()));
    // No audio thread runs here: what the caller reads back is its own last call.
    sound->start();
    EXPECT_NE(sound->rate(), 0.0);
    sound->setVolume(77);
    EXPECT_EQ(sound->volume(), 77);
    sound->stop();
    EXPECT_EQ(sound->rate(), 0.0);
    sound->start();
    sound->goToBeginning();
    EXPECT_NE(sound->rate(), 0.0);
    EXPECT_EQ(sound->time(), 0);
}

TEST_P(PlayState, PositionFollowsWhatWasPlayedAndStaysWhenStopped) {
    sound->prepareToStart();
    sound->start();
    renderFrames(engine, 24000);
    EXPECT_EQ(sound->time(), seconds(0.5));
    sound->stop();
    const std::int64_t stoppedAt = sound->time();
    const std::vector<float> tail = renderFrames(engine, 4800);
    EXPECT_EQ(sound->time(), stoppedAt) << "the fade-out does not move the position";
    EXPECT_EQ(sound->rate(), 0.0);
    EXPECT_GT(peak(tail, 0, 16), 0.05) << "the stop fades out rather than cutting";
    EXPECT_EQ(peak(tail, 480), 0.0) << "and is silent after its fade";
    sound->start();
    renderFrames(engine, 12000);
    EXPECT_EQ(sound->time(), seconds(0.75)) << "a restart resumes where the stop left it";
}

TEST_P(PlayState, EndOfPlayIsDoneAtTheFullDurationAndStaysSo) {
    sound->start();
    const std::size_t frames = renderUntilDone(engine, *sound, 20 * 48000);
    EXPECT_TRUE(sound->isDone());
    EXPECT_EQ(sound->rate(), 0.0);
    EXPECT_EQ(sound->time(), sound->duration());
    EXPECT_NEAR(static_cast<double>(frames), GetParam() * 48000.0, 512.0);
    // Unmanaged, it stays done; stopping it keeps it done and at the end; starting it there ends
    // it again at once.
    renderFrames(engine, 2048);
    EXPECT_TRUE(sound->isDone());
    sound->stop();
    EXPECT_TRUE(sound->isDone());
    EXPECT_EQ(sound->time(), sound->duration());
    sound->start();
    EXPECT_NE(sound->rate(), 0.0);
    renderFrames(engine, 512);
    EXPECT_TRUE(sound->isDone());
    EXPECT_EQ(sound->rate(), 0.0);
}

TEST_P(PlayState, DoneInTheBlockThatPlaysTheLastFrame) {
    // Blocks that divide the length exactly, so no block comes up short to give the end away.
    constexpr std::size_t block = 480;
    const auto total = static_cast<std::size_t>(GetParam() * 48000);
    ASSERT_EQ(total % block, 0u);
    sound->start();
    renderFrames(engine, total - block, block);
    EXPECT_FALSE(sound->isDone());
    renderFrames(engine, block, block);
    EXPECT_TRUE(sound->isDone()) << "the end is reported with the last frame, not a block later";
    EXPECT_EQ(sound->time(), sound->duration());
    EXPECT_EQ(sound->rate(), 0.0);
}

TEST_P(PlayState, RewindRestartsFromTheBeginningAndAStaleEndDoesNotUndoIt) {
    sound->start();
    renderFrames(engine, 24000);
    sound->goToBeginning();
    EXPECT_EQ(sound->time(), 0);
    EXPECT_NE(sound->rate(), 0.0);
    renderFrames(engine, 4800);
    EXPECT_EQ(sound->time(), seconds(0.1));

    // Play past the end without asking, as a tick that comes late would.
    renderFrames(engine, static_cast<std::size_t>(GetParam() * 48000) + 4096);
    sound->goToBeginning();
    EXPECT_FALSE(sound->isDone());
    EXPECT_EQ(sound->time(), 0);
    EXPECT_EQ(sound->rate(), 0.0);
    sound->start();
    EXPECT_FALSE(sound->isDone());
    EXPECT_NE(sound->rate(), 0.0);
    const std::vector<float> out = renderFrames(engine, 4800);
    EXPECT_FALSE(sound->isDone());
    EXPECT_EQ(sound->time(), seconds(0.1));
    EXPECT_GT(peak(out), 0.4);
}

INSTANTIATE_TEST_SUITE_P(MemoryAndStream, PlayState, testing::Values(1.0, 4.0),
                         [](const auto& testCase) { return testCase.param < 2.0 ? "InMemory" : "Streamed"; });

}  // namespace
}  // namespace sylvora::test
