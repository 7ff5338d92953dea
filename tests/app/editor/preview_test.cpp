// Hearing one sound alone by double-clicking it: at the world's volume for a loop sound, within
// its own range for an environment sound, ended by a second double-click, a tab switch, its own
// end, or the editor hiding.

#include <QFile>
#include <QTest>

#include "audio/engine/soundinstance.h"
#include "editorfixture.h"

namespace sylvora::test {
namespace {

class EditorPreview : public EditorTest {
protected:
    void doubleClick(app::EditorSoundList* list, ItemID item) {
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, rowPosition(list, item));
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, rowPosition(list, item));
    }
};

TEST_F(EditorPreview, DoubleClickTogglesAndReplacesAtTheRightVolume) {
    world().setVolume(0.5);
    const SoundID quiet = world().addLoopSound(*WorldFixture::aliasOf(sound("quiet.wav", 5.0)));
    const SoundID other = world().addLoopSound(*WorldFixture::aliasOf(sound("other.wav", 5.0)));
    world().setLoopSoundVolume(quiet, 0.2);
    const SoundID bird = world().addEnvironmentSound(*WorldFixture::aliasOf(sound("bird.wav", 5.0)));
    world().setEnvironmentSoundMaxVolume(bird, 0.25);
    world().setEnvironmentSoundMinVolume(bird, 0.25);
    editor().startEditing();

    doubleClick(loopList(), quiet);
    EXPECT_EQ(editor().getPreviewSoundID(), quiet);
    ASSERT_NE(editor().getPreviewMovie(), nullptr);
    EXPECT_EQ(editor().getPreviewMovie()->volume(), 128);  // the world's 0.5, not the sound's 0.2
    doubleClick(loopList(), other);
    EXPECT_EQ(editor().getPreviewSoundID(), other);
    doubleClick(loopList(), other);
    EXPECT_EQ(editor().getPreviewSoundID(), 0u);
    EXPECT_EQ(editor().getPreviewMovie(), nullptr);

    editor().showTab(app::WorldEditorWindow::ENVIRONMENT_SOUNDS_TAB);
    doubleClick(environmentList(), bird);
    ASSERT_NE(editor().getPreviewMovie(), nullptr);
    EXPECT_EQ(editor().getPreviewMovie()->volume(), 64);  // its own range, without the world's volume
    editor().showTab(app::WorldEditorWindow::PICTURE_TAB);
    EXPECT_EQ(editor().getPreviewSoundID(), 0u);

    editor().showTab(app::WorldEditorWindow::LOOP_SOUNDS_TAB);
    doubleClick(loopList(), quiet);
    editor().hide();
    EXPECT_EQ(editor().getPreviewMovie(), nullptr);
    EXPECT_TRUE(world().isPlaying());
}

TEST_F(EditorPreview, APreviewEndsWithItsSoundAndAMissingFileNeverStarts) {
    const SoundID shortSound = world().addLoopSound(*WorldFixture::aliasOf(sound("short.wav", 0.2)));
    EXPECT_EQ(editor().playSound(true, shortSound), noErr);
    EXPECT_TRUE(processEventsUntil([this] { return editor().getPreviewSoundID() == 0; }, 3000));

    const QString path = sound("gone.wav");
    const SoundID gone = world().addLoopSound(*WorldFixture::aliasOf(path));
    QFile::remove(path);
    EXPECT_NE(editor().playSound(true, gone), noErr);
    EXPECT_EQ(editor().getPreviewSoundID(), 0u);
    EXPECT_EQ(editor().playSound(false, 999), fnfErr);
}

}  // namespace
}  // namespace sylvora::test
