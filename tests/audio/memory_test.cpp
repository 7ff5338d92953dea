// Where sound lives: short sounds decoded once and shared, long ones streamed through rings that
// exist only while needed, and instances disposed while the audio thread may still be mixing them.

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "audio/outputs/output.h"
#include "enginetestsupport.h"

namespace sylvora::test {
namespace {

using audio::Engine;

TEST(Memory, ShortSoundIsDecodedOnceAndSharedByItsInstances) {
    TempDir dir;
    ToneSpec tone;
    tone.seconds = 1.0;
    const std::string path = makeSound(dir, QStringLiteral("short.wav"), tone);
    Engine engine;
    auto a = openOrFail(engine, path);
    const std::size_t one = engine.decodedBytes();
    EXPECT_EQ(one, 48000u * 2 * sizeof(float));
    auto b = openOrFail(engine, path);
    EXPECT_EQ(engine.decodedBytes(), one) << "the second instance shares the first one's samples";
    ToneSpec other = tone;
    other.channels = 1;
    auto c = openOrFail(engine, makeSound(dir, QStringLiteral("other.wav"), other));
    EXPECT_EQ(engine.decodedBytes(), one + 48000u * sizeof(float)) << "mono is held as one channel";

    a->start();
    b->start();
    renderFrames(engine, 2048);
    a.reset();
    EXPECT_EQ(engine.decodedBytes(), one + 48000u * sizeof(float)) << "still held by the other instance";
    b.reset();
    c.reset();
    renderFrames(engine, 2048);
    engine.service();
    EXPECT_EQ(engine.decodedBytes(), 0u) << "freed with the last instance";
}

TEST(Memory, LongSoundIsStreamedThroughARingHeldOnlyWhileNeeded) {
    TempDir dir;
    ToneSpec tone;
    tone.seconds = 30.0;
    tone.sampleRate = 44100;
    Engine engine;
    auto sound = openOrFail(engine, makeSound(dir, QStringLiteral("long.ogg"), tone));
    ASSERT_TRUE(sound);
    EXPECT_EQ(engine.decodedBytes(), 0u);
    EXPECT_EQ(engine.ringsInUse(), 0u) << "no ring while nothing is scheduled";

    sound->prepareToStart();
    engine.waitForStreams();
    EXPECT_EQ(engine.ringsInUse(), 1u);
    sound->start();
    std::vector<float> block(2 * 512);
    engine.render(block.data(), 512);
    EXPECT_GT(peak(block, 64), 0.3) << "a prepared ring sounds in the very next block";
    EXPECT_EQ(engine.underruns(), 0u);

    renderFrames(engine, 10 * 48000);
    EXPECT_EQ(engine.underruns(), 0u);
    EXPECT_EQ(engine.ringsInUse(), 1u);
    EXPECT_EQ(engine.decodedBytes(), 0u) << "memory stays flat however long it plays";
    sound->stop();
    renderFrames(engine, 2048);
    engine.waitForStreams();
    EXPECT_EQ(engine.ringsInUse(), 0u) << "stop releases the ring once its fade has played";

    // Readied again the moment it stops, the new play waits for the fade-out to be played, and
    // not for its own start, before it takes the ring.
    sound->start();
    renderFrames(engine, 2048);
    sound->stop();
    sound->goToBeginning();
    sound->prepareToStart();
    renderFrames(engine, 2048);
    sound->start();
    engine.render(block.data(), 512);
    EXPECT_GT(peak(block, 64), 0.3) << "a play readied during a fade-out sounds in its first block";
    EXPECT_EQ(engine.underruns(), 0u);

    // Cued the moment it stops, on a sound that ends before its long fade-out does, it takes the
    // ring at once: the cue fires first.
    ToneSpec blip = tone;
    blip.seconds = 0.004;
    auto before = openOrFail(engine, makeSound(dir, QStringLiteral("blip.wav"), blip));
    before->start();
    sound->fadeNextChange(0.1);
    sound->stop();
    sound->goToBeginning();
    ASSERT_TRUE(sound->cueAfter(*before, 0.0));
    EXPECT_GT(peak(renderFrames(engine, 2048), 1024), 0.3) << "the cued play sounds";
    EXPECT_EQ(engine.underruns(), 0u);
}

TEST(Memory, DisposingPlayingInstancesIsSafeMidMix) {
    TempDir dir;
    ToneSpec shortTone;
    ToneSpec longTone;
    longTone.seconds = 5.0;
    const std::string shortPath = makeSound(dir, QStringLiteral("short.wav"), shortTone);
    const std::string longPath = makeSound(dir, QStringLiteral("long.flac"), longTone);
    Engine engine;
    auto output = audio::makeNullOutput(engine);
    ASSERT_TRUE(output->start());
    for (int round = 0; round < 20; ++round) {
        auto a = openOrFail(engine, shortPath);
        auto b = openOrFail(engine, longPath);
        ASSERT_TRUE(a && b);
        a->start();
        b->start();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        engine.service();
    }
    // Once nothing has pulled for a while, the fade-outs that were never played are not waited for.
    output->stop();
    std::this_thread::sleep_for(std::chrono::milliseconds(600));
    engine.service();
    engine.service();
    EXPECT_EQ(engine.decodedBytes(), 0u);
}

}  // namespace
}  // namespace sylvora::test
