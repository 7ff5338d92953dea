// The rate `sylvora-cli play` opens the engine at: a world whose loops share one rate plays at it,
// and anything else plays at the usual 48 kHz; and the device buffer that keeps a volume change
// audible within 50 ms at whatever rate that is.

#include <gtest/gtest.h>

#include "audio/outputs/sdl/sdloutput.h"
#include "cli/playbackrate.h"
#include "support/tempdir.h"
#include "worldpackages.h"

using namespace sylvora::test;
using sylvora::cli::choosePlaybackRate;

namespace {

ToneSpec toneAt(int sampleRate) {
    ToneSpec tone;
    tone.seconds = 0.25;
    tone.sampleRate = sampleRate;
    return tone;
}

class PlaybackRate : public ::testing::Test {
protected:
    bool addLoop(const QString& name, int sampleRate) {
        return addSound(package, QStringLiteral("Loop Sounds"), name, toneAt(sampleRate));
    }
    void describe(const QString& loopEntries, const QString& environmentEntries = {}) {
        temp.writeFile(QStringLiteral("Brook.sylvora/data.plist"),
                       xmlPlist(QStringLiteral("<key>Name</key><string>Brook</string><key>Loop Sounds</key><array>") +
                                loopEntries + QStringLiteral("</array><key>Environment Sounds</key><array>") +
                                environmentEntries + QStringLiteral("</array>")));
    }

    TempDir temp;
    QString package = temp.makeDir(QStringLiteral("Brook.sylvora"));
};

}  // namespace

TEST_F(PlaybackRate, LoopsSharingOneRatePlayAtIt) {
    ASSERT_TRUE(addLoop(QStringLiteral("brook.flac"), 44100));
    ASSERT_TRUE(addLoop(QStringLiteral("breeze.wav"), 44100));
    // Environment sounds come and go, so theirs does not count.
    ASSERT_TRUE(addSound(package, QStringLiteral("Environment Sounds"), QStringLiteral("owl.wav"), toneAt(48000)));
    describe(loopEntry(QStringLiteral("brook.flac")) + loopEntry(QStringLiteral("breeze.wav")),
             environmentEntry(QStringLiteral("owl.wav"), 0.2, 0.8, 5, 9));
    EXPECT_EQ(choosePlaybackRate(package), 44100);
}

TEST_F(PlaybackRate, LoopsOfDifferentRatesPlayAtTheUsualRate) {
    ASSERT_TRUE(addLoop(QStringLiteral("brook.flac"), 44100));
    ASSERT_TRUE(addLoop(QStringLiteral("breeze.wav"), 22050));
    describe(loopEntry(QStringLiteral("brook.flac")) + loopEntry(QStringLiteral("breeze.wav")));
    EXPECT_EQ(choosePlaybackRate(package), 48000);
}

TEST_F(PlaybackRate, EntriesTheLoaderSkipsDoNotCount) {
    ASSERT_TRUE(addLoop(QStringLiteral("brook.wav"), 32000));
    temp.writeFile(QStringLiteral("Brook.sylvora/Loop Sounds/garbage.wav"), "not a sound at all");
    describe(loopEntry(QStringLiteral("missing.wav")) + loopEntry(QStringLiteral("garbage.wav")) +
             loopEntry(QStringLiteral("../data.plist")) + QStringLiteral("<string>odd</string>") +
             loopEntry(QStringLiteral("brook.wav")));
    EXPECT_EQ(choosePlaybackRate(package), 32000);
}

TEST_F(PlaybackRate, RatesOutsideWhatADeviceTakesPlayAtTheUsualRate) {
    ASSERT_TRUE(addLoop(QStringLiteral("low.wav"), 4000));
    describe(loopEntry(QStringLiteral("low.wav")));
    EXPECT_EQ(choosePlaybackRate(package), 48000);
}

TEST_F(PlaybackRate, WorldsWithoutLoopsOrWithoutADescriptionPlayAtTheUsualRate) {
    EXPECT_EQ(choosePlaybackRate(package), 48000);
    temp.writeFile(QStringLiteral("Brook.sylvora/data.plist"), "not a property list");
    EXPECT_EQ(choosePlaybackRate(package), 48000);
    describe({});
    EXPECT_EQ(choosePlaybackRate(package), 48000);
    EXPECT_EQ(choosePlaybackRate(temp.path() + QStringLiteral("/Nowhere.sylvora")), 48000);
}

TEST(DeviceBuffer, KeepsAVolumeChangeWithinFiftyMillisecondsAtEveryRate) {
    using sylvora::audio::SdlOutput;
    EXPECT_EQ(SdlOutput::bufferFrames(44100), 1024);
    EXPECT_EQ(SdlOutput::bufferFrames(48000), 1024);
    for (const int rate : {8000, 11025, 16000, 22050, 32000, 44100, 48000, 88200, 96000, 176400, 192000}) {
        const int frames = SdlOutput::bufferFrames(rate);
        EXPECT_EQ(frames & (frames - 1), 0) << rate;
        // Waiting for the next callback and then for the buffer ahead of it: two buffers at most.
        EXPECT_LE(2.0 * frames / rate, 0.050) << rate;
        // Any smaller and the device wakes twice as often for nothing.
        EXPECT_GT(4.0 * frames / rate, 0.050) << rate;
    }
}
