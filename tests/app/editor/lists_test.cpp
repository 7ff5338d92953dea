// The two lists: names in numeric, case-blind order; where the selection lands after a removal;
// renaming a group in place; groups opening and closing; the controls that follow a selection.

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QTabBar>
#include <QLineEdit>
#include <QSlider>
#include <QTest>

#include "app/shell/startup.h"
#include "audio/engine/engine.h"
#include "editorfixture.h"

namespace sylvora::test {
namespace {

class EditorLists : public EditorTest {};

TEST_F(EditorLists, LoopNamesSortNumericallyAndRemovalSelectsTheNeighbour) {
    // A sound whose file went before its name was read has no name and leads the list; 002 sorts
    // before 10 (leading zeros do not count); case does not count; equal names keep their age.
    const QString gone = sound("gone.wav");
    const SoundID nameless = world().addLoopSound(*WorldFixture::aliasOf(gone));
    ASSERT_TRUE(QFile::remove(gone));
    std::vector<SoundID> ids;
    for (const char* name : {"Rain 10.wav", "rain 002.wav", "Rain 1.wav", "Wind.wav", "Zephyr.wav"}) {
        ids.push_back(world().addLoopSound(*WorldFixture::aliasOf(sound(QString::fromLatin1(name)))));
    }
    editor().startEditing();
    app::EditorSoundList* list = loopList();
    EXPECT_EQ(shownNames(list), (QStringList{"", "Rain 1.wav", "rain 002.wav", "Rain 10.wav", "Wind.wav", "Zephyr.wav"}));
    EXPECT_TRUE(app::WorldEditorWindow::DBSortComparatorCallback(*list, ids[1], ids[0]));
    EXPECT_TRUE(enabled("WET1", 5));
    list->selectOnly(nameless);
    clickCommand("RMLS");

    // A middle run: the row after it moves up and is selected.
    list->selectionModel()->clearSelection();
    for (SoundID id : {ids[1], ids[0]}) list->selectionModel()->select(list->listModel()->indexOf(id), QItemSelectionModel::Select);
    clickCommand("RMLS");
    EXPECT_EQ(world().getNumLoopSounds(), 3);
    EXPECT_EQ(editor().getSelectedLoopingSoundID(), ids[3]);

    // The bottom rows: the nearest unselected row above them.
    list->selectionModel()->select(list->listModel()->indexOf(ids[4]), QItemSelectionModel::Select);
    clickCommand("RMLS");
    EXPECT_EQ(editor().getSelectedLoopingSoundID(), ids[2]);
    EXPECT_EQ(shownNames(list), (QStringList{"Rain 1.wav"}));

    // The only row: nothing selected, the remove button and the volume box go off, the slider shows 100.
    clickCommand("RMLS");
    EXPECT_EQ(world().getNumLoopSounds(), 0);
    EXPECT_EQ(editor().getSelectedLoopingSoundID(), 0u);
    EXPECT_FALSE(enabled("WET1", 5));
    EXPECT_FALSE(enabled("WET1", 6));
    EXPECT_EQ(slider("WET1", 8)->value(), 100);
    clickCommand("RMLS");  // nothing selected: nothing changes
    EXPECT_EQ(beeps, 0);
}

TEST_F(EditorLists, DeleteAndBackspaceRemoveTheSelectionAndTabGoesFromEachMinimumToItsMaximum) {
    const SoundID a = world().addLoopSound(*WorldFixture::aliasOf(sound("A.wav")));
    const SoundID b = world().addLoopSound(*WorldFixture::aliasOf(sound("B.wav")));
    const SoundID owl = world().addEnvironmentSound(*WorldFixture::aliasOf(sound("Owl.wav")));
    editor().startEditing();
    QApplication::setActiveWindow(editor().getWindow());
    struct Press {
        app::EditorSoundList* list;
        ItemID item;
        Qt::Key key;
    };
    for (const Press& press : {Press{loopList(), a, Qt::Key_Delete}, Press{loopList(), b, Qt::Key_Backspace},
                               Press{environmentList(), owl, Qt::Key_Delete}}) {
        if (press.list == environmentList()) editor().showTab(app::WorldEditorWindow::ENVIRONMENT_SOUNDS_TAB);
        select(press.list, press.item);
        press.list->setFocus();
        ASSERT_TRUE(processEventsUntil([&press] { return press.list->hasFocus(); }));
        QTest::keyClick(press.list, press.key);
        EXPECT_EQ(world().getLoopSoundIndex(press.item) + world().getEnvironmentSoundIndex(press.item), -2)
            << "item " << press.item << " is gone";
    }
    const auto nextTabStop = [](QWidget* from) {
        QWidget* next = from->nextInFocusChain();
        while (next != from && !(next->focusPolicy() & Qt::TabFocus)) next = next->nextInFocusChain();
        return next;
    };
    EXPECT_EQ(nextTabStop(slider("WET2", 10)), slider("WET2", 15));
    EXPECT_EQ(nextTabStop(field("WET2", 19)), field("WET2", 23));
}

TEST_F(EditorLists, NewGroupsAreNamedInPlaceAndMoveToTheirSortedPlace) {
    const SoundID alone = world().addEnvironmentSound(*WorldFixture::aliasOf(sound("M.wav")));
    editor().showTab(app::WorldEditorWindow::ENVIRONMENT_SOUNDS_TAB);
    app::EditorSoundList* list = environmentList();
    clickCommand("FLDR");
    const GroupID first = editor().getSelectedEnvironmentItemID();
    EXPECT_EQ(list->editItemID(), first);
    list->commitEditing();
    clickCommand("FLDR");
    const GroupID second = editor().getSelectedEnvironmentItemID();
    ASSERT_EQ(world().getNumGroups(), 2);
    EXPECT_NE(world().getGroupName(first), world().getGroupName(second));

    // The person types a name and clicks a slider: the name is committed before the click acts,
    // and the row moves to its sorted place.
    auto* editorField = qobject_cast<QLineEdit*>(list->indexWidget(list->listModel()->indexOf(second)));
    ASSERT_NE(editorField, nullptr);
    editorField->selectAll();
    QTest::keyClicks(editorField, "Zebra birds");
    QTest::mouseClick(slider("WET2", 18), Qt::LeftButton);
    EXPECT_EQ(world().getGroupName(second), "Zebra birds");
    EXPECT_EQ(list->editItemID(), 0u);
    EXPECT_EQ(shownNames(list).last(), "Zebra birds");
    EXPECT_LT(shownNames(list).indexOf("M.wav"), shownNames(list).indexOf("Zebra birds"));

    // Selecting a group: interval controls on with the group's pair, volumes off at 100.
    select(list, second);
    world().setGroupMinInterval(second, 7);
    select(list, alone);
    select(list, second);
    EXPECT_FALSE(enabled("WET2", 7));
    EXPECT_TRUE(enabled("WET2", 16));
    EXPECT_EQ(slider("WET2", 10)->value(), 100);
    EXPECT_EQ(field("WET2", 19)->text(), "7");

    // Double-clicking a group edits its name and plays nothing.
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, rowPosition(list, first));
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, rowPosition(list, first));
    EXPECT_EQ(list->editItemID(), first);
    EXPECT_EQ(editor().getPreviewSoundID(), 0u);
    list->commitEditing();
    QTest::keyClick(list, Qt::Key_F2);  // renaming starts only where the editor starts it
    EXPECT_EQ(list->editItemID(), 0u);

    // Nothing selected: both interval fields empty, both boxes off; no beep from clearing them.
    list->selectOnly(0);
    EXPECT_TRUE(field("WET2", 19)->text().isEmpty());
    EXPECT_FALSE(enabled("WET2", 16));
    EXPECT_EQ(slider("WET2", 18)->value(), slider("WET2", 18)->minimum());
    QCoreApplication::processEvents();
    EXPECT_EQ(beeps, 0);
}

TEST_F(EditorLists, GroupsStartClosedAndShowTheirMembersWhenOpened) {
    const GroupID group = world().addGroup(QStringLiteral("Birds"));
    const SoundID a = world().addEnvironmentSound(*WorldFixture::aliasOf(sound("a.wav")));
    const SoundID b = world().addEnvironmentSound(*WorldFixture::aliasOf(sound("b.wav")));
    world().setEnvironmentSoundGroupID(a, group);
    world().setEnvironmentSoundGroupID(b, group);
    world().setGroupMinInterval(group, 12);
    editor().startEditing();
    editor().showTab(app::WorldEditorWindow::ENVIRONMENT_SOUNDS_TAB);
    app::EditorSoundList* list = environmentList();
    EXPECT_EQ(shownNames(list), QStringList{"Birds"});
    EXPECT_TRUE(enabled("WET2", 5));

    for (int time = 0; time < 2; ++time) {  // opening again adds each member once
        list->expand(list->listModel()->indexOf(group));
        EXPECT_EQ(shownNames(list), (QStringList{"Birds", "a.wav", "b.wav"}));
        list->collapse(list->listModel()->indexOf(group));
        EXPECT_EQ(shownNames(list), QStringList{"Birds"});
    }
    // A grouped sound shows its own volumes and its group's wait, which it cannot change itself.
    list->expand(list->listModel()->indexOf(group));
    select(list, b);
    EXPECT_TRUE(enabled("WET2", 7));
    EXPECT_FALSE(enabled("WET2", 16));
    EXPECT_EQ(field("WET2", 19)->text(), "12");

    // Removing the group takes its sounds with it.
    select(list, group);
    clickCommand("RMES");
    EXPECT_EQ(world().getNumGroups(), 0);
    EXPECT_EQ(world().getNumEnvironmentSounds(), 0);
    EXPECT_TRUE(shownNames(list).isEmpty());
    editor().hide();
    EXPECT_FALSE(editor().isVisible());
    EXPECT_EQ(loopList()->model()->rowCount(), 0);
    editor().startEditing();  // with nothing left to remove
    EXPECT_FALSE(enabled("WET2", 5));
    editor().hide();
    EXPECT_FALSE(app::applicationEngine().lowLatencyWanted()) << "the closed editor gives the short buffers back";
}

TEST_F(EditorLists, RemovalWithGroupsOpenAndRenamesEndedByAClickThatTakesNoFocus) {
    const GroupID birds = world().addGroup(QStringLiteral("Birds"));
    const GroupID frogs = world().addGroup(QStringLiteral("Frogs"));
    std::vector<SoundID> sounds;
    for (const char* name : {"a.wav", "b.wav", "c.wav", "z.wav"}) {
        sounds.push_back(world().addEnvironmentSound(*WorldFixture::aliasOf(sound(QString::fromLatin1(name)))));
    }
    world().setEnvironmentSoundGroupID(sounds[0], birds);
    world().setEnvironmentSoundGroupID(sounds[1], birds);
    world().setEnvironmentSoundGroupID(sounds[2], frogs);
    editor().startEditing();
    editor().showTab(app::WorldEditorWindow::ENVIRONMENT_SOUNDS_TAB);
    app::EditorSoundList* list = environmentList();
    list->expand(list->listModel()->indexOf(birds));
    list->expand(list->listModel()->indexOf(frogs));
    ASSERT_EQ(shownNames(list), (QStringList{"Birds", "a.wav", "b.wav", "Frogs", "c.wav", "z.wav"}));

    select(list, sounds[0]);
    clickCommand("RMES");
    EXPECT_EQ(shownNames(list), (QStringList{"Birds", "b.wav", "Frogs", "c.wav", "z.wav"}));
    EXPECT_EQ(editor().getSelectedEnvironmentSoundID(), sounds[1]);
    clickCommand("RMES");
    EXPECT_EQ(shownNames(list), (QStringList{"Birds", "Frogs", "c.wav", "z.wav"}));
    EXPECT_EQ(editor().getSelectedEnvironmentItemID(), frogs);
    EXPECT_EQ(world().getNumGroups(), 2);
    EXPECT_EQ(world().getNumEnvironmentSounds(), 2);

    // Renaming ends with a click on a label or on the tab bar, neither of which takes the focus.
    QLabel* label = nullptr;
    for (QLabel* candidate : editor().getWindow()->findChildren<QLabel*>()) {
        if (candidate->isVisible() && candidate->focusPolicy() == Qt::NoFocus) label = candidate;
    }
    ASSERT_NE(label, nullptr);
    QTabBar* tabs = editor().getWindow()->findChild<QTabBar*>();
    ASSERT_NE(tabs, nullptr);
    struct Case {
        QWidget* clicked;
        QPoint at;
        const char* name;
        QStringList shown;
    };
    for (const Case& c : {Case{label, QPoint(2, 2), "Aardvarks", {"Aardvarks", "c.wav", "Birds", "z.wav"}},
                          Case{tabs, tabs->tabRect(tabs->currentIndex()).center(), "Zoo", {"Birds", "z.wav", "Zoo", "c.wav"}}}) {
        list->editItem(frogs);
        auto* field = qobject_cast<QLineEdit*>(list->indexWidget(list->listModel()->indexOf(frogs)));
        ASSERT_NE(field, nullptr);
        field->selectAll();
        QTest::keyClicks(field, c.name);
        QTest::mouseClick(c.clicked, Qt::LeftButton, {}, c.at);
        EXPECT_EQ(world().getGroupName(frogs), c.name);
        EXPECT_EQ(shownNames(list), c.shown);
    }
}

}  // namespace
}  // namespace sylvora::test
