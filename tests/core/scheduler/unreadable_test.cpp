// Loop sounds whose files break while the world plays (deleted, emptied in place, replaced by
// garbage): one failed play, then the sound sits out, with no further attempt, while the other loop
// goes on or the world stays silent; mended, it plays again. Attempts are counted as the kernel
// sees them, by the opens of the file.

#include <sys/inotify.h>
#include <unistd.h>

#include <QFile>
#include <cstdio>

#include "support/worldfixture.h"

namespace sylvora::test {
namespace {

class OpenCounter {
public:
    explicit OpenCounter(const QString& folder) : fd_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        EXPECT_GE(inotify_add_watch(fd_, QFile::encodeName(folder).constData(), IN_OPEN), 0);
    }
    ~OpenCounter() { close(fd_); }
    OpenCounter(const OpenCounter&) = delete;
    OpenCounter& operator=(const OpenCounter&) = delete;

    // Opens of the file `name` in the folder since the last call.
    int take(const char* name) {
        int count = 0;
        alignas(inotify_event) char buffer[4096];
        for (ssize_t got; (got = read(fd_, buffer, sizeof buffer)) > 0;) {
            for (char* at = buffer; at < buffer + got;) {
                const auto* event = reinterpret_cast<const inotify_event*>(at);
                if (event->len > 0 && qstrcmp(event->name, name) == 0) ++count;
                at += sizeof(inotify_event) + event->len;
            }
        }
        return count;
    }

private:
    int fd_;
};

enum class Break { Deleted, Emptied, Garbage };

void breakFile(const QString& path, Break how) {
    if (how == Break::Deleted) {
        ASSERT_TRUE(QFile::remove(path));
    } else if (how == Break::Emptied) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.resize(0));
    } else {
        QFile garbage(path + QStringLiteral(".new"));
        ASSERT_TRUE(garbage.open(QIODevice::WriteOnly));
        QByteArray bytes(200000, '\0');
        for (int i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>((i * 7919 + 13) >> 3);
        garbage.write(bytes);
        garbage.close();
        ASSERT_EQ(std::rename(QFile::encodeName(garbage.fileName()).constData(), QFile::encodeName(path).constData()), 0);
    }
}

TEST(UnreadableLoopSound, SitsOutAfterOneFailedPlayUntilItsFileChanges) {
    struct Case {
        Break how;
        bool otherLoop;
    };
    for (const Case c : {Case{Break::Deleted, true}, Case{Break::Emptied, true}, Case{Break::Garbage, true},
                         Case{Break::Emptied, false}, Case{Break::Garbage, false}}) {
        SCOPED_TRACE(testing::Message() << "break " << static_cast<int>(c.how) << (c.otherLoop ? ", two loops" : ", alone"));
        WorldFixture w(3);
        w.world.setLoopSoundsCrossFadeDuration(0);
        // Four seconds: long enough to be streamed from the file, so each play reads it again.
        const QString fragile = w.writeSound(QStringLiteral("Loop Sounds/fragile.wav"), 4.0, 660.0);
        const SoundID broken = w.addLoop(fragile);
        if (c.otherLoop) w.addLoop(w.writeSound(QStringLiteral("Loop Sounds/steady.wav"), 4.0, 440.0));
        // An environment sound not due for 100 s: the failed loop's successor is released, not it.
        const SoundID bird = w.addEnvironment(w.writeSound(QStringLiteral("bird.wav"), 0.2, 880.0));
        w.world.setEnvironmentSoundMinInterval(bird, 100);
        w.world.setEnvironmentSoundMaxInterval(bird, 100);
        w.world.start();
        w.runSeconds(2.0);
        OpenCounter opens(w.dir.filePath(QStringLiteral("Loop Sounds")));
        breakFile(fragile, c.how);
        bool birdHeard = false;
        w.runSeconds(20.0, [&](int) { birdHeard = birdHeard || w.isAudible(bird); });  // five turns: every pick of it would be an attempt
        EXPECT_FALSE(birdHeard);
        EXPECT_EQ(w.world.getUnreadableLoopSounds(), QStringList{QStringLiteral("fragile.wav")});
        EXPECT_LE(opens.take("fragile.wav"), 2);  // one attempt: a decoder or two try the file

        // From then on not one attempt more; the other loop is heard every second, or nothing is.
        for (int second = 0; second < 20; ++second) {
            const float peak = w.play(1.0);
            if (c.otherLoop) EXPECT_GT(peak, 0.2f) << "second " << second;
            else EXPECT_EQ(peak, 0.0f) << "second " << second;
        }
        EXPECT_EQ(opens.take("fragile.wav"), 0);

        // Mended (with another length), it takes its turns again, measured from its new file; with
        // no loop playing, the chain starts again with it at once.
        w.writeSound(QStringLiteral("Loop Sounds/fragile.wav"), 3.5, 660.0);
        StartLog log;
        int mendedAt = -1;
        w.runSeconds(30.0, [&](int tick) {
            mendedAt = mendedAt < 0 ? tick : mendedAt;
            log.onTick(w, tick);
        });
        EXPECT_TRUE(w.world.getUnreadableLoopSounds().isEmpty());
        ASSERT_GT(log.countOf(broken), 0);
        EXPECT_TRUE(c.otherLoop || (log.starts.front().sound == broken && log.starts.front().tick - mendedAt <= 1))
            << "started at tick " << log.starts.front().tick - mendedAt << " after the mend";
        for (int index = 0; index < w.world.getNumMovies(); ++index) {
            if (w.entry(index).isLoopSound) {
                EXPECT_NEAR(w.entry(index).duration, w.entry(index).soundID == broken ? 3.5 : 4.0, 0.01) << "entry " << index;
            }
        }
    }
}

// Stopped with a sound still broken, the world wakes for nothing while its file stays as it is, and
// takes the sound back on the loop's first turn after the file is mended, so that it plays at the
// next start.
TEST(UnreadableLoopSound, IsWatchedWithoutWakingUntilItsFileIsMended) {
    WorldFixture w(3);
    const QString fragile = w.writeSound(QStringLiteral("Loop Sounds/fragile.wav"), 4.0, 660.0);
    w.addLoop(fragile);
    w.world.start();
    w.runSeconds(1.0);
    breakFile(fragile, Break::Garbage);
    w.runSeconds(5.0);
    w.world.stop();
    ASSERT_EQ(w.world.getUnreadableLoopSounds(), QStringList{QStringLiteral("fragile.wav")});
    int woken = 0;
    for (int turn = 0; turn < 100; ++turn) woken += w.eventLoop.processDueTimers();
    EXPECT_EQ(woken, 0);
    w.writeSound(QStringLiteral("Loop Sounds/fragile.wav"), 3.5, 660.0);
    EXPECT_EQ(w.eventLoop.processDueTimers(), 1);
    EXPECT_TRUE(w.world.getUnreadableLoopSounds().isEmpty());
    EXPECT_EQ(w.eventLoop.processDueTimers(), 0) << "the watch goes with the last broken sound";
    w.world.start();
    EXPECT_GT(w.play(1.0), 0.2f);
}

TEST(UnreadableLoopSound, AFullPoolLeavesTheReadableSoundsInTheRotation) {
    WorldFixture w(5);
    w.world.setLoopSoundsCrossFadeDuration(0);
    const SoundID steady = w.addLoop(w.writeSound(QStringLiteral("Loop Sounds/steady.wav"), 0.5));
    const QString fragile = w.writeSound(QStringLiteral("Loop Sounds/fragile.wav"), 4.0, 660.0);
    const SoundID broken = w.addLoop(fragile);
    // Every other place in the pool goes to the broken sound, so "steady" never has a second
    // instance for the turn after its own: the pool, not its file, says no.
    while (w.world.getNumMovies() < World::MAX_MOVIES) ASSERT_EQ(w.world.loadSoundFileIntoMovieList(true, broken), noErr);
    breakFile(fragile, Break::Deleted);
    w.world.start();
    w.runSeconds(20.0);
    ASSERT_EQ(w.world.getUnreadableLoopSounds(), QStringList{QStringLiteral("fragile.wav")});
    // Started again, the chain's first two turns both draw "steady", and the second finds the pool full.
    w.world.stop();
    w.world.start();
    w.runSeconds(5.0);
    EXPECT_EQ(w.world.getUnreadableLoopSounds(), QStringList{QStringLiteral("fragile.wav")});
    EXPECT_EQ(w.entriesOf(steady).size(), 1u);
    EXPECT_GT(w.play(1.0), 0.2f) << "steady still plays";
}

}  // namespace
}  // namespace sylvora::test
