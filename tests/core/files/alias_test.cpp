#include <gtest/gtest.h>

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>
#include <QFile>
#include <QProcess>
#include <QtEndian>
#include <cerrno>
#include <cstring>
#include <optional>

#include "core/files/alias.h"
#include "core/files/morefilesx.h"
#include "core/files/utils.h"
#include "core/prefs/knownworldsmenu.h"
#include "core/prefs/preferences.h"
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

// An alias as the preferences keep it: read back from its bytes, holding nothing open.
AliasHandle storedAliasOf(const QString& path) {
    return Alias::fromBytes(aliasOf(path)->toBytes());
}

void moveTo(const QString& from, const QString& to) {
    ASSERT_EQ(::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()), 0)
        << std::strerror(errno);
}

QString resolved(const Alias& alias) {
    FSRef out;
    const OSStatus status = FSResolveAlias(alias, out);
    return status == noErr ? out.path : QStringLiteral("<status %1>").arg(status);
}

// A package inside "home/Music/Worlds" moved or renamed the way people do it in a file manager.
TEST(AliasResolution, FollowsMovesAndRenames) {
    struct Case {
        const char* what;
        const char* from;  // relative to home, renamed or moved to `to`
        const char* to;
        const char* found;  // where the package is then
    };
    const Case cases[] = {
        {"renamed in its folder", "Music/Worlds/Forest.sylvora", "Music/Worlds/Woods.sylvora",
         "Music/Worlds/Woods.sylvora"},
        {"moved to another folder", "Music/Worlds/Forest.sylvora", "Documents/Forest.sylvora",
         "Documents/Forest.sylvora"},
        {"moved to its parent", "Music/Worlds/Forest.sylvora", "Music/Forest.sylvora",
         "Music/Forest.sylvora"},
        {"moved to a sibling folder", "Music/Worlds/Forest.sylvora", "Music/Archive/Forest.sylvora",
         "Music/Archive/Forest.sylvora"},
        {"an ancestor renamed", "Music", "Sounds", "Sounds/Worlds/Forest.sylvora"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TempDir dir;
        const QString home = dir.makeDir("home");
        for (const char* folder : {"Music/Worlds", "Music/Archive", "Documents", "Pictures/2024"})
            dir.makeDir(QStringLiteral("home/") + folder);
        const QString package = dir.makeDir("home/Music/Worlds/Forest.sylvora");
        dir.writeFile("home/Music/Worlds/Forest.sylvora/data.plist", "<plist/>");
        const AliasHandle live = aliasOf(package);
        const AliasHandle stored = storedAliasOf(package);
        ASSERT_TRUE(stored);

        moveTo(home + '/' + c.from, home + '/' + c.to);
        const QString expected = home + '/' + c.found;
        EXPECT_EQ(resolved(*live), expected);
        EXPECT_EQ(resolved(*stored), expected);
        // Where it was found is remembered, and written with the alias.
        EXPECT_EQ(stored->recordedPath(), expected);
        EXPECT_EQ(Alias::fromBytes(stored->toBytes())->recordedPath(), expected);
    }
}

// An open world's aliases follow their objects through any rename or move on the file system
// at once, and a copy taken afterwards records where the object is now.
TEST(AliasResolution, FollowedObjectIsFoundWhereverItGoes) {
    TempDir dir;
    const QString sound = dir.writeFile("a/b/c/rain.wav", "rain");
    const AliasHandle alias = aliasOf(sound);
    alias->follow();
    ASSERT_TRUE(alias->isFollowing());
    const QString elsewhere = dir.makeDir("x/y") + "/storm.wav";
    moveTo(sound, elsewhere);
    moveTo(dir.filePath("x"), dir.filePath("z"));

    EXPECT_EQ(resolved(*alias), dir.filePath("z/y/storm.wav"));
    const AliasHandle copy = alias->copy();
    EXPECT_FALSE(copy->isFollowing());
    EXPECT_EQ(copy->recordedPath(), dir.filePath("z/y/storm.wav"));

    ASSERT_EQ(FSDeleteObject(refOf(dir.filePath("z/y/storm.wav"))), noErr);
    FSRef out;
    EXPECT_EQ(FSResolveAlias(*alias, out), fnfErr);
}

TEST(AliasResolution, DeletedFileDoesNotResolve) {
    TempDir dir;
    const QString path = dir.writeFile("rain.wav", "rain");
    const AliasHandle alias = aliasOf(path);
    ASSERT_EQ(FSDeleteObject(refOf(path)), noErr);

    FSRef out;
    EXPECT_EQ(FSResolveAlias(*alias, out), fnfErr);
}

// An editor saves by writing a new file and renaming it over the old one: the alias keeps to the
// path, and from then on to the new file. When the old file was only renamed and a newcomer took its
// name, the old file is still the one meant.
TEST(AliasResolution, FileReplacedAtItsPathIsTakenUnlessTheOriginalStillExists) {
    TempDir dir;
    const QString path = dir.writeFile("world.sylvora", "old");
    const AliasHandle alias = aliasOf(path);
    ASSERT_EQ(FSDeleteObject(refOf(path)), noErr);
    moveTo(dir.writeFile("world.sylvora.tmp", "new"), path);
    EXPECT_EQ(resolved(*alias), path);
    EXPECT_EQ(alias->inode(), aliasOf(path)->inode()) << "the alias keeps to the new file";

    const QString rain = dir.writeFile("rain.wav", "original");
    const AliasHandle rainAlias = aliasOf(rain);
    moveTo(rain, dir.filePath("rain-old.wav"));
    dir.writeFile("rain.wav", "newcomer");
    EXPECT_EQ(resolved(*rainAlias), dir.filePath("rain-old.wav"));
}

// ext4 hands a deleted folder's inode to the next folder made beside it: the birth time keeps an
// alias of the deleted folder from taking the newcomer for it.
TEST(AliasResolution, DeletedFolderIsNotMistakenForANewcomerGivenItsInode) {
    TempDir dir;
    const QString package = dir.makeDir(QStringLiteral("Forest.sylvora"));
    const AliasHandle alias = aliasOf(package);
    if (!alias->birthTime())
        GTEST_SKIP() << "this file system reports no birth time; aliases fall back to device and inode";
    ASSERT_EQ(FSDeleteContainer(refOf(package)), noErr);
    QString newcomer;
    for (int attempt = 0; attempt < 300 && newcomer.isEmpty(); ++attempt) {
        const QString path = dir.makeDir(QStringLiteral("Newcomer %1.sylvora").arg(attempt));
        if (aliasOf(path)->inode() == alias->inode())
            newcomer = path;
    }
    if (newcomer.isEmpty())
        GTEST_SKIP() << "the file system did not reuse the deleted folder's inode within 300 new folders";
    if (aliasOf(newcomer)->birthTime() == alias->birthTime())
        GTEST_SKIP() << "birth times are too coarse to tell the newcomer from the deleted folder";

    FSRef out;
    EXPECT_EQ(FSResolveAlias(*alias, out), fnfErr) << out.path.toStdString();
    dir.makeDir(QStringLiteral("Forest.sylvora"));
    EXPECT_EQ(resolved(*alias), dir.filePath(QStringLiteral("Forest.sylvora")))
        << "a package saved in its place";
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
    const Alias* list[] = {ofTwin.get(), nullptr, viaLink.get()};
    EXPECT_EQ(findAliasInList(*viaPath, list), 2);
    EXPECT_TRUE(isFileAliasInList(*viaPath, list));

    const Alias* twinOnly[] = {ofTwin.get()};
    EXPECT_EQ(findAliasInList(*viaPath, twinOnly), -1);
    EXPECT_FALSE(isFileAliasInList(*viaPath, twinOnly));
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

TEST(AliasBytes, RoundTripIsExactAndResolves) {
    TempDir dir;
    const AliasHandle alias = aliasOf(dir.writeFile(QString::fromUtf8("Grüße ☃ Wald.wav"), "x"));
    ASSERT_TRUE(alias->volume());
    const QByteArray bytes = alias->toBytes();
    const AliasHandle back = Alias::fromBytes(bytes);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->recordedPath(), alias->recordedPath());
    EXPECT_EQ(back->birthTime(), alias->birthTime());
    EXPECT_EQ(back->volume(), alias->volume());
    EXPECT_EQ(back->toBytes(), bytes);
    EXPECT_EQ(resolved(*back), alias->recordedPath());
}

// Bytes written before volumes were recorded: magic, version 2, flags, length, device, inode, birth
// time, path length, path. They still resolve, moves included.
TEST(AliasBytes, PreviousVersionStillResolves) {
    TempDir dir;
    const QString path = dir.writeFile("Worlds/rain.wav", "rain");
    const AliasHandle current = aliasOf(path);
    const QByteArray utf8 = path.toUtf8();
    QByteArray old(44, '\0');
    qToBigEndian<quint32>(0x53594C41, old.data());
    qToBigEndian<quint16>(2, old.data() + 4);
    qToBigEndian<quint16>(current->birthTime() ? 1 : 0, old.data() + 6);
    qToBigEndian<quint32>(static_cast<quint32>(44 + utf8.size()), old.data() + 8);
    qToBigEndian<quint64>(current->device(), old.data() + 12);
    qToBigEndian<quint64>(current->inode(), old.data() + 20);
    if (const auto birth = current->birthTime()) {
        qToBigEndian<qint64>(birth->seconds, old.data() + 28);
        qToBigEndian<quint32>(birth->nanoseconds, old.data() + 36);
    }
    qToBigEndian<quint32>(static_cast<quint32>(utf8.size()), old.data() + 40);
    old.append(utf8);

    const AliasHandle alias = Alias::fromBytes(old);
    ASSERT_TRUE(alias);
    EXPECT_EQ(resolved(*alias), path);
    moveTo(dir.filePath("Worlds"), dir.filePath("Sounds"));
    EXPECT_EQ(resolved(*alias), dir.filePath("Sounds/rain.wav"));
    EXPECT_NE(alias->toBytes().mid(4, 2), old.mid(4, 2)) << "new bytes carry the new version";
}

TEST(AliasBytes, DamagedBytesAreRefused) {
    const Alias alias(QStringLiteral("/music/rain.wav"), 42, 4242, BirthTime{1700000000, 5},
                      VolumeRecord{"uuid:0b3c", "/media/drive", "/music/rain.wav"});
    const QByteArray good = alias.toBytes();
    ASSERT_TRUE(Alias::fromBytes(good));
    for (qsizetype length = 0; length < good.size(); ++length)
        EXPECT_FALSE(Alias::fromBytes(good.left(length))) << "cut to " << length << " bytes";
    EXPECT_FALSE(Alias::fromBytes(good + 'x')) << "trailing byte";
    QByteArray badMagic = good;
    badMagic[0] = 'X';
    EXPECT_FALSE(Alias::fromBytes(badMagic));
    QByteArray invalidUtf8 = good;
    invalidUtf8[48] = '\xff';
    EXPECT_FALSE(Alias::fromBytes(invalidUtf8));
    EXPECT_FALSE(Alias::fromBytes(Alias(QStringLiteral("relative/rain.wav"), 1, 2).toBytes()));
}

// Collects what a known-worlds menu would show.
class CountingMenu : public KnownWorldsMenu {
  public:
    void clear() override { items = 0; }
    void appendItem(const QString&, quint32, bool) override { ++items; }
    int items = 0;
};

// A world on a drive that is not plugged in: "no such volume", not "file not found", so that the
// known worlds keep it while a deleted world is dropped. An empty folder where the drive was mounted
// cannot stand for that (its files are simply missing there), so this mounts a real file system: a
// tmpfs, which needs root (the CI suite runs as root).
TEST(AliasVolumes, WorldOnAnUnmountedFileSystemIsNoSuchVolumeAndStaysKnown) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "mounting a tmpfs needs root, and this suite runs as uid " << ::geteuid();
    TempDir dir;
    const QString drive = dir.makeDir("drive");
    const QByteArray mountPoint = QFile::encodeName(drive);
    if (::mount("sylvora-test-drive", mountPoint.constData(), "tmpfs", MS_NOSUID | MS_NODEV, "size=1m") != 0)
        GTEST_SKIP() << "running as root but mount(2) refused a tmpfs (" << std::strerror(errno)
                     << "): a container without CAP_SYS_ADMIN";
    struct Unmount {
        QByteArray path;
        ~Unmount() { ::umount2(path.constData(), MNT_DETACH); }
    } unmountAtEnd{mountPoint};

    const QString package = dir.makeDir("drive/Worlds/Rain.sylvora");
    const QString deleted = dir.makeDir("Deleted.sylvora");
    Preferences prefs(dir.filePath("prefs.ini"));
    prefs.updateKnownWorlds(storedAliasOf(package).get(), QStringLiteral("Rain"));
    prefs.updateKnownWorlds(storedAliasOf(deleted).get(), QStringLiteral("Deleted"));
    ASSERT_EQ(prefs.getNumKnownWorlds(), 2);
    const AliasHandle alias = storedAliasOf(package);
    EXPECT_EQ(resolved(*alias), package);

    ASSERT_EQ(::umount(mountPoint.constData()), 0) << std::strerror(errno);
    ASSERT_EQ(FSDeleteContainer(refOf(deleted)), noErr);
    FSRef out;
    EXPECT_EQ(FSResolveAlias(*alias, out), nsvErr);
    CountingMenu menu;
    prefs.fillMenuWithKnownWorlds(menu, nullptr);  // the deleted one is searched for meanwhile
    prefs.waitForKnownWorldSearches();
    prefs.fillMenuWithKnownWorlds(menu, nullptr);
    EXPECT_EQ(prefs.getNumKnownWorlds(), 1);
    EXPECT_EQ(menu.items, 1);
    EXPECT_EQ(FSResolveAlias(*prefs.getIndKnownWorldAlias(0), out), nsvErr);

    // The unplugged world first in the list hides none after it: a world met again and again (at
    // every load and menu opening) is found, not added once more each time.
    const AliasHandle other = storedAliasOf(dir.makeDir("Other.sylvora"));
    for (int meeting = 0; meeting < 3; ++meeting) prefs.updateKnownWorlds(other.get(), QStringLiteral("Other"));
    EXPECT_EQ(prefs.getNumKnownWorlds(), 2);
    EXPECT_TRUE(prefs.isAKnownWorld(refOf(dir.filePath("Other.sylvora"))));

    // And at the next launch, still under its name, and still once.
    prefs.savePreferences();
    Preferences nextRun(dir.filePath("prefs.ini"));
    nextRun.loadPreferences();
    ASSERT_EQ(nextRun.getNumKnownWorlds(), 2);
    EXPECT_EQ(nextRun.getIndKnownWorldName(0), QStringLiteral("Rain"));
}

// Runs a system tool; its standard output, or none when it failed.
std::optional<QString> run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(30000) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        return std::nullopt;
    return QString::fromLocal8Bit(process.readAllStandardOutput()).trimmed();
}

// A drive plugged in again under another mount point: the world is found at the same place inside
// its file system. An ext4 image on a loop device stands for the drive (root, mkfs.ext4, losetup).
TEST(AliasVolumes, DriveMountedElsewhereIsFoundThere) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "mounting a loop device needs root, and this suite runs as uid " << ::geteuid();
    TempDir dir;
    const QString image = dir.filePath("drive.img");
    QFile imageFile(image);
    ASSERT_TRUE(imageFile.open(QIODevice::WriteOnly) && imageFile.resize(8 << 20));
    imageFile.close();
    if (!run(QStringLiteral("mkfs.ext4"), {QStringLiteral("-q"), QStringLiteral("-F"), image}))
        GTEST_SKIP() << "mkfs.ext4 could not format an image";
    const QString device =
        run(QStringLiteral("losetup"), {QStringLiteral("-f"), QStringLiteral("--show"), image})
            .value_or(QString());
    if (device.isEmpty())
        GTEST_SKIP() << "no loop device could be attached (a container without loop devices)";
    struct Detach {
        QString device;
        QByteArray first, second;
        ~Detach() {
            ::umount2(first.constData(), MNT_DETACH);
            ::umount2(second.constData(), MNT_DETACH);
            run(QStringLiteral("losetup"), {QStringLiteral("-d"), device});
        }
    } detach{device, QFile::encodeName(dir.makeDir("first")), QFile::encodeName(dir.makeDir("second"))};
    const QByteArray source = QFile::encodeName(device);
    if (::mount(source.constData(), detach.first.constData(), "ext4", 0, nullptr) != 0)
        GTEST_SKIP() << "running as root but mount(2) refused the loop device (" << std::strerror(errno)
                     << ")";

    const QString package = dir.makeDir("first/Worlds/Rain.sylvora");
    const AliasHandle alias = storedAliasOf(package);
    ASSERT_EQ(::umount(detach.first.constData()), 0) << std::strerror(errno);
    ASSERT_EQ(::mount(source.constData(), detach.second.constData(), "ext4", 0, nullptr), 0)
        << std::strerror(errno);
    EXPECT_EQ(resolved(*alias), dir.filePath("second/Worlds/Rain.sylvora"));
    ASSERT_EQ(::umount(detach.second.constData()), 0) << std::strerror(errno);
    FSRef out;
    EXPECT_EQ(FSResolveAlias(*alias, out), nsvErr);
}

}  // namespace
}  // namespace sylvora
