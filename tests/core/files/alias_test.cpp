#include <gtest/gtest.h>

#include <unistd.h>
#include <QFile>
#include <QtEndian>

#include "core/files/alias.h"
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
    EXPECT_EQ(back->toBytes(), bytes);

    FSRef resolved;
    ASSERT_EQ(FSResolveAlias(*back, resolved), noErr);
    EXPECT_EQ(resolved.path, alias->recordedPath());
}

TEST(AliasBytes, DamagedBytesAreRefused) {
    const Alias alias(QStringLiteral("/music/rain.wav"), 42, 4242);
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
    qToBigEndian<quint16>(2, newerVersion.data() + 4);
    EXPECT_FALSE(Alias::fromBytes(newerVersion));

    QByteArray wrongLength = good;
    qToBigEndian<quint32>(static_cast<quint32>(good.size() + 1), wrongLength.data() + 8);
    EXPECT_FALSE(Alias::fromBytes(wrongLength));

    QByteArray wrongPathLength = good;
    qToBigEndian<quint32>(3, wrongPathLength.data() + 28);
    EXPECT_FALSE(Alias::fromBytes(wrongPathLength));

    QByteArray invalidUtf8 = good;
    invalidUtf8[invalidUtf8.size() - 1] = '\xff';
    EXPECT_FALSE(Alias::fromBytes(invalidUtf8));

    EXPECT_FALSE(Alias::fromBytes(Alias(QStringLiteral("relative/rain.wav"), 1, 2).toBytes()));
}

}  // namespace
}  // namespace sylvora
