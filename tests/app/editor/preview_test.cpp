// Hearing one sound alone by double-clicking it: at the world's volume for a loop sound, within
// its own range for an environment sound, ended by a second double-click, a tab switch, its own
// end, or the editor hiding.

#include <QFile>
#include <QTabBar>
#include <utility>
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
    auto* tabs = editor().getWindow()->findChild<QTabBar*>();
    ASSERT_NE(tabs, nullptr);
    QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(tabs->currentIndex()).center());
    EXPECT_EQ(editor().getPreviewSoundID(), 0u) << "a click on the tab shown ends it too";
    doubleClick(environmentList(), bird);
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

TEST_F(EditorPreview, APreviewEndsWhenItsSoundIsRemovedOrTheWorldIsSaved) {
    const SoundID loop = world().addLoopSound(*WorldFixture::aliasOf(sound("loop.wav", 5.0)));
    const SoundID bird = world().addEnvironmentSound(*WorldFixture::aliasOf(sound("bird.wav", 5.0)));
    world().addEnvironmentSound(*WorldFixture::aliasOf(sound("owl.wav", 5.0)));  // left to play after the save
    editor().startEditing();
    for (auto [list, played] : {std::pair{loopList(), loop}, std::pair{environmentList(), bird}}) {
        const bool loops = list == loopList();
        editor().showTab(loops ? app::WorldEditorWindow::LOOP_SOUNDS_TAB : app::WorldEditorWindow::ENVIRONMENT_SOUNDS_TAB);
        doubleClick(list, played);
        ASSERT_EQ(editor().getPreviewSoundID(), played);
        select(list, played);
        if (loops) clickCommand("RMLS");
        else clickCommand("RMES");
        EXPECT_EQ(editor().getPreviewSoundID(), 0u);
        EXPECT_EQ(editor().getPreviewMovie(), nullptr);
    }
    ASSERT_EQ(world().doSaveAs(WorldFixture::ref(dir.path()), QStringLiteral("Saved.sylvora")), noErr);
    editor().startEditing();
    editor().showTab(app::WorldEditorWindow::ENVIRONMENT_SOUNDS_TAB);
    const SoundID saved = world().getIndEnvironmentSoundID(0);
    doubleClick(environmentList(), saved);
    ASSERT_EQ(editor().getPreviewSoundID(), saved);
    ASSERT_EQ(world().doSave(), noErr);  // over its own package: no file of it may stay open
    EXPECT_EQ(editor().getPreviewSoundID(), 0u);
    // Nor does a preview outlive the editor's window.
    editor().startEditing();
    doubleClick(environmentList(), world().getIndEnvironmentSoundID(0));
    ASSERT_NE(editor().getPreviewSoundID(), 0u);
    editor().hide();
    EXPECT_EQ(editor().getPreviewSoundID(), 0u);
}

}  // namespace
}  // namespace sylvora::test
