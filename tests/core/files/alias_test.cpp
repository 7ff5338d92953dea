#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>
#include <QFile>
#include <QtEndian>

#include "core/files/alias.h"
#include "core/files/morefilesx.h"
#include "core/files/utils.h"
#include "support/tempdir.h"

namespace sylvora {
namespace {

using test::refOf;
using test::TempDir;

AliasHandle aliasOf(const QString& path) {
    AliasHandle alias;
    EXPECT_EQ(FSNewAlias(refOf(path), alias), noErr) << path.toStdString();
    return alias;
}

// Makes folders in `dir` until the file system hands out `inode` again, as ext4 does with a number
// freed a moment ago. Empty when it never does within a few hundred folders.
QString makeFolderWithInode(const TempDir& dir, quint64 inode) {
    for (int attempt = 0; attempt < 300; ++attempt) {
        const QString path = dir.makeDir(QStringLiteral("Newcomer %1.sylvora").arg(attempt));
        struct stat info {};
        if (::stat(QFile::encodeName(path).constData(), &info) == 0 && info.st_ino == inode)
            return path;
    }
    return {};
}

// A package folder with an alias to it, then deleted, and a newer folder of the same parent holding the
// deleted one's inode. Skips the test where the file system cannot stage that.
struct RecycledInode {
    AliasHandle alias;
    QString newcomer;
};

RecycledInode deletePackageAndRecycleItsInode(const TempDir& dir, const QString& name) {
    RecycledInode staged;
    const QString package = dir.makeDir(name);
    dir.writeFile(name + QStringLiteral("/data.plist"), "<plist/>");
    staged.alias = aliasOf(package);
    if (!staged.alias || !staged.alias->birthTime())
        return staged;
    if (FSDeleteContainer(refOf(package)) != noErr)
        return staged;
    staged.newcomer = makeFolderWithInode(dir, staged.alias->inode());
    return staged;
}

// Why the staging did not give a newcomer that only the birth time tells apart; empty when it did.
const char* whyNotStaged(const RecycledInode& staged) {
    if (!staged.alias || !staged.alias->birthTime())
        return "this file system reports no birth time; aliases fall back to device and inode";
    if (staged.newcomer.isEmpty())
        return "the file system did not reuse the deleted folder's inode within 300 new folders";
    if (aliasOf(staged.newcomer)->birthTime() == staged.alias->birthTime())
        return "birth times are too coarse to tell the newcomer from the deleted folder";
    return "";
}

TEST(AliasResolution, FollowsARenameInsideTheFolder) {
    TempDir dir;
    const AliasHandle alias = aliasOf(dir.writeFile("rain.wav", "rain"));
    FSRef renamed;
    ASSERT_EQ(FSRenameUnicode(refOf(dir.filePath("rain.wav")), "storm.wav", &renamed), noErr);

    FSRef resolved;
    ASSERT_EQ(FSResolveAlias(*alias, resolved), noErr);
    EXPECT_EQ(resolved.path, dir.filePath("storm.wav"));
}

TEST(AliasResolution, DeletedFileDoesNotResolve) {
    TempDir dir;
    const QString path = dir.writeFile("rain.wav", "rain");
    const AliasHandle alias = aliasOf(path);
    ASSERT_EQ(FSDeleteObject(refOf(path)), noErr);

    FSRef resolved;
    EXPECT_EQ(FSResolveAlias(*alias, resolved), fnfErr);
}

TEST(AliasResolution, MoveToAnotherFolderIsNotTracked) {
    TempDir dir;
    const QString path = dir.writeFile("rain.wav", "rain");
    const QString other = dir.makeDir("elsewhere");
    const AliasHandle alias = aliasOf(path);
    FSRef moved;
    ASSERT_EQ(FSMoveObject(refOf(path), refOf(other), &moved), noErr);
    EXPECT_EQ(moved.path, other + "/rain.wav");

    FSRef resolved;
    EXPECT_NE(FSResolveAlias(*alias, resolved), noErr);
}

TEST(AliasResolution, FileReplacedAtItsPathResolvesToThePath) {
    TempDir dir;
    const QString path = dir.writeFile("world.sylvora", "old");
    const AliasHandle alias = aliasOf(path);
    ASSERT_EQ(FSDeleteObject(refOf(path)), noErr);
    dir.writeFile("world.sylvora.tmp", "new");
    ASSERT_EQ(FSRenameUnicode(refOf(dir.filePath("world.sylvora.tmp")), "world.sylvora", nullptr), noErr);

    FSRef resolved;
    ASSERT_EQ(FSResolveAlias(*alias, resolved), noErr);
    EXPECT_EQ(resolved.path, path);
}

TEST(AliasResolution, RenamedFileWinsOverANewcomerTakingItsName) {
    TempDir dir;
    const QString path = dir.writeFile("rain.wav", "original");
    const AliasHandle alias = aliasOf(path);
    ASSERT_EQ(FSRenameUnicode(refOf(path), "rain-old.wav", nullptr), noErr);
    dir.writeFile("rain.wav", "newcomer");

    FSRef resolved;
    ASSERT_EQ(FSResolveAlias(*alias, resolved), noErr);
    EXPECT_EQ(resolved.path, dir.filePath("rain-old.wav"));
}

TEST(AliasResolution, FolderRenamedInPlaceStillResolves) {
    TempDir dir;
    const QString package = dir.makeDir(QStringLiteral("Forest.sylvora"));
    const AliasHandle alias = aliasOf(package);
    ASSERT_EQ(FSRenameUnicode(refOf(package), QStringLiteral("Old Forest.sylvora"), nullptr), noErr);
    dir.makeDir(QStringLiteral("Forest.sylvora"));

    FSRef resolved;
    ASSERT_EQ(FSResolveAlias(*alias, resolved), noErr);
    EXPECT_EQ(resolved.path, dir.filePath(QStringLiteral("Old Forest.sylvora")));
}

TEST(AliasResolution, DeletedFolderDoesNotResolveToANewcomerGivenItsInode) {
    TempDir dir;
    const RecycledInode staged = deletePackageAndRecycleItsInode(dir, QStringLiteral("Forest.sylvora"));
    if (const char* why = whyNotStaged(staged); *why)
        GTEST_SKIP() << why;

    FSRef resolved;
    EXPECT_EQ(FSResolveAlias(*staged.alias, resolved), fnfErr) << resolved.path.toStdString();
    const AliasHandle stored = Alias::fromBytes(staged.alias->toBytes());
    ASSERT_TRUE(stored);
    EXPECT_EQ(FSResolveAlias(*stored, resolved), fnfErr);

    // Where no birth time is kept, device and inode are all an alias has, and the newcomer is taken.
    const Alias identityOnly(staged.alias->recordedPath(), staged.alias->device(), staged.alias->inode());
    ASSERT_EQ(FSResolveAlias(identityOnly, resolved), noErr);
    EXPECT_EQ(resolved.path, staged.newcomer);
}

TEST(AliasResolution, PackageReplacedAtItsPathWinsOverANewcomerGivenItsInode) {
    TempDir dir;
    const RecycledInode staged = deletePackageAndRecycleItsInode(dir, QStringLiteral("Forest.sylvora"));
    if (const char* why = whyNotStaged(staged); *why)
        GTEST_SKIP() << why;
    dir.makeDir(QStringLiteral("Forest.sylvora"));

    FSRef resolved;
    ASSERT_EQ(FSResolveAlias(*staged.alias, resolved), noErr);
    EXPECT_EQ(resolved.path, dir.filePath(QStringLiteral("Forest.sylvora")));
}

TEST(AliasIdentity, TwoAliasesOfOneFileMatchTwoFilesOfOneNameDoNot) {
    TempDir dir;
    const QString path = dir.writeFile("a/rain.wav", "rain");
    const QString twin = dir.writeFile("b/rain.wav", "rain");
    const QString hardLink = dir.filePath("a/also-rain.wav");
    ASSERT_EQ(::link(QFile::encodeName(path).constData(), QFile::encodeName(hardLink).constData()), 0);

    const AliasHandle viaPath = aliasOf(path);
    const AliasHandle viaLink = aliasOf(hardLink);
    const AliasHandle ofTwin = aliasOf(twin);
    EXPECT_NE(viaPath->recordedPath(), viaLink->recordedPath());

    const Alias* list[] = {ofTwin.get(), nullptr, viaLink.get()};
    EXPECT_EQ(findAliasInList(*viaPath, list), 2);
    EXPECT_TRUE(isFileAliasInList(*viaPath, list));

    const Alias* twinOnly[] = {ofTwin.get()};
    EXPECT_EQ(findAliasInList(*viaPath, twinOnly), -1);
    EXPECT_FALSE(isFileAliasInList(*viaPath, twinOnly));
    EXPECT_EQ(findAliasInList(*viaPath, {}), -1);
}

TEST(AliasIdentity, UnresolvableAliasIsNotFoundEvenInAListHoldingItself) {
    TempDir dir;
    const QString path = dir.writeFile("gone.wav", "x");
    const AliasHandle alias = aliasOf(path);
    const AliasHandle copy = alias->copy();
    ASSERT_EQ(FSDeleteObject(refOf(path)), noErr);

    const Alias* list[] = {alias.get(), copy.get()};
    EXPECT_EQ(findAliasInList(*alias, list), -1);
}

TEST(AliasIdentity, CopyOutlivesItsOriginal) {
    TempDir dir;
    const QString path = dir.writeFile("rain.wav", "rain");
    AliasHandle alias = aliasOf(path);
    const AliasHandle copy = alias->copy();
    ASSERT_NE(copy.get(), alias.get());
    EXPECT_EQ(copy->toBytes(), alias->toBytes());
    alias.reset();

    FSRef resolved;
    ASSERT_EQ(FSResolveAlias(*copy, resolved), noErr);
    EXPECT_EQ(resolved.path, path);
}

TEST(AliasBytes, RoundTripIsExact) {
    TempDir dir;
    const AliasHandle alias = aliasOf(dir.writeFile(QString::fromUtf8("Grüße ☃ Wald.wav"), "x"));
    const QByteArray bytes = alias->toBytes();
    const AliasHandle back = Alias::fromBytes(bytes);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->recordedPath(), alias->recordedPath());
    EXPECT_EQ(back->device(), alias->device());
    EXPECT_EQ(back->inode(), alias->inode());
    EXPECT_EQ(back->birthTime(), alias->birthTime());
    EXPECT_EQ(back->toBytes(), bytes);

    FSRef resolved;
    ASSERT_EQ(FSResolveAlias(*back, resolved), noErr);
    EXPECT_EQ(resolved.path, alias->recordedPath());
}

TEST(AliasBytes, BirthTimeRecordedOrNotRoundTrips) {
    const Alias before1970(QStringLiteral("/music/rain.wav"), 42, 4242, BirthTime{-5, 999999999});
    const Alias withoutBirth(QStringLiteral("/music/rain.wav"), 42, 4242);
    const Alias atTheEpoch(QStringLiteral("/music/rain.wav"), 42, 4242, BirthTime{});
    for (const Alias* alias : {&before1970, &withoutBirth, &atTheEpoch}) {
        const QByteArray bytes = alias->toBytes();
        const AliasHandle back = Alias::fromBytes(bytes);
        ASSERT_TRUE(back);
        EXPECT_EQ(back->birthTime(), alias->birthTime());
        EXPECT_EQ(back->toBytes(), bytes);
    }
    EXPECT_NE(withoutBirth.toBytes(), atTheEpoch.toBytes());
}

TEST(AliasBytes, FirstVersionBytesAreRefused) {
    TempDir dir;
    const QString path = dir.writeFile("rain.wav", "rain");
    struct stat info {};
    ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &info), 0);
    const QByteArray utf8 = path.toUtf8();
    // The earlier layout: magic, version 1, reserved, length, device, inode, path length, path.
    QByteArray old(32, '\0');
    qToBigEndian<quint32>(0x53594C41, old.data());
    qToBigEndian<quint16>(1, old.data() + 4);
    qToBigEndian<quint32>(static_cast<quint32>(32 + utf8.size()), old.data() + 8);
    qToBigEndian<quint64>(info.st_dev, old.data() + 12);
    qToBigEndian<quint64>(info.st_ino, old.data() + 20);
    qToBigEndian<quint32>(static_cast<quint32>(utf8.size()), old.data() + 28);
    old.append(utf8);

    EXPECT_FALSE(Alias::fromBytes(old));
}

TEST(AliasBytes, DamagedBytesAreRefused) {
    const Alias alias(QStringLiteral("/music/rain.wav"), 42, 4242, BirthTime{1700000000, 5});
    const QByteArray good = alias.toBytes();
    ASSERT_TRUE(Alias::fromBytes(good));

    EXPECT_FALSE(Alias::fromBytes(QByteArray()));
    EXPECT_FALSE(Alias::fromBytes(good.left(good.size() - 1))) << "truncated";
    EXPECT_FALSE(Alias::fromBytes(good.left(10))) << "header cut short";
    EXPECT_FALSE(Alias::fromBytes(good + 'x')) << "trailing byte";

    QByteArray badMagic = good;
    badMagic[0] = 'X';
    EXPECT_FALSE(Alias::fromBytes(badMagic));

    QByteArray newerVersion = good;
    qToBigEndian<quint16>(3, newerVersion.data() + 4);
    EXPECT_FALSE(Alias::fromBytes(newerVersion));

    QByteArray unknownFlag = good;
    qToBigEndian<quint16>(0x0003, unknownFlag.data() + 6);
    EXPECT_FALSE(Alias::fromBytes(unknownFlag));

    QByteArray birthFieldsWithoutFlag = good;
    qToBigEndian<quint16>(0, birthFieldsWithoutFlag.data() + 6);
    EXPECT_FALSE(Alias::fromBytes(birthFieldsWithoutFlag));

    QByteArray tooManyNanoseconds = good;
    qToBigEndian<quint32>(1000000000, tooManyNanoseconds.data() + 36);
    EXPECT_FALSE(Alias::fromBytes(tooManyNanoseconds));

    QByteArray wrongLength = good;
    qToBigEndian<quint32>(static_cast<quint32>(good.size() + 1), wrongLength.data() + 8);
    EXPECT_FALSE(Alias::fromBytes(wrongLength));

    QByteArray wrongPathLength = good;
    qToBigEndian<quint32>(3, wrongPathLength.data() + 40);
    EXPECT_FALSE(Alias::fromBytes(wrongPathLength));

    QByteArray invalidUtf8 = good;
    invalidUtf8[invalidUtf8.size() - 1] = '\xff';
    EXPECT_FALSE(Alias::fromBytes(invalidUtf8));

    EXPECT_FALSE(Alias::fromBytes(Alias(QStringLiteral("relative/rain.wav"), 1, 2).toBytes()));
}

}  // namespace
}  // namespace sylvora
