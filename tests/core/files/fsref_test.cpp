#include <gtest/gtest.h>

#include <unistd.h>
#include <QFile>

#include "core/files/fsref.h"
#include "support/tempdir.h"

namespace sylvora {
namespace {

using test::refOf;
using test::TempDir;

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

TEST(FileReferences, ComparisonIsIdentityNotPathEquality) {
    TempDir dir;
    const QString a = dir.writeFile("one/rain.wav", "rain");
    const QString b = dir.writeFile("two/rain.wav", "rain");
    const QString link = dir.filePath("one/hardlink.wav");
    ASSERT_EQ(::link(QFile::encodeName(a).constData(), QFile::encodeName(link).constData()), 0);

    EXPECT_TRUE(FSCompareFSRefs(refOf(a), refOf(link)));
    EXPECT_TRUE(FSCompareFSRefs(refOf(a), FSRef{dir.path() + "/two/../one/rain.wav"}));
    EXPECT_FALSE(FSCompareFSRefs(refOf(a), refOf(b)));
    EXPECT_FALSE(FSCompareFSRefs(refOf(a), FSRef{dir.filePath("nothing")}));
}

TEST(FileReferences, CreationIsExclusive) {
    TempDir dir;
    FSRef file;
    ASSERT_EQ(FSCreateFileUnicode(dir.ref(), "data.plist", &file), noErr);
    EXPECT_EQ(file.path, dir.filePath("data.plist"));
    dir.writeFile("data.plist", "keep me");
    EXPECT_EQ(FSCreateFileUnicode(dir.ref(), "data.plist", nullptr), dupFNErr);
    EXPECT_EQ(contentOf(file.path), "keep me");

    FSRef folder;
    ASSERT_EQ(FSCreateDirectoryUnicode(dir.ref(), "Loop Sounds", &folder), noErr);
    EXPECT_EQ(FSCreateDirectoryUnicode(dir.ref(), "Loop Sounds", nullptr), dupFNErr);
    EXPECT_EQ(FSCreateDirectoryUnicode(dir.ref(), "../escape", nullptr), paramErr);
    EXPECT_EQ(FSCreateFileUnicode(dir.ref(), "..", nullptr), paramErr);
}

TEST(FileReferences, RenameAndMoveNeverOverwrite) {
    TempDir dir;
    const QString a = dir.writeFile("a.wav", "A");
    const QString b = dir.writeFile("b.wav", "B");
    EXPECT_EQ(FSRenameUnicode(refOf(a), "b.wav", nullptr), dupFNErr);
    EXPECT_EQ(contentOf(a), "A");
    EXPECT_EQ(contentOf(b), "B");

    const QString folder = dir.makeDir("sub");
    dir.writeFile("sub/a.wav", "other A");
    EXPECT_EQ(FSMoveObject(refOf(a), refOf(folder), nullptr), dupFNErr);
    EXPECT_EQ(contentOf(a), "A");
    EXPECT_EQ(contentOf(folder + "/a.wav"), "other A");

    EXPECT_EQ(FSMoveObject(refOf(b), refOf(a), nullptr), dirNFErr) << "destination must be a folder";
    FSRef same;
    EXPECT_EQ(FSRenameUnicode(refOf(a), "a.wav", &same), noErr) << "renaming to its own name changes nothing";
    EXPECT_EQ(same.path, a);
    EXPECT_EQ(FSRenameUnicode(refOf(a), "x/y", nullptr), paramErr);
}

TEST(FileReferences, DeletingRemovesLinksNotTargetsAndNeverAFullFolder) {
    TempDir dir;
    dir.makeDir("three");
    // A link is deleted as a link: its target stays.
    const QString link = dir.filePath("link");
    ASSERT_EQ(
        ::symlink(QFile::encodeName(dir.filePath("three")).constData(), QFile::encodeName(link).constData()),
        0);
    EXPECT_EQ(FSDeleteObject(refOf(link)), noErr);
    EXPECT_FALSE(QFile::exists(link));
    EXPECT_TRUE(QFile::exists(dir.filePath("three")));

    EXPECT_EQ(FSDeleteObject(refOf(dir.filePath("three"))), noErr);
    dir.writeFile("full/file", "x");
    EXPECT_NE(FSDeleteObject(refOf(dir.filePath("full"))), noErr) << "a folder that is not empty stays";
    EXPECT_TRUE(QFile::exists(dir.filePath("full/file")));
}

}  // namespace
}  // namespace sylvora
