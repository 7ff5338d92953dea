// Saves that fail or are killed at every step of replacing a package must leave a complete world
// on disk, at the package's own path. The file-system calls a save makes to exchange packages
// (renameat2), to flush them (fsync) and to delete what it no longer needs (unlinkat) are interposed
// for this executable: armed, they fail or kill the process at the N-th call.

#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

#include "packagetestfixture.h"
#include "support/soundfiles.h"

namespace {

struct Injection {
    bool armed = false;
    int calls = 0;
    int failFrom = -1;  // this call and every later one fails with EIO
    int failOnly = -1;  // only this call fails
    int killAt = -1;    // the process is killed at this call
};
Injection gRenames;
Injection gSyncs;
Injection gDeletes;

bool injectFault(Injection& injection) {
    if (!injection.armed) return false;
    const int call = ++injection.calls;
    if (call == injection.killAt) ::raise(SIGKILL);
    if (call == injection.failOnly || (injection.failFrom > 0 && call >= injection.failFrom)) {
        errno = EIO;
        return true;
    }
    return false;
}

}  // namespace

extern "C" int renameat2(int oldDirectory, const char* oldPath, int newDirectory, const char* newPath,
                         unsigned int flags) noexcept {
    if (injectFault(gRenames)) return -1;
    return static_cast<int>(::syscall(SYS_renameat2, oldDirectory, oldPath, newDirectory, newPath, flags));
}

extern "C" int unlinkat(int directory, const char* path, int flags) noexcept {
    if (injectFault(gDeletes)) return -1;
    return static_cast<int>(::syscall(SYS_unlinkat, directory, path, flags));
}

extern "C" int fsync(int fd) {
    if (injectFault(gSyncs)) return -1;
    return static_cast<int>(::syscall(SYS_fsync, fd));
}

namespace sylvora::test {
namespace {

// The old world: "Old" with two loop sounds and one environment sound. The new world: "New" with
// one loop sound and two environment sounds.
class PackageFault : public ::testing::Test {
protected:
    static constexpr int SAMPLE_RATE = 48000;

    void SetUp() override {
        package = dir.filePath(QStringLiteral("Forest.sylvora"));
        pristine = dir.filePath(QStringLiteral("pristine"));
        Session session;
        World& world = session.world;
        world.setName(QStringLiteral("Old"));
        world.addLoopSound(*WorldFixture::aliasOf(writeSound(QStringLiteral("sources/wind.wav"), 200)));
        world.addLoopSound(*WorldFixture::aliasOf(writeSound(QStringLiteral("sources/rain.wav"), 300)));
        world.addEnvironmentSound(*WorldFixture::aliasOf(writeSound(QStringLiteral("sources/owl.wav"), 500)));
        writeSound(QStringLiteral("sources/frog.wav"), 700);
        ASSERT_EQ(world.doSaveAs(dir.ref(), QStringLiteral("Forest.sylvora")), noErr);
        old = snapshotTree(package);
        ASSERT_TRUE(QDir().mkpath(pristine));
        copyTree(package, pristine + QStringLiteral("/Forest.sylvora"));
    }

    // A world of its own, made after any fork, so that no engine thread is shared with a child.
    struct Session {
        audio::Engine engine{SAMPLE_RATE};
        VirtualEventLoop loop;
        World world{engine, loop, 5u};
    };

    QString writeSound(const QString& relative, double frequency) {
        const QString path = dir.filePath(relative);
        QDir().mkpath(QFileInfo(path).absolutePath());
        ToneSpec tone;
        tone.seconds = 0.2;
        tone.frequency = frequency;
        tone.sampleRate = SAMPLE_RATE;
        EXPECT_TRUE(writeSoundFile(path, tone));
        return path;
    }

    static void copyTree(const QString& from, const QString& to) {
        QDir().mkpath(to);
        for (const QFileInfo& info : QDir(from).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot)) {
            const QString target = to + QLatin1Char('/') + info.fileName();
            if (info.isDir()) copyTree(info.filePath(), target);
            else QFile::copy(info.filePath(), target);
        }
    }

    // Puts the old package back and removes whatever an interrupted save left.
    void restore() {
        QDir(package).removeRecursively();
        for (const QString& name : tempPackagesIn(dir.path())) QDir(dir.filePath(name)).removeRecursively();
        copyTree(pristine + QStringLiteral("/Forest.sylvora"), package);
    }


    // Loads the package into the world and turns it into the new world, unsaved.
    void editIntoNewWorld(World& world, const QString& packagePath) const {
        FSRef ref;
        FSPathMakeRef(packagePath, ref);
        world.loadFromPackage(ref);
        world.setName(QStringLiteral("New"));
        world.removeLoopSound(world.getIndLoopSoundID(0));
        world.addEnvironmentSound(*WorldFixture::aliasOf(dir.filePath(QStringLiteral("sources/frog.wav"))));
        world.start();
    }

    enum class Content { None, Old, New };

    // What a folder holds when loaded: the old world, the new world, or neither completely.
    static Content contentOf(World& checker, const QString& folder) {
        FSRef ref;
        if (FSPathMakeRef(folder, ref) != noErr || checker.loadFromPackage(ref) != noErr) return Content::None;
        const auto counts = std::pair(checker.getNumLoopSounds(), checker.getNumEnvironmentSounds());
        if (checker.getName() == QStringLiteral("Old") && counts == std::pair(2, 1)) return Content::Old;
        if (checker.getName() == QStringLiteral("New") && counts == std::pair(1, 2)) return Content::New;
        return Content::None;
    }

    // Every complete world found in the destination and in any temporary folder.
    std::vector<Content> completeWorlds() {
        Session session;
        std::vector<Content> found;
        QStringList folders = tempPackagesIn(dir.path());
        folders.prepend(QStringLiteral("Forest.sylvora"));
        for (const QString& name : folders) {
            const Content content = contentOf(session.world, dir.filePath(name));
            if (content != Content::None) found.push_back(content);
        }
        return found;
    }

    TempDir dir;
    QString package;
    QString pristine;
    QMap<QString, QByteArray> old;
};

TEST_F(PackageFault, FailedExchangeKeepsTheOldPackageAndThePlayingWorld) {
    int failedSaves = 0;
    for (int step = 1; step < 64; ++step) {
        SCOPED_TRACE(step);
        Session session;
        editIntoNewWorld(session.world, package);
        gRenames = Injection{true, 0, -1, step, -1};
        const OSStatus status = session.world.doSave();
        gRenames.armed = false;
        if (status == noErr) {
            EXPECT_EQ(completeWorlds(), std::vector<Content>{Content::New});
            EXPECT_TRUE(tempPackagesIn(dir.path()).isEmpty());
            break;
        }
        ++failedSaves;
        EXPECT_TRUE(session.world.getModified());
        EXPECT_TRUE(session.world.isPlaying()) << "a failed save never stops the world";
        EXPECT_EQ(session.world.getName(), QStringLiteral("New"));
        EXPECT_EQ(snapshotTree(package), old);
        EXPECT_TRUE(tempPackagesIn(dir.path()).isEmpty());
    }
    EXPECT_GE(failedSaves, 1);
}


TEST_F(PackageFault, FailedUndoKeepsEveryCompleteCopy) {
    for (int step = 1; step < 64; ++step) {
        SCOPED_TRACE(step);
        restore();
        Session session;
        editIntoNewWorld(session.world, package);
        gRenames = Injection{true, 0, step, -1, -1};
        const OSStatus status = session.world.doSave();
        gRenames.armed = false;
        if (status == noErr) break;
        // Nothing is deleted while undoing fails, so one complete world is always left.
        EXPECT_FALSE(completeWorlds().empty());
        if (tempPackagesIn(dir.path()).isEmpty()) {
            EXPECT_EQ(snapshotTree(package), old);
        }
    }
}

// The flush that makes the exchanged-in world durable fails: the save reports it and the world,
// loaded from the package, still counts as unsaved, so quitting asks; the old version is kept beside
// it, named to the person, until a later save succeeds and removes it.
TEST_F(PackageFault, FailedFlushAfterTheSwapKeepsTheWorldUnsavedAndTheOldVersionNamed) {
    int failuresAfterSwap = 0;
    for (int step = 1; step < 64; ++step) {
        SCOPED_TRACE(step);
        restore();
        Session session;
        editIntoNewWorld(session.world, package);
        gSyncs = Injection{true, 0, -1, step, -1};
        const OSStatus status = session.world.doSave();
        gSyncs.armed = false;
        if (status == noErr) break;
        EXPECT_TRUE(session.world.getModified());
        const QString kept = session.world.getKeptPreviousVersion();
        if (kept.isEmpty()) {
            // Failed before the swap: nothing but the old package.
            EXPECT_EQ(snapshotTree(package), old);
            EXPECT_TRUE(tempPackagesIn(dir.path()).isEmpty());
            continue;
        }
        ++failuresAfterSwap;
        EXPECT_EQ(tempPackagesIn(dir.path()), QStringList{QFileInfo(kept).fileName()});
        Session checker;
        EXPECT_EQ(contentOf(checker.world, kept), Content::Old);
        EXPECT_EQ(session.world.getName(), QStringLiteral("New"));
        EXPECT_TRUE(session.world.isPlaying());
        EXPECT_EQ(session.world.getNumEnvironmentSounds(), 2);
        FSRef loaded;
        ASSERT_EQ(FSResolveAlias(*session.world.getPackageAlias(), loaded), noErr);
        EXPECT_EQ(loaded.path, package);
        EXPECT_EQ(contentOf(checker.world, package), Content::New);

        ASSERT_EQ(session.world.doSave(), noErr);
        EXPECT_FALSE(session.world.getModified());
        EXPECT_TRUE(tempPackagesIn(dir.path()).isEmpty());
    }
    EXPECT_EQ(failuresAfterSwap, 1);
}

// Killed at any exchange, flush or deletion, a save leaves the package's own path holding a whole
// world, old or new; the next open of the package removes whatever the save left beside it.
TEST_F(PackageFault, KilledSaveLeavesAWholeWorldAtItsPathAndNothingAfterTheNextOpen) {
    int kills = 0;
    for (Injection* injection : {&gSyncs, &gRenames, &gDeletes}) {
        for (int step = 1; step < 64; ++step) {
            SCOPED_TRACE(step);
            restore();
            std::fflush(nullptr);
            const pid_t child = ::fork();
            ASSERT_GE(child, 0);
            if (child == 0) {
                Session session;
                editIntoNewWorld(session.world, package);
                *injection = Injection{true, 0, -1, -1, step};
                ::_exit(session.world.doSave() == noErr ? 0 : 1);
            }
            int waitStatus = 0;
            ASSERT_EQ(::waitpid(child, &waitStatus, 0), child);
            Session checker;
            const Content atPath = contentOf(checker.world, package);
            EXPECT_NE(atPath, Content::None) << "no whole world at the package's path after a kill at call " << step;
            EXPECT_TRUE(tempPackagesIn(dir.path()).isEmpty()) << "the open removed the leftover";
            if (WIFEXITED(waitStatus)) {
                EXPECT_EQ(WEXITSTATUS(waitStatus), 0);
                EXPECT_EQ(atPath, Content::New);
                break;
            }
            ASSERT_TRUE(WIFSIGNALED(waitStatus));
            ++kills;
        }
    }
    EXPECT_GE(kills, 10);
}

}  // namespace
}  // namespace sylvora::test
