// `sylvora-cli make`: a folder of generated sound files, a picture and files that are no sound
// becomes a world package that the application's own loader opens and plays.

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QThread>
#include <csignal>
#include <unistd.h>

#include "clirunner.h"
#include "support/worldfixture.h"

using namespace sylvora;
using namespace sylvora::test;

namespace {

struct Expected {
    const char* file;
    double seconds;
    bool loop;
    int minInterval, maxInterval;
};

// The rule: 20 s or more loops; shorter sounds come back after 10 s + 3 x length (rounded up) to
// twice that.
constexpr Expected SOUNDS[] = {
    {"a rain.wav", 21.0, true, 0, 0},
    {"bird.wav", 1.0, false, 13, 26},
    {"thunder.flac", 6.5, false, 30, 60},
    {"wind.ogg", 19.5, false, 69, 138},
};

class MakeTest : public WorldTest {
protected:
    QString makeFolder() {
        const QString folder = dir.makeDir(QStringLiteral("Night Garden"));
        for (const Expected& sound : SOUNDS) {
            writeSound(QStringLiteral("Night Garden/%1").arg(QLatin1String(sound.file)), sound.seconds);
        }
        writePicture(QStringLiteral("Night Garden/cover.png"));
        dir.writeFile(QStringLiteral("Night Garden/notes.txt"), "recorded in June\n");
        dir.writeFile(QStringLiteral("Night Garden/broken.wav"), QByteArray("RIFF\x10\0\0\0WAVEjunk", 16));
        return folder;
    }
    SoundID environmentSoundNamed(const QString& name) {
        for (int i = 0; i < world.getNumEnvironmentSounds(); ++i) {
            const SoundID id = world.getIndEnvironmentSoundID(i);
            if (world.getEnvironmentSoundFilename(id) == name) return id;
        }
        return 0;
    }
};

TEST_F(MakeTest, SplitsBySoundLengthTakesThePictureSkipsTheUndecodableAndPlays) {
    const QString folder = makeFolder();
    const QString package = dir.filePath(QStringLiteral("out/Garden.sylvora"));
    dir.makeDir(QStringLiteral("out"));
    const CliResult made = runCli({"make", folder, "-o", package});
    ASSERT_FALSE(made.crashed);
    ASSERT_EQ(made.exitCode, 0) << made.err.toStdString() << made.out.toStdString();
    for (const char* line : {"loop sound         a rain.wav", "environment sound  bird.wav (1.0 s): shorter than 20 s: heard every 13 to 26 s",
                             "picture            cover.png", "skipped            notes.txt: not a sound file",
                             "skipped            broken.wav: not a sound file"}) {
        EXPECT_TRUE(made.out.contains(QLatin1String(line))) << line << "\n" << made.out.toStdString();
    }

    ASSERT_EQ(load(package), noErr);
    EXPECT_EQ(world.getName(), QStringLiteral("Night Garden"));
    EXPECT_EQ(world.getNumLoopSounds(), 1);
    EXPECT_EQ(world.getLoopSoundFilename(world.getIndLoopSoundID(0)), QStringLiteral("a rain.wav"));
    EXPECT_EQ(world.getNumEnvironmentSounds(), 3);
    for (const Expected& sound : SOUNDS) {
        if (sound.loop) continue;
        SCOPED_TRACE(sound.file);
        const SoundID id = environmentSoundNamed(QLatin1String(sound.file));
        ASSERT_NE(id, 0u);
        EXPECT_EQ(world.getEnvironmentSoundMinInterval(id), sound.minInterval);
        EXPECT_EQ(world.getEnvironmentSoundMaxInterval(id), sound.maxInterval);
    }
    EXPECT_FALSE(world.getPicture().isNull());
    EXPECT_EQ(world.copyPictureDisplayFilename(), QStringLiteral("cover.png"));

    world.start();
    EXPECT_GT(play(2.0), 0.3f);  // the loop sound from the first tick

    // A second make over the same package replaces nothing.
    const CliResult again = runCli({"make", folder, "-o", package, "--name", "Other"});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_TRUE(again.err.contains(QLatin1String("already exists"))) << again.err.toStdString();
    ASSERT_EQ(load(package), noErr);
    EXPECT_EQ(world.getName(), QStringLiteral("Night Garden"));
}

// Ctrl+C or SIGTERM stops a make half-way: it says so, exits 128 plus the signal, and leaves
// nothing where the package was to go, so that the next make is not told it already exists.
TEST_F(MakeTest, InterruptedMakeLeavesNothingBehind) {
    // Many names for one long sound make a save that takes long enough to be caught under way.
    const QString one = writeSound(QStringLiteral("Many/sound 0.wav"), 30.0);
    for (int i = 1; i < 200; ++i)
        ASSERT_EQ(::link(QFile::encodeName(one).constData(),
                         QFile::encodeName(dir.filePath(QStringLiteral("Many/sound %1.wav").arg(i))).constData()),
                  0);
    const QString out = dir.makeDir(QStringLiteral("out"));
    const QString package = out + QStringLiteral("/Many.sylvora");
    for (const int signalNumber : {SIGINT, SIGTERM}) {
        SCOPED_TRACE(signalNumber);
        // On a busy machine a make can end before the signal lands: such a try proves nothing, and
        // is made again.
        bool interrupted = false;
        for (int attempt = 0; attempt < 20 && !interrupted; ++attempt) {
            QProcess process;
            process.start(QStringLiteral(SYLVORA_CLI_PATH), {"make", dir.filePath(QStringLiteral("Many")), "-o", package});
            ASSERT_TRUE(process.waitForStarted(-1));
            // Under way once its temporary package appears beside the destination.
            while (QDir(out).isEmpty() && process.state() == QProcess::Running) QThread::msleep(1);
            if (process.state() == QProcess::Running) ::kill(static_cast<pid_t>(process.processId()), signalNumber);
            ASSERT_TRUE(process.waitForFinished(-1));
            if (process.exitCode() == 0) {
                ASSERT_TRUE(QDir(package).removeRecursively());
                continue;
            }
            interrupted = true;
            EXPECT_EQ(process.exitCode(), 128 + signalNumber);
            EXPECT_TRUE(QString::fromUtf8(process.readAllStandardError()).contains(QStringLiteral("interrupted")));
            EXPECT_TRUE(QDir(out).isEmpty()) << QDir(out).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).join(u',').toStdString();
        }
        EXPECT_TRUE(interrupted);
    }
}

TEST_F(MakeTest, AFolderWithoutASoundMakesNothing) {
    dir.makeDir(QStringLiteral("Empty"));
    dir.writeFile(QStringLiteral("Empty/readme.txt"), "nothing to hear\n");
    const QString package = dir.filePath(QStringLiteral("Empty.sylvora"));
    const CliResult made = runCli({"make", dir.filePath(QStringLiteral("Empty")), "-o", package});
    EXPECT_EQ(made.exitCode, 1);
    EXPECT_TRUE(made.err.contains(QLatin1String("no sound file"))) << made.err.toStdString();
    EXPECT_FALSE(QFileInfo::exists(package));
}

}  // namespace
