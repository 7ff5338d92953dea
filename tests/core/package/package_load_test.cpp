#include <sys/stat.h>

#include <QFile>
#include <QFileInfo>
#include <functional>
#include <vector>

#include "core/package/plist.h"
#include "packagetestfixture.h"

namespace sylvora::test {
namespace {

class PackageLoad : public PackageTest {
protected:
    SoundID loop(int index) const { return world.getIndLoopSoundID(index); }
    SoundID environment(int index) const { return world.getIndEnvironmentSoundID(index); }
};

TEST_F(PackageLoad, EmptyDictionaryGivesEmptyWorldThatJoinsKnownWorlds) {
    const QString package = makePackage(QStringLiteral("Rain.sylvora"), xmlPlist(QString()));
    ASSERT_EQ(load(package), noErr);

    EXPECT_TRUE(world.getName().isNull());
    EXPECT_EQ(world.getLoopSoundsCrossFadeDuration(), 5);
    EXPECT_EQ(world.getNumGroups(), 0);
    EXPECT_EQ(world.getNumLoopSounds(), 0);
    EXPECT_EQ(world.getNumEnvironmentSounds(), 0);
    EXPECT_FALSE(world.getModified());
    ASSERT_NE(world.getPackageAlias(), nullptr);
    FSRef resolved;
    ASSERT_EQ(FSResolveAlias(*world.getPackageAlias(), resolved), noErr);
    EXPECT_TRUE(FSCompareFSRefs(resolved, ref(package)));

    ASSERT_EQ(prefs->getNumKnownWorlds(), 1);
    EXPECT_EQ(prefs->getIndKnownWorldName(0), QStringLiteral("Rain"));
    EXPECT_TRUE(prefs->isAKnownWorld(ref(package)));
}

TEST_F(PackageLoad, HandWrittenXmlWorldLoadsEveryValue) {
    const QByteArray plist = xmlPlist(QStringLiteral(R"(
        <key>Name</key><string>Forest Night</string>
        <key>Author</key><string>Ana</string>
        <key>Description</key><string>Owls &amp; crickets</string>
        <key>Written By</key><string>some other editor</string>
        <key>Environment Sound Groups</key><array>
            <dict><key>Group Name</key><string>Birds</string>
                  <key>Minimum Interval</key><integer>3</integer><key>Maximum Interval</key><integer>9</integer></dict>
            <dict><key>Group Name</key><string></string>
                  <key>Minimum Interval</key><integer>60</integer><key>Maximum Interval</key><integer>90</integer></dict>
            <dict/>
        </array>
        <key>Loop Sounds Crossfade Duration</key><integer>8</integer>
        <key>Picture File Name</key><string>cover.png</string>
        <key>Loop Sounds</key><array>
            <dict><key>File Name</key><string>wind.wav</string><key>Volume</key><real>0.25</real></dict>
            <dict><key>File Name</key><string>rain.wav</string></dict>
        </array>
        <key>Environment Sounds</key><array>
            <dict><key>File Name</key><string>owl.wav</string>
                  <key>Minimum Volume</key><real>0.2</real><key>Maximum Volume</key><real>0.7</real>
                  <key>Minimum Interval</key><integer>11</integer><key>Maximum Interval</key><integer>22</integer>
                  <key>Group Index</key><integer>1</integer></dict>
            <dict><key>File Name</key><string>cricket.wav</string>
                  <key>Minimum Interval</key><integer>11</integer><key>Maximum Interval</key><integer>22</integer>
                  <key>Group Index</key><integer>-1</integer></dict>
            <dict><key>File Name</key><string>frog.wav</string>
                  <key>Minimum Interval</key><integer>13</integer><key>Maximum Interval</key><integer>24</integer>
                  <key>Group Index</key><integer>3</integer></dict>
        </array>)"));
    const QString package = makePackage(QStringLiteral("Forest.sylvora"), plist, {QStringLiteral("wind.wav"), QStringLiteral("rain.wav")},
                                        {QStringLiteral("owl.wav"), QStringLiteral("cricket.wav"), QStringLiteral("frog.wav")});
    writePicture(QStringLiteral("Forest.sylvora/cover.png"));

    ASSERT_EQ(load(package), noErr);
    EXPECT_FALSE(world.getModified());
    EXPECT_EQ(world.getName(), QStringLiteral("Forest Night"));
    EXPECT_EQ(world.getAuthor(), QStringLiteral("Ana"));
    EXPECT_EQ(world.getDescription(), QStringLiteral("Owls & crickets"));
    EXPECT_EQ(world.getLoopSoundsCrossFadeDuration(), 8);

    ASSERT_EQ(world.getNumGroups(), 3);
    const GroupID birds = world.getIndGroupID(0);
    const GroupID unnamed = world.getIndGroupID(1);
    EXPECT_EQ(world.getGroupName(birds), QStringLiteral("Birds"));
    EXPECT_EQ(world.getGroupMinInterval(birds), 3);
    EXPECT_EQ(world.getGroupMaxInterval(birds), 9);
    EXPECT_TRUE(world.getGroupName(unnamed).isEmpty());  // an empty name stays empty
    EXPECT_FALSE(world.getGroupName(world.getIndGroupID(2)).isEmpty());  // a missing one gets the default
    EXPECT_EQ(world.getGroupMinInterval(world.getIndGroupID(2)), 20);
    EXPECT_EQ(world.getGroupMaxInterval(world.getIndGroupID(2)), 40);

    ASSERT_EQ(world.getNumLoopSounds(), 2);
    EXPECT_EQ(world.getLoopSoundVolume(loop(0)), 0.25);
    EXPECT_EQ(world.getLoopSoundVolume(loop(1)), 1.0);
    EXPECT_EQ(world.getLoopSoundFilename(loop(0)), QStringLiteral("wind.wav"));

    ASSERT_EQ(world.getNumEnvironmentSounds(), 3);
    const SoundID owl = environment(0);
    EXPECT_EQ(world.getEnvironmentSoundGroupID(owl), unnamed);
    EXPECT_EQ(world.getEnvironmentSoundMinInterval(owl), 60);  // the group's, not its own
    EXPECT_EQ(world.getEnvironmentSoundMaxInterval(owl), 90);
    EXPECT_EQ(world.getEnvironmentSoundMinVolume(owl), 0.2);
    EXPECT_EQ(world.getEnvironmentSoundMaxVolume(owl), 0.7);
    EXPECT_EQ(world.getEnvironmentSoundGroupID(environment(1)), 0u);
    EXPECT_EQ(world.getEnvironmentSoundMinInterval(environment(1)), 11);
    EXPECT_EQ(world.getEnvironmentSoundMaxInterval(environment(1)), 22);
    EXPECT_EQ(world.getEnvironmentSoundGroupID(environment(2)), 0u);  // index 3 is past the groups
    EXPECT_EQ(world.getEnvironmentSoundMinInterval(environment(2)), 13);
    EXPECT_EQ(world.getEnvironmentSoundMaxInterval(environment(2)), 24);
    EXPECT_EQ(world.getEnvironmentSoundFilename(environment(2)), QStringLiteral("frog.wav"));

    ASSERT_NE(world.getPictureFileAlias(), nullptr);
    EXPECT_FALSE(world.getPicture().isNull());
    // Every loaded sound has an instance in the pool, but nothing plays yet.
    EXPECT_EQ(world.getNumMovies(), 5);
    EXPECT_FALSE(world.isPlaying());
    ASSERT_EQ(prefs->getNumKnownWorlds(), 1);
    EXPECT_EQ(prefs->getIndKnownWorldName(0), QStringLiteral("Forest Night"));
}

TEST_F(PackageLoad, BinaryPropertyListLoadsLikeXml) {
    PlistPtr root = plistNewDict();
    const auto node = static_cast<plist_t>(root.get());
    plistSetString(node, World::NAME_KEY, QStringLiteral("Binary"));
    plistSetInt32(node, World::LOOP_SOUNDS_CROSSFADE_DURATION_KEY, 9);
    PlistPtr loops = plistNewArray();
    PlistPtr entry = plistNewDict();
    plistSetString(static_cast<plist_t>(entry.get()), World::SOUND_FILENAME_KEY, QStringLiteral("hum.wav"));
    plistSetDouble(static_cast<plist_t>(entry.get()), World::LOOP_SOUND_VOLUME_KEY, 0.5);
    plistAppend(static_cast<plist_t>(loops.get()), std::move(entry));
    plistSetNode(node, World::LOOP_SOUNDS_ARRAY_KEY, std::move(loops));

    const QString package = makePackage(QStringLiteral("Bin.sylvora"), plistToBinary(node), {QStringLiteral("hum.wav")});
    ASSERT_EQ(load(package), noErr);
    EXPECT_EQ(world.getName(), QStringLiteral("Binary"));
    EXPECT_EQ(world.getLoopSoundsCrossFadeDuration(), 9);
    ASSERT_EQ(world.getNumLoopSounds(), 1);
    EXPECT_EQ(world.getLoopSoundVolume(loop(0)), 0.5);
}

TEST_F(PackageLoad, ValuesOfTheWrongTypeCountAsMissing) {
    const QByteArray plist = xmlPlist(QStringLiteral(R"(
        <key>Name</key><integer>4</integer>
        <key>Author</key><array/>
        <key>Environment Sound Groups</key><dict/>
        <key>Loop Sounds Crossfade Duration</key><string>9</string>
        <key>Picture File Name</key><true/>
        <key>Loop Sounds</key><array>
            <string>wind.wav</string>
            <dict><key>File Name</key><integer>1</integer></dict>
            <dict><key>File Name</key><string>wind.wav</string><key>Volume</key><string>0.1</string></dict>
        </array>
        <key>Environment Sounds</key><array>
            <dict><key>File Name</key><string>owl.wav</string>
                  <key>Minimum Volume</key><false/><key>Maximum Interval</key><data>AAAA</data>
                  <key>Group Index</key><string>0</string></dict>
        </array>)"));
    const QString package = makePackage(QStringLiteral("Odd.sylvora"), plist, {QStringLiteral("wind.wav")}, {QStringLiteral("owl.wav")});
    ASSERT_EQ(load(package), noErr);
    EXPECT_TRUE(world.getName().isNull());
    EXPECT_TRUE(world.getAuthor().isNull());
    EXPECT_EQ(world.getNumGroups(), 0);
    EXPECT_EQ(world.getLoopSoundsCrossFadeDuration(), 5);
    EXPECT_EQ(world.getPictureFileAlias(), nullptr);
    ASSERT_EQ(world.getNumLoopSounds(), 1);
    EXPECT_EQ(world.getLoopSoundVolume(loop(0)), 1.0);
    ASSERT_EQ(world.getNumEnvironmentSounds(), 1);
    EXPECT_EQ(world.getEnvironmentSoundMinVolume(environment(0)), 1.0);
    EXPECT_EQ(world.getEnvironmentSoundMaxInterval(environment(0)), 40);
    EXPECT_EQ(world.getEnvironmentSoundGroupID(environment(0)), 0u);
    EXPECT_NE(world.getPackageAlias(), nullptr);
}

TEST_F(PackageLoad, VolumeAdjustIsOverriddenByExplicitBounds) {
    const QByteArray plist = xmlPlist(QStringLiteral(R"(
        <key>Environment Sounds</key><array>
            <dict><key>File Name</key><string>a.wav</string><key>Volume Adjust</key><real>0.5</real></dict>
            <dict><key>File Name</key><string>b.wav</string><key>Maximum Volume</key><real>0.8</real>
                  <key>Volume Adjust</key><real>0.5</real></dict>
            <dict><key>File Name</key><string>c.wav</string><key>Minimum Volume</key><real>0.3</real>
                  <key>Volume Adjust</key><real>0.5</real></dict>
        </array>)"));
    const QString package = makePackage(QStringLiteral("Old.sylvora"), plist, {},
                                        {QStringLiteral("a.wav"), QStringLiteral("b.wav"), QStringLiteral("c.wav")});
    ASSERT_EQ(load(package), noErr);
    ASSERT_EQ(world.getNumEnvironmentSounds(), 3);
    EXPECT_EQ(world.getEnvironmentSoundMinVolume(environment(0)), 0.5);
    EXPECT_EQ(world.getEnvironmentSoundMaxVolume(environment(0)), 0.5);
    EXPECT_EQ(world.getEnvironmentSoundMinVolume(environment(1)), 0.5);
    EXPECT_EQ(world.getEnvironmentSoundMaxVolume(environment(1)), 0.8);
    EXPECT_EQ(world.getEnvironmentSoundMinVolume(environment(2)), 0.3);
    EXPECT_EQ(world.getEnvironmentSoundMaxVolume(environment(2)), 0.5);
    EXPECT_FALSE(world.getModified());
}

TEST_F(PackageLoad, IntegersAndRealsServeEitherKindOfField) {
    const QByteArray plist = xmlPlist(QStringLiteral(R"(
        <key>Loop Sounds Crossfade Duration</key><real>7.0</real>
        <key>Loop Sounds</key><array>
            <dict><key>File Name</key><string>a.wav</string><key>Volume</key><integer>1</integer></dict>
            <dict><key>File Name</key><string>b.wav</string><key>Volume</key><integer>0</integer></dict>
        </array>
        <key>Environment Sounds</key><array>
            <dict><key>File Name</key><string>c.wav</string><key>Minimum Interval</key><real>12.0</real>
                  <key>Maximum Volume</key><integer>1</integer><key>Minimum Volume</key><integer>0</integer></dict>
        </array>)"));
    const QString package = makePackage(QStringLiteral("Mixed.sylvora"), plist, {QStringLiteral("a.wav"), QStringLiteral("b.wav")},
                                        {QStringLiteral("c.wav")});
    ASSERT_EQ(load(package), noErr);
    EXPECT_EQ(world.getLoopSoundsCrossFadeDuration(), 7);
    EXPECT_EQ(world.getLoopSoundVolume(loop(0)), 1.0);
    EXPECT_EQ(world.getLoopSoundVolume(loop(1)), 0.0);
    EXPECT_EQ(world.getEnvironmentSoundMinInterval(environment(0)), 12);
    EXPECT_EQ(world.getEnvironmentSoundMinVolume(environment(0)), 0.0);
    EXPECT_EQ(world.getEnvironmentSoundMaxVolume(environment(0)), 1.0);
}

TEST_F(PackageLoad, TwoEntriesNamingOneFileLoadAsOneSound) {
    const QByteArray plist = xmlPlist(QStringLiteral(R"(
        <key>Loop Sounds</key><array>
            <dict><key>File Name</key><string>a.wav</string><key>Volume</key><real>0.3</real></dict>
            <dict><key>File Name</key><string>a.wav</string><key>Volume</key><real>0.9</real></dict>
        </array>
        <key>Environment Sounds</key><array>
            <dict><key>File Name</key><string>b.wav</string></dict>
            <dict><key>File Name</key><string>b.wav</string></dict>
        </array>)"));
    const QString package = makePackage(QStringLiteral("Twice.sylvora"), plist, {QStringLiteral("a.wav")}, {QStringLiteral("b.wav")});
    ASSERT_EQ(load(package), noErr);
    ASSERT_EQ(world.getNumLoopSounds(), 1);
    EXPECT_EQ(world.getLoopSoundVolume(loop(0)), 0.3);
    EXPECT_EQ(world.getNumEnvironmentSounds(), 1);
}

TEST_F(PackageLoad, GroupsPastTheLimitAndNonDictionariesTakeNoPosition) {
    QString groups = QStringLiteral("<string>not a group</string>");
    for (int i = 0; i < World::MAX_GROUPS + 2; ++i)
        groups += QStringLiteral("<dict><key>Group Name</key><string>G%1</string></dict>").arg(i);
    const QByteArray plist = xmlPlist(QStringLiteral(R"(
        <key>Environment Sound Groups</key><array>%1</array>
        <key>Environment Sounds</key><array>
            <dict><key>File Name</key><string>a.wav</string><key>Group Index</key><integer>0</integer></dict>
            <dict><key>File Name</key><string>b.wav</string><key>Group Index</key><integer>49</integer></dict>
            <dict><key>File Name</key><string>c.wav</string><key>Group Index</key><integer>50</integer></dict>
        </array>)").arg(groups));
    const QString package = makePackage(QStringLiteral("Many.sylvora"), plist, {},
                                        {QStringLiteral("a.wav"), QStringLiteral("b.wav"), QStringLiteral("c.wav")});
    ASSERT_EQ(load(package), noErr);
    ASSERT_EQ(world.getNumGroups(), World::MAX_GROUPS);
    EXPECT_EQ(world.getGroupName(world.getIndGroupID(0)), QStringLiteral("G0"));
    EXPECT_EQ(world.getEnvironmentSoundGroupID(environment(0)), world.getIndGroupID(0));
    EXPECT_EQ(world.getEnvironmentSoundGroupID(environment(1)), world.getIndGroupID(49));
    EXPECT_EQ(world.getEnvironmentSoundGroupID(environment(2)), 0u);
}

TEST_F(PackageLoad, LoadingThePackageAlreadyLoadedKeepsPlaybackAndChanges) {
    const QByteArray plist = xmlPlist(QStringLiteral(
        "<key>Loop Sounds</key><array><dict><key>File Name</key><string>a.wav</string></dict></array>"));
    const QString package = makePackage(QStringLiteral("Same.sylvora"), plist, {QStringLiteral("a.wav")});
    ASSERT_EQ(load(package), noErr);
    const SoundID before = loop(0);
    world.start();
    world.setName(QStringLiteral("Edited"));
    ASSERT_TRUE(world.getModified());

    EXPECT_EQ(load(package), noErr);
    EXPECT_TRUE(world.isPlaying());
    EXPECT_TRUE(world.getModified());
    EXPECT_EQ(world.getName(), QStringLiteral("Edited"));
    EXPECT_EQ(loop(0), before);

    // Another package replaces everything, and identifiers keep counting.
    const QString other = makePackage(QStringLiteral("Other.sylvora"), plist, {QStringLiteral("a.wav")});
    ASSERT_EQ(load(other), noErr);
    EXPECT_FALSE(world.isPlaying());
    EXPECT_FALSE(world.getModified());
    EXPECT_TRUE(world.getName().isNull());
    ASSERT_EQ(world.getNumLoopSounds(), 1);
    EXPECT_GT(loop(0), before);
}

TEST_F(PackageLoad, MissingSoundFolderIsReportedUnlessALaterListWasRead) {
    const QString loops = QStringLiteral("<key>Loop Sounds</key><array><dict><key>File Name</key><string>a.wav</string></dict></array>");
    const QString environment =
        QStringLiteral("<key>Environment Sounds</key><array><dict><key>File Name</key><string>b.wav</string></dict></array>");

    const QString onlyLoops = makePackage(QStringLiteral("L.sylvora"), xmlPlist(loops), {}, {QStringLiteral("b.wav")});
    EXPECT_EQ(load(onlyLoops), fnfErr);
    EXPECT_NE(world.getPackageAlias(), nullptr);  // the description was read
    EXPECT_TRUE(prefs->isAKnownWorld(ref(onlyLoops)));
    EXPECT_FALSE(world.getModified());

    const QString bothLists = makePackage(QStringLiteral("LE.sylvora"), xmlPlist(loops + environment), {}, {QStringLiteral("b.wav")});
    EXPECT_EQ(load(bothLists), noErr);
    EXPECT_EQ(world.getNumLoopSounds(), 0);
    EXPECT_EQ(world.getNumEnvironmentSounds(), 1);

    const QString noEnvironmentFolder = makePackage(QStringLiteral("E.sylvora"), xmlPlist(loops + environment), {QStringLiteral("a.wav")});
    EXPECT_EQ(load(noEnvironmentFolder), fnfErr);
    EXPECT_EQ(world.getNumLoopSounds(), 1);
    EXPECT_NE(world.getPackageAlias(), nullptr);
}

TEST_F(PackageLoad, NamesThatReachOutsideTheirFolderAreRefused) {
    const QByteArray plist = xmlPlist(QStringLiteral(R"(
        <key>Picture File Name</key><string>../outside.png</string>
        <key>Loop Sounds</key><array>
            <dict><key>File Name</key><string>../inside.wav</string></dict>
            <dict><key>File Name</key><string>../../outside.wav</string></dict>
            <dict><key>File Name</key><string>sub/nested.wav</string></dict>
            <dict><key>File Name</key><string>..</string></dict>
            <dict><key>File Name</key><string>.</string></dict>
            <dict><key>File Name</key><string></string></dict>
            <dict><key>File Name</key><string>/etc/passwd</string></dict>
        </array>)"));
    const QString package = makePackage(QStringLiteral("Hostile.sylvora"), plist);
    // Every one of these names would find a real sound if it were followed.
    writeSound(QStringLiteral("Hostile.sylvora/inside.wav"));
    writeSound(QStringLiteral("outside.wav"));
    writeSound(QStringLiteral("Hostile.sylvora/Loop Sounds/sub/nested.wav"));
    writePicture(QStringLiteral("outside.png"));

    ASSERT_EQ(load(package), noErr);
    EXPECT_EQ(world.getNumLoopSounds(), 0);
    EXPECT_EQ(world.getNumMovies(), 0);
    EXPECT_EQ(world.getPictureFileAlias(), nullptr);
}

TEST_F(PackageLoad, UnusableDescriptionsGiveTheirStatusAndAnEmptyWorld) {
    const QByteArray valid = xmlPlist(QStringLiteral("<key>Name</key><string>Earlier</string>"));
    const QString earlier = makePackage(QStringLiteral("Earlier.sylvora"), valid);

    struct Case {
        QString name;
        QByteArray data;
        bool writeData;
        OSStatus expected;
    };
    const Case cases[] = {
        {QStringLiteral("NoData.sylvora"), {}, false, fnfErr},
        {QStringLiteral("Text.sylvora"), QByteArray("\x01\x02{ this is not a property list"), true, unreadablePropertyListErr},
        {QStringLiteral("Empty.sylvora"), QByteArray(), true, unreadablePropertyListErr},
        {QStringLiteral("Cut.sylvora"), valid.left(valid.size() / 2), true, unreadablePropertyListErr},
        {QStringLiteral("Array.sylvora"), xmlPlistWithRoot(QStringLiteral("<array><string>Rain</string></array>")), true, noErr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name.toStdString());
        ASSERT_EQ(load(earlier), noErr);
        const QString package = dir.makeDir(c.name);
        if (c.writeData) dir.writeFile(c.name + QStringLiteral("/data.plist"), c.data);
        EXPECT_EQ(load(package), c.expected);
        EXPECT_TRUE(world.getName().isNull());
        EXPECT_EQ(world.getPackageAlias(), nullptr);
        EXPECT_FALSE(world.getModified());
        EXPECT_FALSE(prefs->isAKnownWorld(ref(package)));
    }

    // A folder where the description should be cannot be read as one.
    const QString folderData = dir.makeDir(QStringLiteral("Folder.sylvora/data.plist"));
    EXPECT_NE(load(QFileInfo(folderData).path()), noErr);
    EXPECT_EQ(world.getPackageAlias(), nullptr);
}

// A hostile package can neither hang the loader, feed it without end, nor reach outside itself:
// what is not a regular file inside the package is refused as missing, an oversized or too deeply
// nested description as unreadable. Each case must return at all (a FIFO would block for good).
TEST_F(PackageLoad, HostileEntriesAreRefusedWithoutWaiting) {
    const QString sound = QStringLiteral("wind.wav");
    const QString outside = writeSound(QStringLiteral("elsewhere/outside.wav"));
    const QString outsidePlist = dir.filePath(QStringLiteral("elsewhere/data.plist"));
    {
        QFile plistFile(outsidePlist);
        ASSERT_TRUE(plistFile.open(QIODevice::WriteOnly));
        plistFile.write(xmlPlist(QStringLiteral("<key>Name</key><string>Outside</string>")));
    }
    const auto fifo = [](const QString& path) { ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0644), 0); };
    const auto link = [](const QString& target, const QString& path) { ASSERT_TRUE(QFile::link(target, path)); };
    const auto write = [](const QString& path, const QByteArray& bytes) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
    };
    QByteArray deep = "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>Loop Sounds</key>";
    for (int i = 0; i < 200000; ++i) deep += "<array>";

    struct Case {
        const char* what;
        std::function<void(const QString& package)> spoil;
        OSStatus result;
        int loopSounds;
        bool picture;
    };
    const QByteArray plist = xmlPlist(QStringLiteral("<key>Picture File Name</key><string>cover.png</string>"
                                                     "<key>Loop Sounds</key><array><dict><key>File Name</key>"
                                                     "<string>wind.wav</string></dict></array>"));
    const std::vector<Case> cases = {
        {"untouched", [](const QString&) {}, noErr, 1, true},
        {"a link that stays inside",
         [&](const QString& p) {
             QFile::rename(p + "/Loop Sounds/wind.wav", p + "/wind-data.wav");
             link("../wind-data.wav", p + "/Loop Sounds/wind.wav");
         },
         noErr, 1, true},
        {"data.plist a FIFO", [&](const QString& p) { QFile::remove(p + "/data.plist"), fifo(p + "/data.plist"); }, fnfErr, 0, false},
        {"data.plist linked to /dev/zero",
         [&](const QString& p) { QFile::remove(p + "/data.plist"), link("/dev/zero", p + "/data.plist"); }, fnfErr, 0, false},
        {"data.plist linked out", [&](const QString& p) { QFile::remove(p + "/data.plist"), link(outsidePlist, p + "/data.plist"); },
         fnfErr, 0, false},
        {"data.plist of 20 MB", [&](const QString& p) { write(p + "/data.plist", plist + QByteArray(20 << 20, ' ')); },
         unreadablePropertyListErr, 0, false},
        {"200,000 nested arrays", [&](const QString& p) { write(p + "/data.plist", deep); }, unreadablePropertyListErr, 0, false},
        {"sound a FIFO", [&](const QString& p) { QFile::remove(p + "/Loop Sounds/wind.wav"), fifo(p + "/Loop Sounds/wind.wav"); },
         noErr, 0, true},
        {"sound linked to /dev/zero",
         [&](const QString& p) { QFile::remove(p + "/Loop Sounds/wind.wav"), link("/dev/zero", p + "/Loop Sounds/wind.wav"); },
         noErr, 0, true},
        {"sound linked out",
         [&](const QString& p) { QFile::remove(p + "/Loop Sounds/wind.wav"), link(outside, p + "/Loop Sounds/wind.wav"); },
         noErr, 0, true},
        {"picture a FIFO", [&](const QString& p) { QFile::remove(p + "/cover.png"), fifo(p + "/cover.png"); }, noErr, 1, false},
        {"picture linked out", [&](const QString& p) { QFile::remove(p + "/cover.png"), link(outside, p + "/cover.png"); },
         noErr, 1, false},
    };
    int n = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const QString name = QStringLiteral("Hostile %1.sylvora").arg(++n);
        const QString package = makePackage(name, plist, {sound});
        writePicture(name + QStringLiteral("/cover.png"));
        c.spoil(package);
        EXPECT_EQ(load(package), c.result);
        EXPECT_EQ(world.getNumLoopSounds(), c.loopSounds);
        EXPECT_EQ(world.getPictureFileAlias() != nullptr, c.picture);
    }
}

TEST(PlistNesting, ContainersDeeperThanTheBoundAreRefusedInBothForms) {
    for (const int depth : {PLIST_MAX_NESTING, PLIST_MAX_NESTING + 1}) {
        SCOPED_TRACE(depth);
        const PlistPtr root(plist_new_array());
        plist_t innermost = static_cast<plist_t>(root.get());
        for (int level = 1; level < depth; ++level) {
            plist_t child = plist_new_array();
            plist_array_append_item(innermost, child);
            innermost = child;
        }
        plist_array_append_item(innermost, plist_new_string("deepest"));
        const bool within = depth <= PLIST_MAX_NESTING;
        EXPECT_EQ(plistParse(plistToXml(static_cast<plist_t>(root.get()))) != nullptr, within);
        EXPECT_EQ(plistParse(plistToBinary(static_cast<plist_t>(root.get()))) != nullptr, within);
    }
}

}  // namespace
}  // namespace sylvora::test
