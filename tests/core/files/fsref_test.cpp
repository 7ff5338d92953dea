#include <gtest/gtest.h>

#include <unistd.h>
#include <QFile>
#include <algorithm>

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

TEST(FileReferences, MakeRefNeedsAnExistingObject) {
    TempDir dir;
    FSRef ref;
    EXPECT_EQ(FSPathMakeRef(dir.filePath("missing"), ref), fnfErr);
    EXPECT_EQ(FSPathMakeRef(QString(), ref), paramErr);
    ASSERT_EQ(FSPathMakeRef(dir.path() + "/./", ref), noErr);
    EXPECT_EQ(ref.path, dir.path()) << "absolute, cleaned, no trailing slash";
    EXPECT_EQ(FSGetName(refOf(dir.writeFile("Ocean Waves.aiff", "x"))), "Ocean Waves.aiff");

    FSRef parent;
    ASSERT_EQ(FSGetParentRef(refOf(dir.filePath("Ocean Waves.aiff")), parent), noErr);
    EXPECT_EQ(parent.path, dir.path());
    bool isDirectory = false;
    ASSERT_EQ(FSIsDirectory(parent, isDirectory), noErr);
    EXPECT_TRUE(isDirectory);
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

TEST(FileReferences, ListingDeletingAndSyncing) {
    TempDir dir;
    dir.writeFile("one", "1");
    dir.writeFile("two", "2");
    dir.makeDir("three");
    std::vector<FSRef> entries;
    ASSERT_EQ(FSListDirectory(dir.ref(), entries), noErr);
    std::vector<QString> names;
    for (const FSRef& entry : entries)
        names.push_back(FSGetName(entry));
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<QString>{"one", "three", "two"}));
    EXPECT_EQ(FSListDirectory(refOf(dir.filePath("one")), entries), dirNFErr);

    EXPECT_EQ(FSSyncObject(refOf(dir.filePath("one"))), noErr);
    EXPECT_EQ(FSSyncObject(dir.ref()), noErr);

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
