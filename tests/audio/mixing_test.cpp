// The mix as heard: the 8.8 volume law, gain glides instead of steps, declicked starts and stops,
// and voices adding up.

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "enginetestsupport.h"

namespace sylvora::test {
namespace {

using audio::Engine;

TEST(Mixing, VolumeFollowsThe88Law) {
    TempDir dir;
    ToneSpec tone;
    tone.seconds = 2.0;
    tone.amplitude = 0.8;
    const std::string path = makeSound(dir, QStringLiteral("tone.wav"), tone);
    for (const auto& [volume, gain] :
         {std::pair<std::int16_t, double>{256, 1.0}, {128, 0.5}, {64, 0.25}, {0, 0.0}, {-256, 0.0}}) {
        Engine engine;
        auto sound = openOrFail(engine, path);
        ASSERT_TRUE(sound);
        sound->setVolume(volume);
        sound->start();
        const std::vector<float> out = renderFrames(engine, 9600);
        EXPECT_NEAR(rms(out, 0, 2400, 9600), gain * 0.8 / std::sqrt(2.0), 0.002) << "volume " << volume;
        EXPECT_EQ(sound->volume(), volume);
    }
}

// A 2 Hz sine is all but constant over a few milliseconds, so any step in the output is the gain's.
ToneSpec slowTone() {
    ToneSpec tone;
    tone.frequency = 2.0;
    tone.amplitude = 0.9;
    tone.seconds = 2.0;
    return tone;
}

double slowToneAt(int frame) {
    return 0.9 * std::sin(2.0 * M_PI * 2.0 * frame / 48000.0);
}

TEST(Mixing, VolumeChangesGlideWithoutSteps) {
    TempDir dir;
    Engine engine;
    auto sound = openOrFail(engine, makeSound(dir, QStringLiteral("slow.wav"), slowTone()));
    ASSERT_TRUE(sound);
    sound->start();
    renderFrames(engine, 6000);  // a quarter period: near the crest
    std::vector<float> out;
    for (std::int16_t volume : {0, 256, 40, 200}) {
        sound->setVolume(volume);
        const std::vector<float> block = renderFrames(engine, 1200);
        out.insert(out.end(), block.begin(), block.end());
    }
    // Unramped, the first change would be a step of 0.9; ramped over 20 ms it is below 0.9/960.
    EXPECT_LT(largestStep(out, 0), 0.0015);
    EXPECT_NEAR(out[2 * 1199], 0.0, 1e-6) << "the glide arrives at the new volume";
    EXPECT_NEAR(out[2 * 2399], slowToneAt(8399), 0.002);
}

TEST(Mixing, StartsAndStopsAreDeclicked) {
    TempDir dir;
    Engine engine;
    auto sound = openOrFail(engine, makeSound(dir, QStringLiteral("slow.wav"), slowTone()));
    ASSERT_TRUE(sound);
    sound->start();
    std::vector<float> out = renderFrames(engine, 6000);
    sound->stop();  // at the crest, 0.9 from silence
    std::vector<float> more = renderFrames(engine, 1000);
    out.insert(out.end(), more.begin(), more.end());
    sound->start();  // starts again at the crest
    more = renderFrames(engine, 1000);
    out.insert(out.end(), more.begin(), more.end());
    EXPECT_LT(largestStep(out, 0), 0.0045) << "0.9 spread over a 5 ms fade";
    EXPECT_NEAR(out[2 * 6000 + 2 * 500], 0.0, 1e-6);
    EXPECT_NEAR(out[2 * 7999], slowToneAt(6999), 0.002) << "resumed where it stopped";
}

// Instances disposed in one go, with no render between them (a world closed or reloaded), each
// still fade out; a wished fade stretches a stop to its own length, and a start from the beginning.
TEST(Mixing, DisposalsInOneGoFadeAndWishedFadesTakeTheirLength) {
    TempDir dir;
    Engine engine;
    const std::string path = makeSound(dir, QStringLiteral("slow.wav"), slowTone());
    std::vector<std::unique_ptr<audio::SoundInstance>> world;
    for (int i = 0; i < 3; ++i) {
        world.push_back(openOrFail(engine, path));
        world.back()->setVolume(85);  // a third each
        world.back()->start();
    }
    std::vector<float> out = renderFrames(engine, 6000);
    world.clear();
    const std::vector<float> closed = renderFrames(engine, 1000);
    out.insert(out.end(), closed.begin(), closed.end());
    EXPECT_LT(largestStep(out, 0), 0.0045) << "0.9 spread over a 5 ms fade";
    EXPECT_GT(std::fabs(closed[2 * 120]), 0.3) << "still halfway through its fade";
    EXPECT_NEAR(peak(closed, 240), 0.0, 1e-6);

    auto sound = openOrFail(engine, path);
    sound->fadeNextChange(0.04);
    sound->start();
    out = renderFrames(engine, 6000);
    EXPECT_NEAR(out[2 * 960], 0.5 * slowToneAt(960), 0.002) << "halfway into a 40 ms fade-in";
    sound->fadeNextChange(0.04);
    sound->stop();
    const std::vector<float> faded = renderFrames(engine, 2400);
    out.insert(out.end(), faded.begin(), faded.end());
    EXPECT_LT(largestStep(out, 0), 0.0006) << "0.9 spread over 40 ms";
    EXPECT_NEAR(faded[2 * 960], 0.5 * slowToneAt(6960), 0.002);
    EXPECT_NEAR(peak(faded, 1920), 0.0, 1e-6);
}

TEST(Mixing, VoicesAddUp) {
    TempDir dir;
    ToneSpec tone;
    tone.amplitude = 0.3;
    Engine engine;
    const std::string path = makeSound(dir, QStringLiteral("tone.wav"), tone);
    auto a = openOrFail(engine, path);
    auto b = openOrFail(engine, path);
    ASSERT_TRUE(a && b);
    a->start();
    b->start();
    const std::vector<float> both = renderFrames(engine, 4800);
    EXPECT_NEAR(peak(both, 480), 0.6, 0.01);
    b->setVolume(0);
    const std::vector<float> one = renderFrames(engine, 4800);
    EXPECT_NEAR(peak(one, 1200), 0.3, 0.01);
}

}  // namespace
}  // namespace sylvora::test
