#include <gtest/gtest.h>

#include <QFile>

#include "core/world/worldrecovery.h"
#include "support/worldfixture.h"

namespace sylvora {
namespace {

using test::WorldTest;

class WorldRecoveryTest : public WorldTest {
protected:
    QString recoveryPath() const { return dir.filePath(QStringLiteral("state/sylvora/unsaved world.plist")); }

    QString pathOf(const Alias* alias) const {
        FSRef ref;
        return alias && FSResolveAlias(*alias, ref) == noErr ? ref.path : QString();
    }
};

// A saved world edited in every way the editor can, then ended from outside: the next run gets the
// edits back on top of the package, with sounds added from elsewhere still where they were.
TEST_F(WorldRecoveryTest, EveryEditComesBackOverItsPackageAndGoneSoundsAreCounted) {
    const QString package = makePackage(QStringLiteral("Brook.sylvora"),
                                        test::xmlPlist(QStringLiteral("<key>Name</key><string>Brook</string>"
                                                                      "<key>Loop Sounds</key><array><dict>"
                                                                      "<key>File Name</key><string>bed.wav</string>"
                                                                      "</dict></array>")),
                                        {QStringLiteral("bed.wav")});
    ASSERT_EQ(load(package), noErr);
    world.setName(QStringLiteral("Brook at Night"));
    world.setAuthor(QStringLiteral("Ana"));
    world.setLoopSoundsCrossFadeDuration(9);
    world.setLoopSoundVolume(world.getIndLoopSoundID(0), 0.25);
    const SoundID wind = addLoop(writeSound(QStringLiteral("elsewhere/wind.wav")));
    world.setLoopSoundVolume(wind, 0.5);
    const GroupID birds = world.addGroup(QStringLiteral("Birds"));
    world.setGroupMinInterval(birds, 4);
    world.setGroupMaxInterval(birds, 40);
    const SoundID owl = addEnvironment(writeSound(QStringLiteral("elsewhere/owl.wav")));
    world.setEnvironmentSoundGroupID(owl, birds);
    world.setEnvironmentSoundMinVolume(owl, 0.3);
    world.setEnvironmentSoundMaxInterval(owl, 77);
    addEnvironment(writeSound(QStringLiteral("elsewhere/frog.wav")));

    const WorldRecovery recovery(recoveryPath());
    ASSERT_EQ(recovery.write(world), noErr);
    EXPECT_EQ(recovery.worldName(), QStringLiteral("Brook at Night"));
    ASSERT_TRUE(QFile::remove(dir.filePath(QStringLiteral("elsewhere/frog.wav"))));

    World next(engine, eventLoop);
    int missing = -1;
    ASSERT_EQ(recovery.restore(next, &missing), noErr);
    EXPECT_EQ(missing, 1);
    EXPECT_TRUE(next.getModified());
    EXPECT_EQ(pathOf(next.getPackageAlias()), package) << "a save goes back to the world's own package";
    EXPECT_EQ(next.getName(), QStringLiteral("Brook at Night"));
    EXPECT_EQ(next.getAuthor(), QStringLiteral("Ana"));
    EXPECT_EQ(next.getLoopSoundsCrossFadeDuration(), 9);
    ASSERT_EQ(next.getNumLoopSounds(), 2);
    EXPECT_EQ(pathOf(next.getLoopSound(next.getIndLoopSoundID(0))), package + QStringLiteral("/Loop Sounds/bed.wav"));
    EXPECT_EQ(next.getLoopSoundVolume(next.getIndLoopSoundID(0)), 0.25);
    EXPECT_EQ(pathOf(next.getLoopSound(next.getIndLoopSoundID(1))), dir.filePath(QStringLiteral("elsewhere/wind.wav")));
    EXPECT_EQ(next.getLoopSoundVolume(next.getIndLoopSoundID(1)), 0.5);
    ASSERT_EQ(next.getNumGroups(), 1);
    const GroupID group = next.getIndGroupID(0);
    EXPECT_EQ(next.getGroupName(group), QStringLiteral("Birds"));
    EXPECT_EQ(next.getGroupMinInterval(group), 4);
    EXPECT_EQ(next.getGroupMaxInterval(group), 40);
    ASSERT_EQ(next.getNumEnvironmentSounds(), 1);
    const SoundID restoredOwl = next.getIndEnvironmentSoundID(0);
    EXPECT_EQ(next.getEnvironmentSoundGroupID(restoredOwl), group);
    EXPECT_EQ(next.getEnvironmentSoundMinVolume(restoredOwl), 0.3);
    EXPECT_EQ(next.getEnvironmentSoundMaxInterval(restoredOwl), 77);
}

// A world never saved comes back as a new world; a damaged or absent file restores nothing.
TEST_F(WorldRecoveryTest, AWorldNeverSavedComesBackNewAndADamagedFileChangesNothing) {
    addLoop(writeSound(QStringLiteral("rain.wav")));
    world.setName(QStringLiteral("Rain"));
    const WorldRecovery recovery(recoveryPath());
    ASSERT_EQ(recovery.write(world), noErr);

    World next(engine, eventLoop);
    ASSERT_EQ(recovery.restore(next), noErr);
    EXPECT_EQ(next.getPackageAlias(), nullptr);
    EXPECT_EQ(next.getName(), QStringLiteral("Rain"));
    EXPECT_EQ(next.getNumLoopSounds(), 1);
    EXPECT_TRUE(next.getModified());

    recovery.remove();
    EXPECT_FALSE(recovery.exists());
    EXPECT_NE(recovery.restore(next), noErr);
    QFile damaged(recoveryPath());
    ASSERT_TRUE(damaged.open(QIODevice::WriteOnly));
    damaged.write("<plist><dict><key>Name</key>");
    damaged.close();
    EXPECT_NE(recovery.restore(next), noErr);
    EXPECT_EQ(next.getName(), QStringLiteral("Rain")) << "a failed restore leaves the world alone";
}

}  // namespace
}  // namespace sylvora
