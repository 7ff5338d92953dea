#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>
#include <QFile>
#include <cstdio>

#include "core/files/morefilesx.h"
#include "support/ordinaryuser.h"
#include "support/tempdir.h"

namespace sylvora {
namespace {

using test::kNobody;
using test::refOf;
using test::runAsOrdinaryUser;
using test::TempDir;

bool exists(const QString& path) {
    struct stat info {};
    return ::lstat(QFile::encodeName(path).constData(), &info) == 0;
}

void chmodPath(const QString& path, mode_t mode) {
    ::chmod(QFile::encodeName(path).constData(), mode);
}

void makeSymlink(const QString& target, const QString& link) {
    ASSERT_EQ(::symlink(QFile::encodeName(target).constData(), QFile::encodeName(link).constData()), 0);
}

TEST(DeleteContainer, DeletesNestedFoldersAndFiles) {
    TempDir dir;
    dir.writeFile("world.sylvora/data.plist", "x");
    dir.writeFile("world.sylvora/Loop Sounds/rain.wav", "rain");
    dir.writeFile("world.sylvora/Environment Sounds/a/b/c/bird.wav", "bird");
    dir.makeDir("world.sylvora/empty");
    QString deep = "deep";
    for (int i = 0; i < 100; ++i)
        deep += "/d";
    dir.writeFile("world.sylvora/" + deep + "/leaf", "leaf");

    EXPECT_EQ(FSDeleteContainer(refOf(dir.filePath("world.sylvora"))), noErr);
    EXPECT_FALSE(exists(dir.filePath("world.sylvora")));
    EXPECT_TRUE(exists(dir.path()));
}

TEST(DeleteContainer, ContentsGoTheFolderStays) {
    TempDir dir;
    dir.writeFile("pkg/a", "a");
    dir.writeFile("pkg/sub/b", "b");
    EXPECT_EQ(FSDeleteContainerContents(refOf(dir.filePath("pkg"))), noErr);
    EXPECT_TRUE(exists(dir.filePath("pkg")));
    std::vector<FSRef> left;
    ASSERT_EQ(FSListDirectory(refOf(dir.filePath("pkg")), left), noErr);
    EXPECT_TRUE(left.empty());
}

TEST(DeleteContainer, NonFoldersAreRefusedUntouched) {
    TempDir dir;
    const QString file = dir.writeFile("rain.wav", "rain");
    EXPECT_EQ(FSDeleteContainer(refOf(file)), dirNFErr);
    EXPECT_TRUE(exists(file));

    dir.writeFile("real/inside", "x");
    makeSymlink(dir.filePath("real"), dir.filePath("link"));
    EXPECT_EQ(FSDeleteContainer(refOf(dir.filePath("link"))), dirNFErr);
    EXPECT_EQ(FSDeleteContainerContents(refOf(dir.filePath("link"))), dirNFErr);
    EXPECT_TRUE(exists(dir.filePath("real/inside")));

    EXPECT_EQ(FSDeleteContainer(FSRef{dir.filePath("missing")}), fnfErr);
}

TEST(DeleteContainer, LinksAreDeletedNeverFollowed) {
    TempDir dir;
    dir.writeFile("outside/keep.wav", "keep");
    dir.writeFile("outside/nested/keep2.wav", "keep");
    const QString lone = dir.writeFile("lone.wav", "keep");
    dir.writeFile("pkg/own.wav", "own");
    makeSymlink(dir.filePath("outside"), dir.filePath("pkg/folder-link"));
    makeSymlink(lone, dir.filePath("pkg/file-link"));
    makeSymlink(dir.filePath("nowhere"), dir.filePath("pkg/dangling"));

    EXPECT_EQ(FSDeleteContainer(refOf(dir.filePath("pkg"))), noErr);
    EXPECT_FALSE(exists(dir.filePath("pkg")));
    EXPECT_TRUE(exists(dir.filePath("outside/keep.wav")));
    EXPECT_TRUE(exists(dir.filePath("outside/nested/keep2.wav")));
    EXPECT_TRUE(exists(lone));
}

bool makeFolder(const QString& path, std::string& failure) {
    if (::mkdir(QFile::encodeName(path).constData(), 0755) == 0)
        return true;
    failure = "cannot create " + path.toStdString();
    return false;
}

bool makeFile(const QString& path, std::string& failure) {
    QFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write("sound") == 5)
        return true;
    failure = "cannot write " + path.toStdString();
    return false;
}

mode_t permissionsOf(const QString& path) {
    struct stat info {};
    return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_mode & 07777 : 0;
}

// Locked folders inside the package are unlocked and deleted; the folder holding the package is not
// the package's to unlock: while it is locked the package's contents go, the package stays, and the
// holder keeps its permissions.
TEST(DeleteContainer, LockedFoldersAreUnlockedAndDeletedButNeverTheirHolder) {
    TempDir dir;
    const QString holder = dir.filePath("holder");
    const QString pkg = holder + "/world.sylvora";
    runAsOrdinaryUser(dir, [&]() -> std::string {
        std::string failure;
        if (!makeFolder(holder, failure) || !makeFolder(pkg, failure) ||
            !makeFolder(pkg + "/Loop Sounds", failure) || !makeFile(pkg + "/Loop Sounds/rain.wav", failure) ||
            !makeFolder(pkg + "/Environment Sounds", failure) ||
            !makeFolder(pkg + "/Environment Sounds/hidden", failure) ||
            !makeFile(pkg + "/Environment Sounds/hidden/bird.wav", failure))
            return failure;
        chmodPath(pkg + "/Loop Sounds", 0555);
        chmodPath(pkg + "/Environment Sounds/hidden", 0);
        chmodPath(pkg, 0555);
        chmodPath(holder, 0555);

        const OSStatus refused = FSDeleteContainer(FSRef{pkg});
        const mode_t holderMode = permissionsOf(holder);
        const bool emptied = exists(pkg) && !exists(pkg + "/Loop Sounds");
        chmodPath(holder, 0755);
        if (refused != permErr)
            return "a locked holder: expected permErr, got " + std::to_string(refused);
        if (holderMode != 0555)
            return "the holder's permissions were changed";
        if (!emptied)
            return "the package should stay, emptied";
        const OSStatus status = FSDeleteContainer(FSRef{pkg});
        if (status != noErr)
            return "FSDeleteContainer returned " + std::to_string(status);
        if (exists(pkg))
            return "the package is still there";
        return {};
    });
}

TEST(DeleteContainer, SomethingThatCannotBeDeletedStopsWithAStatus) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs a folder owned by another user";
    TempDir dir;
    const QString pkg = dir.makeDir("world.sylvora");
    dir.writeFile("world.sylvora/foreign/rain.wav", "root's");  // stays root's
    ASSERT_EQ(::chown(QFile::encodeName(pkg).constData(), kNobody, kNobody), 0);
    runAsOrdinaryUser(dir, [&]() -> std::string {
        const OSStatus status = FSDeleteContainer(FSRef{pkg});
        if (status != permErr)
            return "expected permErr, got " + std::to_string(status);
        if (!exists(pkg + "/foreign/rain.wav"))
            return "a file of another user was deleted";
        return {};
    });
}

}  // namespace
}  // namespace sylvora
