// The pool of loaded sound instances: loading, reuse, the limit of 100 and compaction, and the
// schedule self-check's report.

#include <gtest/gtest.h>

#include <QFile>
#include <array>

#include "core/files/alias.h"
#include "core/platform/beep.h"
#include "support/worldfixture.h"

namespace sylvora::test {
namespace {

class SoundInstancePool : public testing::Test {
protected:
    WorldFixture w;
};

TEST_F(SoundInstancePool, AddingASoundLoadsOneUnscheduledInstanceWithItsDuration) {
    const SoundID loop = w.addLoop(w.writeSound("loop.wav", 1.5, 440.0));
    const SoundID env = w.addEnvironment(w.writeSound("env.flac", 0.25, 880.0));
    ASSERT_NE(loop, 0u);
    ASSERT_NE(env, 0u);
    ASSERT_EQ(w.world.getNumMovies(), 2);

    const MovieEntry& first = w.entry(0);
    EXPECT_TRUE(first.isLoopSound);
    EXPECT_FALSE(first.skipFadeIn);
    EXPECT_EQ(first.soundID, loop);
    EXPECT_EQ(first.volume, 1.0);
    EXPECT_NEAR(first.duration, 1.5, 1e-3);
    EXPECT_EQ(first.startTime, -1.0);
    ASSERT_NE(first.movie, nullptr);
    EXPECT_EQ(first.movie->rate(), 0.0);

    EXPECT_FALSE(w.entry(1).isLoopSound);
    EXPECT_NEAR(w.entry(1).duration, 0.25, 1e-3);

    EXPECT_EQ(w.world.loadSoundFileIntoMovieList(true, loop), noErr);
    EXPECT_EQ(w.world.getNumMovies(), 3);
    EXPECT_NE(w.entry(2).movie.get(), w.entry(0).movie.get()) << "each load is an independent instance";
}

TEST_F(SoundInstancePool, UnknownSoundsAndUnloadableFilesAddNothing) {
    const QString path = w.writeSound("loop.wav", 0.5, 440.0);
    const SoundID loop = w.addLoop(path);
    ASSERT_EQ(w.world.getNumMovies(), 1);

    EXPECT_EQ(w.world.loadSoundFileIntoMovieList(true, 999), fnfErr);
    // Loop and environment sounds are looked up in their own tables.
    EXPECT_EQ(w.world.loadSoundFileIntoMovieList(false, loop), fnfErr);
    EXPECT_EQ(w.world.getUnscheduledMovie(true, 999), -1);

    // A file that no decoder reads: the engine's status, unchanged.
    QFile garbage(path);
    ASSERT_TRUE(garbage.open(QIODevice::WriteOnly | QIODevice::Truncate));
    garbage.write(QByteArray(4096, 'x'));
    garbage.close();
    EXPECT_NE(w.world.loadSoundFileIntoMovieList(true, loop), noErr);
    EXPECT_EQ(w.world.getNumMovies(), 1);

    // A file that is gone: the alias resolver's status.
    ASSERT_TRUE(QFile::remove(path));
    FSRef unused;
    const OSStatus resolverStatus = FSResolveAlias(*w.world.getLoopSound(loop), unused);
    ASSERT_NE(resolverStatus, noErr);
    EXPECT_EQ(w.world.loadSoundFileIntoMovieList(true, loop), resolverStatus);
    EXPECT_EQ(w.world.getNumMovies(), 1);
}

TEST_F(SoundInstancePool, FreeInstancesAreReusedLowestFirstAndNewOnesLoadedOnlyWhenAllAreBusy) {
    const SoundID loop = w.addLoop(w.writeSound("loop.wav", 3.0, 440.0));
    ASSERT_EQ(w.world.loadSoundFileIntoMovieList(true, loop), noErr);
    ASSERT_EQ(w.world.getNumMovies(), 2);
    EXPECT_EQ(w.world.getUnscheduledMovie(true, loop), 0);
    EXPECT_EQ(w.world.getUnscheduledMovie(true, loop), 0) << "handing out does not schedule";
    EXPECT_EQ(w.world.getNumMovies(), 2);

    // Playing, a world with one loop sound keeps two instances busy: the one playing, the next one.
    w.world.start();
    EXPECT_EQ(w.scheduledEntries(), (std::vector<int>{0, 1}));
    EXPECT_EQ(w.world.getUnscheduledMovie(true, loop), 2);
    EXPECT_EQ(w.world.getNumMovies(), 3);
    EXPECT_EQ(w.entry(2).startTime, -1.0);
}

TEST_F(SoundInstancePool, AFullPoolRefusesNewInstancesButStillHandsOutFreeOnes) {
    std::vector<SoundID> loops;
    for (int i = 0; i < World::MAX_LOOP_SOUNDS; ++i) {
        const QString path = w.writeSound(QStringLiteral("s%1.wav").arg(i), 0.2, 200.0 + 10 * i);
        loops.push_back(w.addLoop(path));
        ASSERT_NE(w.addEnvironment(path), 0u);
    }
    ASSERT_EQ(w.world.getNumMovies(), World::MAX_MOVIES);

    EXPECT_EQ(w.world.loadSoundFileIntoMovieList(true, loops[3]), movieListFullErr);
    EXPECT_EQ(w.world.getUnscheduledMovie(true, loops[3]), w.entriesOf(loops[3]).front());

    w.world.start();
    EXPECT_EQ(w.world.getNumMovies(), World::MAX_MOVIES);
    for (const int index : w.scheduledEntries()) {
        const SoundID busy = w.entry(index).soundID;
        if (w.entriesOf(busy).size() == 1) {
            EXPECT_EQ(w.world.getUnscheduledMovie(w.entry(index).isLoopSound, busy), -1);
        }
    }
    // Every environment sound still got its one play; a pick needing a second instance did not.
    int scheduledEnvironment = 0;
    for (const int index : w.scheduledEntries()) scheduledEnvironment += w.entry(index).isLoopSound ? 0 : 1;
    EXPECT_EQ(scheduledEnvironment, World::MAX_ENVIRONMENT_SOUNDS);
    // A loop sound that is not busy is still handed out.
    for (const SoundID loop : loops) {
        const std::vector<int> entries = w.entriesOf(loop);
        if (w.entry(entries.front()).startTime < 0.0) {
            EXPECT_EQ(w.world.getUnscheduledMovie(true, loop), entries.front());
            break;
        }
    }
}

TEST_F(SoundInstancePool, RemovingASoundsInstancesKeepsTheOrderOfTheRest) {
    const SoundID a = w.addLoop(w.writeSound("a.wav", 0.5, 300.0));
    const SoundID b = w.addLoop(w.writeSound("b.wav", 0.5, 400.0));
    const SoundID c = w.addLoop(w.writeSound("c.wav", 0.5, 500.0));
    ASSERT_EQ(w.world.loadSoundFileIntoMovieList(true, b), noErr);
    ASSERT_EQ(w.world.loadSoundFileIntoMovieList(true, a), noErr);
    // Pool: a b c b a
    std::array<const audio::SoundInstance*, 5> before{};
    for (int i = 0; i < 5; ++i) before[static_cast<std::size_t>(i)] = w.entry(i).movie.get();

    EXPECT_EQ(w.world.removeAllMoviesWithID(b), 3);
    ASSERT_EQ(w.world.getNumMovies(), 3);
    EXPECT_EQ(w.entry(0).soundID, a);
    EXPECT_EQ(w.entry(1).soundID, c);
    EXPECT_EQ(w.entry(2).soundID, a);
    EXPECT_EQ(w.entry(0).movie.get(), before[0]);
    EXPECT_EQ(w.entry(1).movie.get(), before[2]);
    EXPECT_EQ(w.entry(2).movie.get(), before[4]);

    EXPECT_EQ(w.world.removeAllMoviesWithID(999), 3) << "an identifier without instances changes nothing";
    EXPECT_EQ(w.world.removeAllMoviesWithID(a), 1);
    EXPECT_EQ(w.entry(0).soundID, c);
}

class ScheduleReport : public testing::Test {
protected:
    ScheduleReport() {
        setSysBeepHook([this] { ++beeps; });
    }
    ~ScheduleReport() override { setSysBeepHook({}); }

    std::string report() {
        testing::internal::CaptureStderr();
        w.world.validateScheduling();
        return testing::internal::GetCapturedStderr();
    }

    WorldFixture w;
    int beeps = 0;
};

// Stopped, nothing is scheduled: every non-empty group and every ungrouped sound is reported,
// each after two beeps, groups first.
TEST_F(ScheduleReport, ReportsEachUnscheduledGroupAndUngroupedSoundWithTwoBeeps) {
    const GroupID birds = w.world.addGroup(QStringLiteral("Birds"));
    const GroupID empty = w.world.addGroup(QStringLiteral("Empty"));
    const SoundID robin = w.addEnvironment(w.writeSound("robin.wav", 0.2, 2000.0));
    const SoundID wren = w.addEnvironment(w.writeSound("wren.wav", 0.2, 2500.0));
    const SoundID creek = w.addEnvironment(w.writeSound("creek.wav", 0.2, 700.0));
    w.world.setEnvironmentSoundGroupID(robin, birds);
    w.world.setEnvironmentSoundGroupID(wren, birds);
    ASSERT_NE(empty, 0u);

    const std::string expected = "*** GroupID " + std::to_string(birds) + " 'Birds' has 0 movies scheduled for it ***\n" +
                                 "*** EnvironmentSoundID " + std::to_string(creek) + " '' has 0 movies scheduled for it ***\n";
    EXPECT_EQ(report(), expected);
    EXPECT_EQ(beeps, 4);

    // Once the sound's name has been looked up it is printed.
    EXPECT_EQ(w.world.getEnvironmentSoundFilename(creek), QStringLiteral("creek.wav"));
    EXPECT_NE(report().find("'creek.wav' has 0 movies"), std::string::npos);
}

// Mac Roman, not Latin-1: é is 0x8E and € is 0xDB there, an accent stored as a combining mark still
// finds its letter, and Ð (Latin-1 has it, Mac Roman does not), Cyrillic and over-long names print
// as the empty string.
TEST_F(ScheduleReport, NamesArePrintedAsMacRomanOrNotAtAll) {
    const QString names[] = {QStringLiteral("Caf\u00e9 \u20ac"), QStringLiteral("Cafe\u0301"), QStringLiteral("\u00d0"),
                             QStringLiteral("\u041b\u0435\u0441"), QString(300, QLatin1Char('n'))};
    const std::string printedAs[] = {"Caf\x8e \xdb", "Caf\x8e", "", "", ""};
    std::vector<GroupID> groups;
    for (const QString& name : names) {
        groups.push_back(w.world.addGroup(name));
        const SoundID member = w.addEnvironment(w.writeSound(QStringLiteral("m%1.wav").arg(groups.size()), 0.2, 1000.0));
        w.world.setEnvironmentSoundGroupID(member, groups.back());
    }
    const std::string printed = report();
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const std::string line = "GroupID " + std::to_string(groups[i]) + " '" + printedAs[i] + "' has 0";
        EXPECT_NE(printed.find(line), std::string::npos) << line << "\n" << printed;
    }
}

}  // namespace
}  // namespace sylvora::test
