// The rate `sylvora-cli play` opens the engine at: a world whose loops share one rate plays at it,
// and anything else plays at the usual 48 kHz; and the device buffer that keeps a volume change
// audible within 50 ms at whatever rate that is.

#include <gtest/gtest.h>

#include <utility>
#include <vector>

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

}  // namespace

// Environment sounds come and go, so their rates do not count, and neither do entries the loader
// skips; rates a device does not take play at the usual rate.
TEST(PlaybackRate, LoopsSharingOneRatePlayAtItAndAnythingElseAtTheUsualRate) {
    struct Case {
        const char* what;
        std::vector<std::pair<const char*, int>> loops;
        int expected;
    };
    const QString skipped = loopEntry(QStringLiteral("missing.wav")) + loopEntry(QStringLiteral("garbage.wav")) +
                            loopEntry(QStringLiteral("../data.plist")) + QStringLiteral("<string>odd</string>");
    TempDir temp;
    int n = 0;
    for (const Case& c : {Case{"one rate", {{"brook.flac", 44100}, {"breeze.wav", 44100}}, 44100},
                          Case{"two rates", {{"brook.flac", 44100}, {"breeze.wav", 22050}}, 48000},
                          Case{"skipped entries", {{"brook.wav", 32000}}, 32000},
                          Case{"below what a device takes", {{"low.wav", 4000}}, 48000}}) {
        SCOPED_TRACE(c.what);
        const QString package = temp.makeDir(QStringLiteral("World %1.sylvora").arg(++n));
        QString entries = skipped;
        for (const auto& [name, rate] : c.loops) {
            ASSERT_TRUE(addSound(package, QStringLiteral("Loop Sounds"), QString::fromLatin1(name), toneAt(rate)));
            entries += loopEntry(QString::fromLatin1(name));
        }
        temp.writeFile(QStringLiteral("World %1.sylvora/Loop Sounds/garbage.wav").arg(n), "not a sound at all");
        ASSERT_TRUE(addSound(package, QStringLiteral("Environment Sounds"), QStringLiteral("owl.wav"), toneAt(48000)));
        temp.writeFile(QStringLiteral("World %1.sylvora/data.plist").arg(n),
                       xmlPlist(QStringLiteral("<key>Loop Sounds</key><array>") + entries +
                                QStringLiteral("</array><key>Environment Sounds</key><array>") +
                                environmentEntry(QStringLiteral("owl.wav"), 0.2, 0.8, 5, 9) + QStringLiteral("</array>")));
        EXPECT_EQ(choosePlaybackRate(package), c.expected);
    }
}

TEST(PlaybackRate, WorldsWithoutLoopsOrWithoutADescriptionPlayAtTheUsualRate) {
    TempDir temp;
    const QString package = temp.makeDir(QStringLiteral("Brook.sylvora"));
    EXPECT_EQ(choosePlaybackRate(package), 48000);
    temp.writeFile(QStringLiteral("Brook.sylvora/data.plist"), "not a property list");
    EXPECT_EQ(choosePlaybackRate(package), 48000);
    temp.writeFile(QStringLiteral("Brook.sylvora/data.plist"), xmlPlist(QStringLiteral("<key>Loop Sounds</key><array/>")));
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
