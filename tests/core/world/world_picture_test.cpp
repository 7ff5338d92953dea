// The world's picture: which aliases it keeps, the file it holds open, and what it forgets.

#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>

#include "core/strings/stringresources.h"
#include "support/worldfixture.h"

namespace sylvora::test {
namespace {

// How many of this process's open descriptors lead to `path`.
int openDescriptorsOn(const QString& path) {
    const QString target = QFileInfo(path).canonicalFilePath();
    int count = 0;
    const QDir fds(QStringLiteral("/proc/self/fd"));
    for (const QString& entry : fds.entryList(QDir::Files | QDir::System | QDir::NoDotAndDotDot)) {
        if (QFileInfo(fds.filePath(entry)).symLinkTarget() == target) {
            ++count;
        }
    }
    return count;
}

using WorldPictureTest = WorldTest;

TEST_F(WorldPictureTest, AChosenPictureIsDecodedOnceAndItsFileHeldOpen) {
    const QString path = writePicture("meadow.png", 64, 32);
    const AliasHandle alias = aliasOf(path);
    world.setPictureFileAlias(alias.get());

    ASSERT_NE(world.getPictureFileAlias(), nullptr);
    EXPECT_NE(world.getPictureFileAlias(), alias.get());
    EXPECT_TRUE(world.getModified());
    EXPECT_EQ(openDescriptorsOn(path), 1);

    const QImage picture = world.getPicture();
    ASSERT_FALSE(picture.isNull());
    EXPECT_EQ(picture.size(), QSize(64, 32));
    EXPECT_EQ(world.copyPictureDisplayFilename(), QStringLiteral("meadow.png"));

    // Decoded once: the file's content no longer matters.
    writePicture("meadow.png", 8, 8);
    EXPECT_EQ(world.getPicture().size(), QSize(64, 32));
}

TEST_F(WorldPictureTest, ReplacingOrClearingThePictureClosesTheOldFile) {
    const QString first = writePicture("first.png", 10, 10);
    const QString second = writePicture("second.png", 20, 20);
    world.setPictureFileAlias(aliasOf(first).get());
    ASSERT_EQ(world.getPicture().width(), 10);

    world.setPictureFileAlias(aliasOf(second).get());
    EXPECT_EQ(openDescriptorsOn(first), 0);
    EXPECT_EQ(openDescriptorsOn(second), 1);
    EXPECT_EQ(world.getPicture().width(), 20);

    // Handing the world its own alias is safe: it copies before it lets go of the old one.
    world.setPictureFileAlias(world.getPictureFileAlias());
    EXPECT_EQ(openDescriptorsOn(second), 1);
    EXPECT_EQ(world.getPicture().width(), 20);

    world.resetToInitialState();
    EXPECT_EQ(openDescriptorsOn(second), 0);
    EXPECT_EQ(world.getPictureFileAlias(), nullptr);
    EXPECT_TRUE(world.getPicture().isNull());
    EXPECT_FALSE(world.getModified());
}

TEST_F(WorldPictureTest, NoPictureStillCountsAsAChange) {
    ASSERT_FALSE(world.getModified());
    world.setPictureFileAlias(nullptr);
    EXPECT_TRUE(world.getModified());
    EXPECT_EQ(world.getPictureFileAlias(), nullptr);
    EXPECT_TRUE(world.getPicture().isNull());
    EXPECT_EQ(world.copyPictureDisplayFilename(),
              copyLocalizedString(NO_PICTURE_FILE_SELECTED_KEY, MISC_STRINGS_FILE));
}

TEST_F(WorldPictureTest, AFileThatCannotBeFoundOrOpenedLeavesNoPicture) {
    const QString path = writePicture("gone.png", 4, 4);
    const AliasHandle alias = aliasOf(path);
    ASSERT_TRUE(QFile::remove(path));
    world.setPictureFileAlias(alias.get());
    EXPECT_EQ(world.getPictureFileAlias(), nullptr);
    EXPECT_TRUE(world.getModified());

    // A folder has no picture data to open.
    world.setPictureFileAlias(aliasOf(dir.makeDir("folder.png")).get());
    EXPECT_EQ(world.getPictureFileAlias(), nullptr);
}

TEST_F(WorldPictureTest, AnUndecodablePictureIsForgottenWithoutMarkingTheWorld) {
    const QString package = makePackage(QStringLiteral("World.sylvora"),
                                        xmlPlist(QStringLiteral("<key>Picture File Name</key><string>broken.png</string>")));
    const QString broken = dir.writeFile(QStringLiteral("World.sylvora/broken.png"), QByteArray("not an image"));
    ASSERT_EQ(load(package), noErr);
    ASSERT_FALSE(world.getModified());
    ASSERT_NE(world.getPictureFileAlias(), nullptr) << "the file exists and opens, so it is kept at first";
    EXPECT_EQ(world.copyPictureDisplayFilename(), QStringLiteral("broken.png"));

    EXPECT_TRUE(world.getPicture().isNull());
    EXPECT_EQ(world.getPictureFileAlias(), nullptr);
    EXPECT_FALSE(world.getModified());
    EXPECT_EQ(world.copyPictureDisplayFilename(),
              copyLocalizedString(NO_PICTURE_FILE_SELECTED_KEY, MISC_STRINGS_FILE));

    // The file stays open until the next picture is chosen.
    EXPECT_EQ(openDescriptorsOn(broken), 1);
    world.setPictureFileAlias(nullptr);
    EXPECT_EQ(openDescriptorsOn(broken), 0);
}

}  // namespace
}  // namespace sylvora::test
