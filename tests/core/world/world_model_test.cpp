// The world's model on a stopped world: identifiers, the three tables, the setters and their
// effect on the modified flag, groups, file names and reset.

#include <unistd.h>

#include <QFile>
#include <QFileInfo>

#include "core/strings/stringresources.h"
#include "support/worldfixture.h"

namespace sylvora::test {
namespace {

QString defaultGroupName(int number) {
    return copyLocalizedString(DEFAULT_ENVIRONMENT_SOUND_GROUP_NAME_KEY, MISC_STRINGS_FILE).arg(number);
}

class WorldModelTest : public WorldTest {
protected:
    // Loads a package whose description holds `entries`: a world that holds values, not modified.
    void loadPackage(const QString& entries, const QStringList& loops = {}, const QStringList& environment = {}) {
        ASSERT_EQ(load(makePackage(QStringLiteral("World %1.sylvora").arg(++packages_), xmlPlist(entries), loops,
                                   environment)),
                  noErr);
        ASSERT_FALSE(world.getModified());
    }
    void loadUnmodifiedWorld(const QString& name) {
        loadPackage(QStringLiteral("<key>Name</key><string>%1</string><key>Author</key><string>%1</string>"
                                   "<key>Description</key><string>%1</string>")
                        .arg(name));
    }

private:
    int packages_ = 0;
};

using WorldIdentifiersTest = WorldModelTest;

TEST_F(WorldIdentifiersTest, OneCounterServesEveryKindAndOutlivesReset) {
    EXPECT_EQ(world.addGroup(QString()), 1u);
    EXPECT_EQ(world.addLoopSound(*soundAlias("loop.wav")), 2u);
    EXPECT_EQ(world.addEnvironmentSound(*soundAlias("env.wav")), 3u);

    world.resetToInitialState();
    EXPECT_EQ(world.getNumGroups(), 0);
    EXPECT_EQ(world.getNumLoopSounds(), 0);
    EXPECT_EQ(world.getNumEnvironmentSounds(), 0);
    EXPECT_EQ(world.addGroup(QStringLiteral("after reset")), 4u);
}

TEST_F(WorldIdentifiersTest, PositionsOutsideTheTablesGiveZero) {
    const SoundID loopID = world.addLoopSound(*soundAlias("loop.wav"));
    const SoundID envID = world.addEnvironmentSound(*soundAlias("env.wav"));
    const GroupID groupID = world.addGroup(QString());

    EXPECT_EQ(world.getIndLoopSoundID(0), loopID);
    EXPECT_EQ(world.getIndLoopSoundID(-1), 0u);
    EXPECT_EQ(world.getIndLoopSoundID(world.getNumLoopSounds()), 0u);
    EXPECT_EQ(world.getIndEnvironmentSoundID(-1), 0u);
    EXPECT_EQ(world.getIndEnvironmentSoundID(1), 0u);
    EXPECT_EQ(world.getIndGroupID(1), 0u);

    // An identifier names one thing only: a group's is no sound's and the reverse.
    EXPECT_EQ(world.getGroupIndex(groupID), 0);
    EXPECT_EQ(world.getGroupIndex(envID), -1);
    EXPECT_EQ(world.getEnvironmentSoundIndex(groupID), -1);
    EXPECT_EQ(world.getLoopSoundIndex(envID), -1);
}

TEST_F(WorldIdentifiersTest, UnknownIdentifiersGiveSentinelsAndChangeNothing) {
    const SoundID unknown = 99;
    EXPECT_EQ(world.getLoopSound(unknown), nullptr);
    EXPECT_TRUE(world.getLoopSoundFilename(unknown).isNull());
    EXPECT_EQ(world.getLoopSoundVolume(unknown), -1.0);
    EXPECT_EQ(world.getEnvironmentSoundMinVolume(unknown), -1.0);
    EXPECT_EQ(world.getEnvironmentSoundMaxVolume(unknown), -1.0);
    EXPECT_EQ(world.getEnvironmentSoundMinInterval(unknown), -1);
    EXPECT_EQ(world.getEnvironmentSoundMaxInterval(unknown), -1);
    EXPECT_EQ(world.getEnvironmentSoundGroupID(unknown), 0u);
    EXPECT_EQ(world.getGroupMinInterval(unknown), -1);
    EXPECT_EQ(world.getGroupMaxInterval(unknown), -1);
    EXPECT_TRUE(world.getGroupName(unknown).isNull());

    world.setLoopSoundVolume(unknown, 0.5);
    world.setEnvironmentSoundMinVolume(unknown, 0.5);
    world.setEnvironmentSoundMaxInterval(unknown, 5);
    world.setGroupName(unknown, QStringLiteral("x"));
    world.setGroupMinInterval(unknown, 1);
    world.setGroupMaxInterval(unknown, 2);
    world.setEnvironmentSoundGroupID(unknown, 0);
    world.removeGroup(unknown);
    world.removeLoopSound(unknown);
    world.removeEnvironmentSound(unknown);
    EXPECT_FALSE(world.getModified());
}

TEST_F(WorldIdentifiersTest, FullTablesRefuseTheFiftyFirstUntilOneIsRemoved) {
    for (int i = 0; i < World::MAX_GROUPS; ++i) {
        ASSERT_NE(world.addGroup(QString()), 0u);
    }
    for (int i = 0; i < World::MAX_LOOP_SOUNDS; ++i) {
        ASSERT_NE(world.addLoopSound(*soundAlias(QStringLiteral("loop%1.wav").arg(i), 0.05)), 0u) << i;
    }
    for (int i = 0; i < World::MAX_ENVIRONMENT_SOUNDS; ++i) {
        ASSERT_NE(world.addEnvironmentSound(*soundAlias(QStringLiteral("env%1.wav").arg(i), 0.05)), 0u) << i;
    }
    EXPECT_EQ(world.getNumMovies(), World::MAX_MOVIES);

    EXPECT_EQ(world.addGroup(QString()), 0u);
    EXPECT_EQ(world.addLoopSound(*soundAlias("extra-loop.wav", 0.05)), 0u);
    EXPECT_EQ(world.addEnvironmentSound(*soundAlias("extra-env.wav", 0.05)), 0u);
    EXPECT_EQ(world.getNumGroups(), World::MAX_GROUPS);
    EXPECT_EQ(world.getNumLoopSounds(), World::MAX_LOOP_SOUNDS);
    EXPECT_EQ(world.getNumEnvironmentSounds(), World::MAX_ENVIRONMENT_SOUNDS);
    EXPECT_EQ(world.getNumMovies(), World::MAX_MOVIES);

    // Refusals used no identifier: the 151st thing added gets 151.
    world.removeGroup(world.getIndGroupID(10));
    world.removeLoopSound(world.getIndLoopSoundID(10));
    world.removeEnvironmentSound(world.getIndEnvironmentSoundID(10));
    EXPECT_EQ(world.addGroup(QString()), 151u);
    EXPECT_EQ(world.addLoopSound(*soundAlias("extra-loop.wav", 0.05)), 152u);
    EXPECT_EQ(world.addEnvironmentSound(*soundAlias("extra-env.wav", 0.05)), 153u);
    EXPECT_EQ(world.getIndLoopSoundID(World::MAX_LOOP_SOUNDS - 1), 152u);
}

using WorldMetadataTest = WorldModelTest;

TEST_F(WorldMetadataTest, StringSettersKeepNullApartFromEmpty) {
    EXPECT_TRUE(world.getName().isNull());

    world.setName(QString());  // null over null
    EXPECT_FALSE(world.getModified());

    world.setName(QStringLiteral("Forest"));
    EXPECT_EQ(world.getName(), QStringLiteral("Forest"));
    EXPECT_TRUE(world.getModified());

    world.resetToInitialState();
    world.setName(QString());
    world.setName(QStringLiteral(""));  // empty is a value, unlike null
    EXPECT_TRUE(world.getModified());
    EXPECT_FALSE(world.getName().isNull());
    EXPECT_TRUE(world.getName().isEmpty());
}

TEST_F(WorldMetadataTest, EqualTextKeepsModifiedAndNullClearsTheField) {
    loadUnmodifiedWorld(QStringLiteral("Forest"));
    ASSERT_EQ(world.getName(), QStringLiteral("Forest"));
    ASSERT_FALSE(world.getModified());

    QString sameText = QStringLiteral("Fore");
    sameText += QStringLiteral("st");  // the same characters in another string
    world.setName(sameText);
    world.setAuthor(QStringLiteral("Forest"));
    world.setDescription(QStringLiteral("Forest"));
    EXPECT_FALSE(world.getModified());

    world.setName(QStringLiteral("forest"));  // case matters
    EXPECT_EQ(world.getName(), QStringLiteral("forest"));
    EXPECT_TRUE(world.getModified());

    loadUnmodifiedWorld(QStringLiteral("Forest"));
    world.setAuthor(QString());
    EXPECT_TRUE(world.getAuthor().isNull());
    EXPECT_TRUE(world.getModified());
    EXPECT_EQ(world.getName(), QStringLiteral("Forest"));

    loadUnmodifiedWorld(QStringLiteral("Forest"));
    world.setDescription(QString());
    EXPECT_TRUE(world.getDescription().isNull());
    EXPECT_TRUE(world.getModified());
}

TEST_F(WorldMetadataTest, ResetEmptiesThePlayingWorldButKeepsVolumeAndIdentifiers) {
    loadUnmodifiedWorld(QStringLiteral("Forest"));
    const SoundID loopID = world.addLoopSound(*soundAlias("loop.wav"));
    const SoundID envID = world.addEnvironmentSound(*soundAlias("env.wav"));
    const GroupID groupID = world.addGroup(QStringLiteral("Birds"));
    world.setLoopSoundsCrossFadeDuration(9);
    world.setVolume(0.25);  // the master volume is no part of the document
    world.start();
    play(0.2);
    ASSERT_TRUE(world.isPlaying());

    world.resetToInitialState();

    EXPECT_FALSE(world.isPlaying());
    EXPECT_EQ(eventLoop.timerCount(), 0);
    EXPECT_EQ(world.getNumMovies(), 0);
    EXPECT_EQ(world.getPackageAlias(), nullptr);
    EXPECT_TRUE(world.getName().isNull());
    EXPECT_TRUE(world.getAuthor().isNull());
    EXPECT_TRUE(world.getDescription().isNull());
    EXPECT_EQ(world.getLoopSoundVolume(loopID), -1.0);
    EXPECT_EQ(world.getEnvironmentSoundIndex(envID), -1);
    EXPECT_EQ(world.getGroupIndex(groupID), -1);
    EXPECT_EQ(world.getLoopSoundsCrossFadeDuration(), World::DEFAULT_LOOP_SOUNDS_CROSS_FADE_DURATION);
    EXPECT_FALSE(world.getModified());
    EXPECT_EQ(world.getVolume(), 0.25);
    EXPECT_EQ(world.addGroup(QString()), groupID + 1);
}

TEST_F(WorldMetadataTest, ValueSettersMarkOnlyRealChanges) {
    // A loaded world holds records and is not modified; setting their stored values keeps it so.
    loadPackage(QStringLiteral(
                    "<key>Environment Sound Groups</key><array><dict><key>Group Name</key><string>Birds</string></dict></array>"
                    "<key>Loop Sounds</key><array><dict><key>File Name</key><string>loop.wav</string></dict></array>"
                    "<key>Environment Sounds</key><array><dict><key>File Name</key><string>env.wav</string>"
                    "<key>Group Index</key><integer>0</integer></dict></array>"),
                {QStringLiteral("loop.wav")}, {QStringLiteral("env.wav")});
    const SoundID loop = world.getIndLoopSoundID(0);
    const SoundID env = world.getIndEnvironmentSoundID(0);
    const GroupID group = world.getIndGroupID(0);
    ASSERT_NE(loop, 0u);
    ASSERT_NE(env, 0u);
    ASSERT_NE(group, 0u);
    ASSERT_EQ(world.getEnvironmentSoundGroupID(env), group);

    world.setLoopSoundVolume(loop, 1.0);
    world.setEnvironmentSoundMinVolume(env, 1.0);
    world.setEnvironmentSoundMaxVolume(env, 1.0);
    world.setEnvironmentSoundMinInterval(env, 20);
    world.setEnvironmentSoundMaxInterval(env, 40);
    world.setGroupMinInterval(group, 20);
    world.setGroupMaxInterval(group, 40);
    world.setGroupName(group, QStringLiteral("Birds"));
    world.setEnvironmentSoundGroupID(env, group);
    EXPECT_FALSE(world.getModified());

    world.setEnvironmentSoundMinVolume(env, 0.25);
    EXPECT_TRUE(world.getModified());
    EXPECT_EQ(world.getEnvironmentSoundMinVolume(env), 0.25);
}

using WorldGroupsTest = WorldModelTest;

TEST_F(WorldGroupsTest, DefaultNamesKeepCountingAfterARemovalAndRestartAfterReset) {
    const GroupID first = world.addGroup(QString());
    const GroupID second = world.addGroup(QString());
    const GroupID third = world.addGroup(QString());
    world.removeGroup(second);
    const GroupID fourth = world.addGroup(QString());

    EXPECT_EQ(world.getGroupName(first), defaultGroupName(1));
    EXPECT_EQ(world.getGroupName(third), defaultGroupName(3));
    EXPECT_EQ(world.getGroupName(fourth), defaultGroupName(4));
    EXPECT_NE(defaultGroupName(3), defaultGroupName(4)) << "the default name must carry its number";
    EXPECT_EQ(world.getIndGroupID(0), first);
    EXPECT_EQ(world.getIndGroupID(1), third);
    EXPECT_EQ(world.getIndGroupID(2), fourth);

    const GroupID named = world.addGroup(QStringLiteral("Birds"));
    EXPECT_EQ(world.getGroupName(named), QStringLiteral("Birds"));
    EXPECT_EQ(world.getGroupMinInterval(named), 20);
    EXPECT_EQ(world.getGroupMaxInterval(named), 40);

    world.resetToInitialState();
    EXPECT_EQ(world.getGroupName(world.addGroup(QString())), defaultGroupName(1));
}

TEST_F(WorldGroupsTest, RemovingTheFirstOfThreeKeepsTheOthersWholeAndDropsItsMembers) {
    const GroupID a = world.addGroup(QStringLiteral("A"));
    const GroupID b = world.addGroup(QStringLiteral("B"));
    const GroupID c = world.addGroup(QStringLiteral("C"));
    world.setGroupMinInterval(b, 3);
    world.setGroupMaxInterval(b, 7);
    world.setGroupMinInterval(c, 11);
    world.setGroupMaxInterval(c, 13);
    const SoundID inA = world.addEnvironmentSound(*soundAlias("a.wav"));
    const SoundID inB = world.addEnvironmentSound(*soundAlias("b.wav"));
    const SoundID loose = world.addEnvironmentSound(*soundAlias("loose.wav"));
    const SoundID inC = world.addEnvironmentSound(*soundAlias("c.wav"));
    world.setEnvironmentSoundGroupID(inA, a);
    world.setEnvironmentSoundGroupID(inB, b);
    world.setEnvironmentSoundGroupID(inC, c);
    const int moviesBefore = world.getNumMovies();

    world.removeGroup(a);

    ASSERT_EQ(world.getNumGroups(), 2);
    EXPECT_EQ(world.getIndGroupID(0), b);
    EXPECT_EQ(world.getIndGroupID(1), c);
    EXPECT_EQ(world.getGroupName(b), QStringLiteral("B"));
    EXPECT_EQ(world.getGroupMinInterval(b), 3);
    EXPECT_EQ(world.getGroupMaxInterval(b), 7);
    EXPECT_EQ(world.getGroupName(c), QStringLiteral("C"));
    EXPECT_EQ(world.getGroupMinInterval(c), 11);
    EXPECT_EQ(world.getGroupMaxInterval(c), 13);
    EXPECT_EQ(world.getGroupIndex(a), -1);

    ASSERT_EQ(world.getNumEnvironmentSounds(), 3);
    EXPECT_EQ(world.getEnvironmentSoundIndex(inA), -1);
    EXPECT_EQ(world.getIndEnvironmentSoundID(0), inB);
    EXPECT_EQ(world.getIndEnvironmentSoundID(1), loose);
    EXPECT_EQ(world.getIndEnvironmentSoundID(2), inC);
    EXPECT_EQ(world.getEnvironmentSoundGroupID(inC), c);
    EXPECT_EQ(world.getEnvironmentSoundMinInterval(inC), 11);
    EXPECT_EQ(world.getEnvironmentSoundFilename(inC), QStringLiteral("c.wav"));
    // The model alone changes: the removed member's instance stays in the pool.
    EXPECT_EQ(world.getNumMovies(), moviesBefore);
}

TEST_F(WorldGroupsTest, JoiningAGroupTakesItsIntervalsAndLeavingKeepsThem) {
    const GroupID group = world.addGroup(QString());
    world.setGroupMinInterval(group, 5);
    world.setGroupMaxInterval(group, 9);
    const SoundID sound = world.addEnvironmentSound(*soundAlias("s.wav"));
    world.setEnvironmentSoundMinInterval(sound, 1);
    world.setEnvironmentSoundMaxInterval(sound, 2);

    world.setEnvironmentSoundGroupID(sound, group);
    EXPECT_EQ(world.getEnvironmentSoundGroupID(sound), group);
    EXPECT_EQ(world.getEnvironmentSoundMinInterval(sound), 5);
    EXPECT_EQ(world.getEnvironmentSoundMaxInterval(sound), 9);

    world.setGroupMinInterval(group, 6);
    world.setGroupMaxInterval(group, 8);
    EXPECT_EQ(world.getEnvironmentSoundMinInterval(sound), 6);
    EXPECT_EQ(world.getEnvironmentSoundMaxInterval(sound), 8);

    world.setEnvironmentSoundGroupID(sound, 0);
    EXPECT_EQ(world.getEnvironmentSoundGroupID(sound), 0u);
    EXPECT_EQ(world.getEnvironmentSoundMinInterval(sound), 6);
    EXPECT_EQ(world.getEnvironmentSoundMaxInterval(sound), 8);

    // A group that does not exist is refused; a sound identifier is no group.
    world.setEnvironmentSoundGroupID(sound, sound);
    EXPECT_EQ(world.getEnvironmentSoundGroupID(sound), 0u);
}

TEST_F(WorldGroupsTest, GroupNamesFollowTheStringRule) {
    loadPackage(QStringLiteral(
        "<key>Environment Sound Groups</key><array><dict><key>Group Name</key><string>Birds</string></dict></array>"));
    const GroupID loaded = world.getIndGroupID(0);
    ASSERT_EQ(world.getGroupName(loaded), QStringLiteral("Birds"));

    world.setGroupName(loaded, QStringLiteral("Bir") + QStringLiteral("ds"));
    EXPECT_FALSE(world.getModified());
    world.setGroupName(loaded, QString());
    EXPECT_TRUE(world.getGroupName(loaded).isNull());
    EXPECT_TRUE(world.getModified());
    world.setGroupName(loaded, QStringLiteral(""));
    EXPECT_FALSE(world.getGroupName(loaded).isNull());
}

TEST_F(WorldGroupsTest, ClearingListsMarksOnlyWhenSomethingWasThere) {
    loadUnmodifiedWorld(QStringLiteral("W"));
    world.clearGroupList();
    world.clearLoopSoundList();
    world.clearEnvironmentSoundList();
    EXPECT_FALSE(world.getModified());

    const GroupID group = world.addGroup(QString());
    const SoundID member = world.addEnvironmentSound(*soundAlias("m.wav"));
    const SoundID loose = world.addEnvironmentSound(*soundAlias("l.wav"));
    world.setEnvironmentSoundGroupID(member, group);
    world.clearGroupList();
    EXPECT_EQ(world.getNumGroups(), 0);
    EXPECT_EQ(world.getNumEnvironmentSounds(), 1);
    EXPECT_EQ(world.getIndEnvironmentSoundID(0), loose);

    // Removing by group 0 removes every ungrouped sound.
    world.removeEnvironmentSoundsWithGroupID(0);
    EXPECT_EQ(world.getNumEnvironmentSounds(), 0);
}

using WorldSoundsTest = WorldModelTest;

TEST_F(WorldSoundsTest, TheSameFileIsRefusedTwiceEvenThroughAnotherPath) {
    const QString path = writeSound("rain.wav");
    const QString linked = dir.filePath("rain-link.wav");
    ASSERT_EQ(::link(QFile::encodeName(path).constData(), QFile::encodeName(linked).constData()), 0);
    const QString twin = writeSound("rain-copy.wav");  // same content, another file

    const SoundID loop = world.addLoopSound(*aliasOf(path));
    ASSERT_NE(loop, 0u);
    const int movies = world.getNumMovies();
    EXPECT_EQ(world.addLoopSound(*aliasOf(path)), 0u);
    EXPECT_EQ(world.addLoopSound(*aliasOf(linked)), 0u);
    EXPECT_EQ(world.getNumLoopSounds(), 1);
    EXPECT_EQ(world.getNumMovies(), movies);
    EXPECT_NE(world.addLoopSound(*aliasOf(twin)), 0u);

    // Each table is checked on its own: a loop sound's file may also be an environment sound.
    const SoundID env = world.addEnvironmentSound(*aliasOf(path));
    ASSERT_NE(env, 0u);
    EXPECT_EQ(world.addEnvironmentSound(*aliasOf(linked)), 0u);
    EXPECT_EQ(world.getNumEnvironmentSounds(), 1);
    EXPECT_EQ(world.getEnvironmentSoundIDWithAlias(*aliasOf(linked)), env);
    EXPECT_EQ(world.getEnvironmentSoundIDWithAlias(*aliasOf(twin)), 0u);
}

TEST_F(WorldSoundsTest, AnUndecodableFileIsRefusedButUsesUpItsIdentifier) {
    const QString garbage = dir.writeFile("noise.wav", QByteArray("this is not a sound file at all"));
    ASSERT_FALSE(world.getModified());

    EXPECT_EQ(world.addLoopSound(*aliasOf(garbage)), 0u);
    EXPECT_EQ(world.getNumLoopSounds(), 0);
    EXPECT_EQ(world.getNumMovies(), 0);
    EXPECT_TRUE(world.getModified());

    EXPECT_EQ(world.addEnvironmentSound(*aliasOf(garbage)), 0u);
    EXPECT_EQ(world.getNumEnvironmentSounds(), 0);
    EXPECT_EQ(world.addGroup(QString()), 3u);
}

TEST_F(WorldSoundsTest, AddedSoundsTakeTheirDefaultsAndOneLoadedInstance) {
    const SoundID loop = world.addLoopSound(*soundAlias("loop.wav", 0.5));
    const SoundID env = world.addEnvironmentSound(*soundAlias("env.wav", 0.25));
    EXPECT_TRUE(world.getModified());
    EXPECT_EQ(world.getLoopSoundVolume(loop), 1.0);
    EXPECT_EQ(world.getEnvironmentSoundMinInterval(env), 20);
    EXPECT_EQ(world.getEnvironmentSoundMaxInterval(env), 40);
    EXPECT_EQ(world.getEnvironmentSoundMinVolume(env), 1.0);
    EXPECT_EQ(world.getEnvironmentSoundMaxVolume(env), 1.0);
    EXPECT_EQ(world.getEnvironmentSoundGroupID(env), 0u);

    ASSERT_EQ(world.getNumMovies(), 2);
    EXPECT_EQ(world.getMovieEntry(0).soundID, loop);
    EXPECT_TRUE(world.getMovieEntry(0).isLoopSound);
    EXPECT_NEAR(world.getMovieEntry(0).duration, 0.5, 1e-3);
    EXPECT_EQ(world.getMovieEntry(1).soundID, env);
    EXPECT_FALSE(world.getMovieEntry(1).isLoopSound);
    EXPECT_FALSE(world.getMovieEntry(0).startTime > 0.0);
    EXPECT_FALSE(world.getMovieEntry(1).startTime > 0.0);

    // The caller keeps its own alias: the world stored a copy.
    AliasHandle mine = soundAlias("third.wav");
    const SoundID third = world.addLoopSound(*mine);
    ASSERT_NE(world.getLoopSound(third), nullptr);
    EXPECT_NE(world.getLoopSound(third), mine.get());
}

TEST_F(WorldSoundsTest, RemovingTheMiddleLoopSoundKeepsTheOthersVolumes) {
    const SoundID a = world.addLoopSound(*soundAlias("a.wav"));
    const SoundID b = world.addLoopSound(*soundAlias("b.wav"));
    const SoundID c = world.addLoopSound(*soundAlias("c.wav"));
    world.setLoopSoundVolume(a, 0.2);
    world.setLoopSoundVolume(b, 0.5);
    world.setLoopSoundVolume(c, 0.8);

    world.removeLoopSound(b);

    ASSERT_EQ(world.getNumLoopSounds(), 2);
    EXPECT_EQ(world.getIndLoopSoundID(0), a);
    EXPECT_EQ(world.getIndLoopSoundID(1), c);
    EXPECT_EQ(world.getLoopSoundVolume(a), 0.2);
    EXPECT_EQ(world.getLoopSoundVolume(c), 0.8);
    EXPECT_EQ(world.getLoopSoundFilename(c), QStringLiteral("c.wav"));
    EXPECT_TRUE(entriesOf(b).empty());
    EXPECT_EQ(entriesOf(c).size(), 1u);
}

TEST_F(WorldSoundsTest, LoopVolumeReachesEveryInstanceOfTheSound) {
    const SoundID a = world.addLoopSound(*soundAlias("a.wav"));
    const SoundID b = world.addLoopSound(*soundAlias("b.wav"));
    world.setLoopSoundVolume(a, 0.4);
    for (const int i : entriesOf(a)) EXPECT_EQ(world.getMovieEntry(i).volume, 0.4);
    for (const int i : entriesOf(b)) EXPECT_EQ(world.getMovieEntry(i).volume, 1.0);
}

TEST_F(WorldSoundsTest, FileNamesAreCachedOnceTheFileIsFound) {
    const QString path = writeSound("wind.wav");
    const SoundID id = world.addEnvironmentSound(*aliasOf(path));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    file.close();

    // Missing at the first request: no name, and nothing is cached, so the name is asked for again
    // once the file is back.
    ASSERT_TRUE(QFile::remove(path));
    EXPECT_TRUE(world.getEnvironmentSoundFilename(id).isNull());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
    file.close();
    EXPECT_EQ(world.getEnvironmentSoundFilename(id), QStringLiteral("wind.wav"));

    // Once read, the name is the world's and survives a rename of the file.
    ASSERT_TRUE(QFile::rename(path, dir.filePath("gust.wav")));
    EXPECT_EQ(world.getEnvironmentSoundFilename(id), QStringLiteral("wind.wav"));
}

}  // namespace
}  // namespace sylvora::test
