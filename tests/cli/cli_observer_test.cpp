// What the live status line reports while a world plays: the loop sound (both during a crossfade)
// and the last environment sound heard. Played on the virtual loop, so every run is the same.

#include <gtest/gtest.h>

#include <QSet>

#include "audio/engine/engine.h"
#include "cli/playbackobserver.h"
#include "cli/worldloading.h"
#include "core/render/offlinerenderer.h"
#include "core/time/virtualeventloop.h"
#include "core/world/world.h"
#include "support/tempdir.h"
#include "worldpackages.h"

using namespace sylvora;
using namespace sylvora::test;

TEST(PlaybackObserver, FollowsLoopsThroughCrossfadesAndNamesTheLastEnvironmentSound) {
    TempDir temp;
    const QString package = temp.makeDir(QStringLiteral("Pond.sylvora"));
    ToneSpec loop;
    loop.seconds = 4.0;
    ToneSpec chirp;
    chirp.seconds = 0.5;
    ASSERT_TRUE(addSound(package, QStringLiteral("Loop Sounds"), QStringLiteral("Still Water.wav"), loop));
    ASSERT_TRUE(addSound(package, QStringLiteral("Environment Sounds"), QStringLiteral("Frog.wav"), chirp));
    temp.writeFile(QStringLiteral("Pond.sylvora/data.plist"),
                   xmlPlist(QStringLiteral("<key>Loop Sounds Crossfade Duration</key><integer>1</integer>"
                                           "<key>Loop Sounds</key><array>") +
                            loopEntry(QStringLiteral("Still Water.wav")) +
                            QStringLiteral("</array><key>Environment Sounds</key><array>") +
                            environmentEntry(QStringLiteral("Frog.wav"), 1, 1, 2, 3) + QStringLiteral("</array>")));

    audio::Engine engine;
    VirtualEventLoop loopClock;
    World world(engine, loopClock, 3u);
    ASSERT_EQ(cli::loadWorldFromPath(world, package), noErr);
    OfflineRenderer renderer(engine, loopClock);
    cli::PlaybackObserver observer;
    QSet<QString> loopsShown;
    std::vector<double> frogTimes;
    renderer.setTickObserver([&](std::uint64_t) {
        const QString before = observer.lastEnvironmentSound();
        const double beforeTime = observer.lastEnvironmentSoundTime();
        observer.poll(world, loopClock.currentEventTime());
        loopsShown.insert(observer.playingLoops());
        if (observer.lastEnvironmentSoundTime() != beforeTime || observer.lastEnvironmentSound() != before) {
            frogTimes.push_back(observer.lastEnvironmentSoundTime() - loopClock.clockOrigin());
        }
    });
    world.start();
    renderer.renderSeconds(12.0, {});

    EXPECT_TRUE(loopsShown.contains(QStringLiteral("Still Water")));
    EXPECT_TRUE(loopsShown.contains(QStringLiteral("Still Water > Still Water")));
    for (const QString& shown : loopsShown) {
        EXPECT_TRUE(shown == u"Still Water" || shown == u"Still Water > Still Water") << shown.toStdString();
    }
    EXPECT_EQ(observer.lastEnvironmentSound(), QStringLiteral("Frog"));
    // Each call the frog makes is noticed once: every 2.5 to 3.5 s, so 3 to 5 times in 12 s.
    EXPECT_GE(frogTimes.size(), 3u);
    EXPECT_LE(frogTimes.size(), 5u);
}

TEST(PlaybackObserver, ShowsFileNamesWithoutTheirExtension) {
    EXPECT_EQ(cli::PlaybackObserver::displayName(QStringLiteral("Rain on the Pines.flac")), QStringLiteral("Rain on the Pines"));
    EXPECT_EQ(cli::PlaybackObserver::displayName(QStringLiteral("v1.2 wind.ogg")), QStringLiteral("v1.2 wind"));
    EXPECT_EQ(cli::PlaybackObserver::displayName(QStringLiteral("noextension")), QStringLiteral("noextension"));
}
