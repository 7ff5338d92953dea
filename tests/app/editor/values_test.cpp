// Sliders and number fields: every change reaches the world at once, and a minimum never passes
// its maximum, whether the person drags or types (with the half-second catch-up of the partner).

#include <QLineEdit>
#include <QSlider>
#include <QTest>

#include "app/shell/globals.h"
#include "editorfixture.h"

namespace sylvora::test {
namespace {

class EditorValues : public EditorTest {
protected:
    EditorValues() {
        target = world().addEnvironmentSound(*WorldFixture::aliasOf(sound("owl.wav")));
        world().setEnvironmentSoundMaxInterval(target, 30);
        world().setEnvironmentSoundMinInterval(target, 10);
        world().setEnvironmentSoundMaxVolume(target, 0.5);
        world().setEnvironmentSoundMinVolume(target, 0.2);
        editor().startEditing();
        editor().showTab(app::WorldEditorWindow::ENVIRONMENT_SOUNDS_TAB);
        select(environmentList(), target);
    }
    // Drags the slider's thumb through `values`, as tracking reports them.
    static void dragThrough(QSlider* slider, std::initializer_list<int> values) {
        slider->setSliderDown(true);
        for (int value : values) slider->setSliderPosition(value);
        slider->setSliderDown(false);
    }
    void type(QLineEdit* field, const char* text) {
        field->setFocus();
        field->selectAll();
        QTest::keyClicks(field, text);
        QCoreApplication::processEvents();  // the text-changed notice arrives through the loop
    }

    SoundID target = 0;
};

TEST_F(EditorValues, DraggingKeepsVolumeAndIntervalPairsInOrder) {
    EXPECT_EQ(slider("WET2", 10)->value(), 20);
    dragThrough(slider("WET2", 10), {40, 60, 80});
    EXPECT_DOUBLE_EQ(world().getEnvironmentSoundMinVolume(target), 0.8);
    EXPECT_DOUBLE_EQ(world().getEnvironmentSoundMaxVolume(target), 0.8);  // pushed up with it
    EXPECT_EQ(slider("WET2", 15)->value(), 80);
    dragThrough(slider("WET2", 10), {30});
    EXPECT_DOUBLE_EQ(world().getEnvironmentSoundMaxVolume(target), 0.8);  // stays where pushed
    dragThrough(slider("WET2", 15), {10});
    EXPECT_DOUBLE_EQ(world().getEnvironmentSoundMinVolume(target), 0.1);

    dragThrough(slider("WET2", 18), {20, 45});
    EXPECT_EQ(world().getEnvironmentSoundMinInterval(target), 45);
    EXPECT_EQ(world().getEnvironmentSoundMaxInterval(target), 45);
    EXPECT_EQ(field("WET2", 23)->text(), "45");
    dragThrough(slider("WET2", 22), {5});
    EXPECT_EQ(world().getEnvironmentSoundMinInterval(target), 5);
    EXPECT_EQ(field("WET2", 19)->text(), "5");

    dragThrough(slider("WET1", 14), {12});
    EXPECT_EQ(world().getLoopSoundsCrossFadeDuration(), 12);
    EXPECT_EQ(field("WET1", 15)->text(), "12");
    EXPECT_EQ(beeps, 0);
}

TEST_F(EditorValues, TypedMinimumPushesTheWorldAtOnceAndThePartnerAfterAPause) {
    type(field("WET2", 19), "45");
    EXPECT_EQ(world().getEnvironmentSoundMaxInterval(target), 45);
    EXPECT_EQ(world().getEnvironmentSoundMinInterval(target), 45);
    EXPECT_EQ(slider("WET2", 18)->value(), 45);
    EXPECT_EQ(field("WET2", 23)->text(), "30");  // left alone while typing
    QTest::qWait(250);
    QTest::keyClick(field("WET2", 19), Qt::Key_0);  // 450 within the half second re-arms
    QCoreApplication::processEvents();
    EXPECT_EQ(world().getEnvironmentSoundMaxInterval(target), 450);
    QTest::qWait(300);
    EXPECT_EQ(field("WET2", 23)->text(), "30");
    ASSERT_TRUE(processEventsUntil([this] { return field("WET2", 23)->text() == "450"; }, 1000));
    // Beyond the slider's end: the slider shows its end, the field and the world keep the number.
    EXPECT_EQ(slider("WET2", 22)->value(), slider("WET2", 22)->maximum());
    EXPECT_EQ(world().getEnvironmentSoundMinInterval(target), 450);

    // The maximum typed below the minimum pulls the minimum down the same way.
    type(field("WET2", 23), " 8 ");
    EXPECT_EQ(world().getEnvironmentSoundMinInterval(target), 8);
    EXPECT_EQ(world().getEnvironmentSoundMaxInterval(target), 8);
    ASSERT_TRUE(processEventsUntil([this] { return field("WET2", 19)->text() == "8"; }, 1000));
    // Typed on past the minimum within the pause (3, then 30), the maximum gives the minimum back.
    type(field("WET2", 23), "3");
    EXPECT_EQ(world().getEnvironmentSoundMinInterval(target), 3);
    QTest::keyClick(field("WET2", 23), Qt::Key_0);
    QCoreApplication::processEvents();
    EXPECT_EQ(world().getEnvironmentSoundMinInterval(target), 8);
    EXPECT_EQ(world().getEnvironmentSoundMaxInterval(target), 30);
    EXPECT_EQ(beeps, 0);
}

TEST_F(EditorValues, TextThatIsNotAWholeNumberBeepsAndChangesNothing) {
    for (const char* text : {"-5", "abc", "", "x1"}) {
        SCOPED_TRACE(text);
        const int before = beeps;
        QLineEdit* minimum = field("WET2", 19);
        minimum->setFocus();
        minimum->selectAll();
        if (*text == '\0') QTest::keyClick(minimum, Qt::Key_Backspace);
        else QTest::keyClicks(minimum, text);
        QCoreApplication::processEvents();
        EXPECT_GT(beeps, before);
        EXPECT_EQ(world().getEnvironmentSoundMinInterval(target), 10);
        EXPECT_EQ(minimum->text(), QString::fromLatin1(text));  // kept as typed
    }
}

TEST_F(EditorValues, ShowingASelectionWritesNothingAndOnlyThePersonsMoveDoes) {
    // Volumes whose percent truncates (0.29 shows as 28%) in a world just saved, so unmodified.
    const SoundID hum = world().addLoopSound(*WorldFixture::aliasOf(sound("hum.wav")));
    world().setLoopSoundVolume(hum, 0.29);
    world().setEnvironmentSoundMaxVolume(target, 0.57);
    world().setEnvironmentSoundMinVolume(target, 0.29);
    ASSERT_EQ(world().doSaveAs(WorldFixture::ref(dir.path()), QStringLiteral("Exact.sylvora")), noErr);
    ASSERT_FALSE(world().getModified());
    const SoundID loop = world().getIndLoopSoundID(0);
    const SoundID owl = world().getIndEnvironmentSoundID(0);
    editor().startEditing();
    select(environmentList(), 0);
    select(environmentList(), owl);
    EXPECT_EQ(slider("WET1", 8)->value(), 28);
    EXPECT_EQ(slider("WET2", 10)->value(), 28);
    EXPECT_EQ(slider("WET2", 15)->value(), 56);
    EXPECT_FALSE(world().getModified());
    EXPECT_EQ(world().getLoopSoundVolume(loop), 0.29);
    EXPECT_EQ(world().getEnvironmentSoundMinVolume(owl), 0.29);
    EXPECT_EQ(world().getEnvironmentSoundMaxVolume(owl), 0.57);

    editor().showTab(app::WorldEditorWindow::LOOP_SOUNDS_TAB);
    dragThrough(slider("WET1", 8), {35, 40});
    EXPECT_DOUBLE_EQ(world().getLoopSoundVolume(loop), 0.4);
    EXPECT_TRUE(world().getModified());
}

TEST_F(EditorValues, TypedCrossfadeAndNumbersBeyondTheSlidersSurviveReselectionAndARefill) {
    const SoundID wren = world().addEnvironmentSound(*WorldFixture::aliasOf(sound("wren.wav")));
    editor().showTab(app::WorldEditorWindow::LOOP_SOUNDS_TAB);
    type(field("WET1", 15), "12");
    EXPECT_EQ(world().getLoopSoundsCrossFadeDuration(), 12);
    EXPECT_EQ(slider("WET1", 14)->value(), 12);
    type(field("WET1", 15), "900");
    EXPECT_EQ(world().getLoopSoundsCrossFadeDuration(), 900);
    EXPECT_EQ(slider("WET1", 14)->value(), slider("WET1", 14)->maximum());
    editor().showTab(app::WorldEditorWindow::ENVIRONMENT_SOUNDS_TAB);
    select(environmentList(), target);
    type(field("WET2", 23), "5000");
    for (bool refill : {false, true}) {
        if (refill) editor().startEditing();
        select(environmentList(), wren);
        select(environmentList(), target);
        EXPECT_EQ(field("WET2", 23)->text(), "5000") << refill;
        EXPECT_EQ(field("WET2", 19)->text(), "10");
        EXPECT_EQ(field("WET1", 15)->text(), "900");
        EXPECT_EQ(world().getEnvironmentSoundMaxInterval(target), 5000);
        EXPECT_EQ(world().getEnvironmentSoundMinInterval(target), 10);
        EXPECT_EQ(world().getLoopSoundsCrossFadeDuration(), 900);
    }
    // The partner's slider compares with the number, not with the slider's end.
    dragThrough(slider("WET2", 18), {200});
    EXPECT_EQ(world().getEnvironmentSoundMaxInterval(target), 5000);
    EXPECT_EQ(beeps, 0);
}

TEST_F(EditorValues, InfoFieldsFollowTheTyping) {
    editor().showTab(app::WorldEditorWindow::INFO_TAB);
    type(field("WET4", 3), "Night Marsh");
    type(field("WET4", 5), "Ann");
    EXPECT_EQ(world().getName(), "Night Marsh");
    EXPECT_EQ(world().getAuthor(), "Ann");
    EXPECT_TRUE(world().getModified());
}

}  // namespace
}  // namespace sylvora::test
