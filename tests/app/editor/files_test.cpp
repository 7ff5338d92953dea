// Sounds and pictures coming in by the choose-file dialog and by drops on the lists and the well,
// rows dragged between groups, and a playing world keeping one scheduled play per group and per
// sound of no group through all of it.

#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QSortFilterProxyModel>
#include <QApplication>
#include <QDragEnterEvent>
#include <QLabel>
#include <QSlider>
#include <QTest>

#include "app/editor/editordrags.h"
#include "app/editor/picturewell.h"
#include "app/shell/globals.h"
#include "core/strings/stringresources.h"
#include "editorfixture.h"

namespace sylvora::test {
namespace {

class EditorFiles : public EditorTest {};

TEST_F(EditorFiles, DialogAddsToTheShownListAndTheSelectedGroupAndRefusesDuplicates) {
    const QString a = sound("a.wav");
    const QString b = sound("b.wav");
    const QString text = dir.writeFile(QStringLiteral("sounds/notes.txt"), "not a sound");
    clickCommand("ADLS");
    clickCommand("ADES");  // a second dialog while one is up: a beep
    EXPECT_EQ(beeps, 1);
    chooseInDialog({a, b, text});
    ASSERT_EQ(world().getNumLoopSounds(), 2);
    EXPECT_EQ(shownNames(loopList()), (QStringList{"a.wav", "b.wav"}));
    EXPECT_EQ(editor().getSelectedLoopingSoundID(), world().getIndLoopSoundID(0));

    clickCommand("ADLS");
    chooseInDialog({a});  // already in the world: nothing added, nothing said
    EXPECT_EQ(world().getNumLoopSounds(), 2);
    EXPECT_EQ(beeps, 1);

    // On the environment tab with a group's sound selected, new sounds join that group.
    editor().showTab(app::WorldEditorWindow::ENVIRONMENT_SOUNDS_TAB);
    clickCommand("FLDR");
    environmentList()->commitEditing();
    const GroupID group = editor().getSelectedEnvironmentGroupID();
    clickCommand("ADES");
    chooseInDialog({a});
    const SoundID inGroup = world().getIndEnvironmentSoundID(0);
    EXPECT_EQ(world().getEnvironmentSoundGroupID(inGroup), group);
    EXPECT_EQ(editor().getSelectedEnvironmentSoundID(), inGroup);
    clickCommand("ADES");
    chooseInDialog({b});
    EXPECT_EQ(world().getEnvironmentSoundGroupID(world().getIndEnvironmentSoundID(1)), group);

    // The filter behind the dialogs: by content type, not by name.
    const QString renamed = dir.filePath(QStringLiteral("sounds/wave.bin"));
    QFile::copy(a, renamed);
    EXPECT_TRUE(app::WorldEditorWindow::isAcceptableSoundFile(FSRef{renamed}));
    EXPECT_FALSE(app::WorldEditorWindow::isAcceptableSoundFile(FSRef{text}));
    EXPECT_FALSE(app::WorldEditorWindow::isAcceptableSoundFile(FSRef{dir.path()}));
    EXPECT_TRUE(app::WorldEditorWindow::isAcceptablePictureFile(FSRef{picture("p.png")}));
    EXPECT_FALSE(app::WorldEditorWindow::isAcceptablePictureFile(FSRef{a}));
}

TEST_F(EditorFiles, TheSoundDialogListsFoldersAndSampledSoundsOnlyAndChoosePictureSetsThePicture) {
    const QString wave = sound("a.wav");
    const QString folder = QFileInfo(wave).absolutePath();
    const QString inner = dir.makeDir(QStringLiteral("sounds/More"));
    const QString package = dir.makeDir(QStringLiteral("sounds/Old.sylvora"));
    const QString shouting = dir.makeDir(QStringLiteral("sounds/LOUD.SYLVORA"));
    const QString text = dir.writeFile(QStringLiteral("sounds/notes.txt"), "not a sound");
    const QString playlist = dir.writeFile(QStringLiteral("sounds/list.m3u"), "#EXTM3U\na.wav\n");
    const QString shoutcast = dir.writeFile(QStringLiteral("sounds/radio.pls"), "[playlist]\nFile1=a.wav\n");
    const QString midi = dir.writeFile(QStringLiteral("sounds/tune.mid"), QByteArray("MThd\0\0\0\6\0\0\0\1\0\x60", 14));
    clickCommand("ADLS");
    QFileDialog* dialog = editor().openDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowTitle(), "Select Looping Sound Files");  // the English table's text
    EXPECT_EQ(dialog->labelText(QFileDialog::Accept), "Choose");
    dialog->setDirectory(folder);
    auto* filter = qobject_cast<QSortFilterProxyModel*>(dialog->proxyModel());
    ASSERT_NE(filter, nullptr);
    auto* files = qobject_cast<QFileSystemModel*>(filter->sourceModel());
    ASSERT_NE(files, nullptr);
    const auto listed = [filter, files](const QString& path) { return filter->mapFromSource(files->index(path)).isValid(); };
    ASSERT_TRUE(processEventsUntil([&] { return listed(wave) && listed(inner); }));
    for (const QString& hidden : {package, shouting, text, playlist, shoutcast, midi}) {
        EXPECT_FALSE(listed(hidden)) << hidden.toStdString();
        EXPECT_FALSE(app::WorldEditorWindow::isAcceptableSoundFile(FSRef{hidden})) << hidden.toStdString();
    }
    dialog->reject();
    ASSERT_TRUE(processEventsUntil([this] { return editor().openDialog() == nullptr; }));
    gPrefs->setDialogFolder(Preferences::DialogFolder::Sounds, inner);  // as the settings of an earlier run hold it
    clickCommand("ADLS");
    ASSERT_NE(editor().openDialog(), nullptr);
    EXPECT_EQ(editor().openDialog()->directory().absolutePath(), inner);
    editor().openDialog()->reject();
    ASSERT_TRUE(processEventsUntil([this] { return editor().openDialog() == nullptr; }));

    editor().showTab(app::WorldEditorWindow::PICTURE_TAB);
    clickCommand("SELP");
    chooseInDialog({picture("chosen.png", 60, 40)});
    EXPECT_EQ(control<QLabel>("WET3", 3)->text(), "chosen.png");
    EXPECT_TRUE(control<app::PictureWell>("WET3", 2)->hasContent());
    ASSERT_NE(world().getPictureFileAlias(), nullptr);
    EXPECT_FALSE(world().getPicture().isNull());
    // Each dialog keeps its own folder in the settings.
    EXPECT_EQ(gPrefs->getDialogFolder(Preferences::DialogFolder::Sounds), inner);
    EXPECT_EQ(gPrefs->getDialogFolder(Preferences::DialogFolder::Picture), QFileInfo(dir.filePath("x")).absolutePath());
}

TEST_F(EditorFiles, DropsLandOnTheBackgroundOrAGroupNeverOnASoundRow) {
    app::EditorSoundList* loops = loopList();
    EXPECT_TRUE(drop(loops, *filesDrag({sound("l1.wav"), sound("l2.wav")}), background(loops)));
    ASSERT_EQ(world().getNumLoopSounds(), 2);
    const SoundID l1 = world().getIndLoopSoundID(0);
    EXPECT_FALSE(drop(loops, *filesDrag({sound("l3.wav")}), rowPosition(loops, l1)));
    EXPECT_EQ(world().getNumLoopSounds(), 2);
    // The scan stops at the first item that is not a local file.
    EXPECT_FALSE(drop(loops, *filesDrag({"https://example.org/x.wav", sound("l4.wav")}), background(loops)));

    editor().showTab(app::WorldEditorWindow::ENVIRONMENT_SOUNDS_TAB);
    app::EditorSoundList* list = environmentList();
    const GroupID birds = world().addGroup(QStringLiteral("Birds"));
    const GroupID frogs = world().addGroup(QStringLiteral("Frogs"));
    editor().startEditing();
    EXPECT_TRUE(drop(list, *filesDrag({sound("e1.wav")}), background(list)));
    const SoundID e1 = world().getIndEnvironmentSoundID(0);
    EXPECT_EQ(world().getEnvironmentSoundGroupID(e1), 0u);
    EXPECT_TRUE(drop(list, *filesDrag({sound("e2.wav"), dir.filePath("missing.wav")}), rowPosition(list, birds)));
    const SoundID e2 = world().getIndEnvironmentSoundID(1);
    EXPECT_EQ(world().getEnvironmentSoundGroupID(e2), birds);
    EXPECT_EQ(editor().getSelectedEnvironmentSoundID(), e2);
    EXPECT_FALSE(drop(list, *filesDrag({sound("e3.wav")}), rowPosition(list, e1)));
    // Files of which the world takes none: the drop is refused, so their source keeps them.
    const QString notes = dir.writeFile(QStringLiteral("sounds/notes.txt"), "not a sound");
    EXPECT_FALSE(drop(list, *filesDrag({notes}), background(list)));
    EXPECT_EQ(world().getNumEnvironmentSounds(), 2);
    // A drag that carries no file is turned away as it enters.
    QMimeData words;
    words.setText(QStringLiteral("birds"));
    QDragEnterEvent refused(background(list), Qt::CopyAction, &words, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(list->viewport(), &refused);
    EXPECT_FALSE(refused.isAccepted());
    // While a drag is over a group the group is marked; over a sound row nothing is.
    const auto hovering = filesDrag({sound("e4.wav")});
    QDragEnterEvent enter(background(list), Qt::CopyAction, hovering.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(list->viewport(), &enter);
    for (auto [over, marked] : {std::pair{frogs, frogs}, std::pair{e1, GroupID(0)}}) {
        QDragMoveEvent move(rowPosition(list, over), Qt::CopyAction, hovering.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(list->viewport(), &move);
        EXPECT_EQ(list->dropHighlight(), marked);
    }
    QDragLeaveEvent leave;
    QApplication::sendEvent(list->viewport(), &leave);
    EXPECT_EQ(list->dropHighlight(), 0u);

    // The same file dropped again moves its sound instead of adding it twice.
    EXPECT_TRUE(drop(list, *filesDrag({sound("e1.wav")}), rowPosition(list, frogs)));
    EXPECT_EQ(world().getNumEnvironmentSounds(), 2);
    EXPECT_EQ(world().getEnvironmentSoundGroupID(e1), frogs);

    // A row dragged out of the list carries its sound: onto another group, then onto the background.
    std::unique_ptr<QMimeData> row(list->addDragItems({e2}));
    ASSERT_NE(row, nullptr);
    EXPECT_TRUE(drop(list, *row, rowPosition(list, frogs)));
    EXPECT_EQ(world().getEnvironmentSoundGroupID(e2), frogs);
    EXPECT_EQ(list->listModel()->containerOf(e2), frogs);
    EXPECT_TRUE(drop(list, *row, background(list)));
    EXPECT_EQ(world().getEnvironmentSoundGroupID(e2), 0u);
    EXPECT_EQ(list->listModel()->containerOf(e2), 0u);
    EXPECT_EQ(list->addDragItems({birds}), nullptr);  // a group row does not drag
    EXPECT_EQ(world().getNumEnvironmentSounds(), 2);
}

TEST_F(EditorFiles, PictureWellShowsTheLastDroppedPicture) {
    editor().showTab(app::WorldEditorWindow::PICTURE_TAB);
    auto* well = control<app::PictureWell>("WET3", 2);
    auto* name = control<QLabel>("WET3", 3);
    EXPECT_FALSE(well->hasContent());
    EXPECT_FALSE(enabled("WET3", 3));
    EXPECT_EQ(name->text(), copyLocalizedString(NO_PICTURE_FILE_SELECTED_KEY, MISC_STRINGS_FILE));

    const auto pictures = filesDrag({picture("first.png", 40, 30), sound("not-a-picture.wav"), picture("second.png", 80, 20)});
    QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, pictures.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(well, &enter);
    EXPECT_EQ(well->referenceValue(), 1);
    QDragLeaveEvent leave;
    QApplication::sendEvent(well, &leave);
    EXPECT_EQ(well->referenceValue(), 0);

    EXPECT_TRUE(drop(well, *pictures, QPoint(20, 20)));
    EXPECT_EQ(name->text(), "second.png");
    EXPECT_TRUE(enabled("WET3", 3));
    ASSERT_TRUE(well->hasContent());
    const int inside = well->width() - 2 * well->frameWidth();
    EXPECT_EQ(well->content().width(), inside);
    well->resize(well->width() + 40, well->height());
    EXPECT_EQ(well->content().width(), inside + 40);  // rescaled with the well
    EXPECT_FALSE(drop(well, *filesDrag({sound("only-sound.wav")}), QPoint(20, 20)));
    EXPECT_EQ(name->text(), "second.png");
}

TEST_F(EditorFiles, EditingAPlayingWorldKeepsOnePlayPerGroupAndPerLoneSound) {
    editor().showTab(app::WorldEditorWindow::ENVIRONMENT_SOUNDS_TAB);
    app::EditorSoundList* list = environmentList();
    EXPECT_TRUE(drop(loopList(), *filesDrag({sound("loop.wav", 1.0)}), background(loopList())));
    clickCommand("FLDR");
    list->commitEditing();
    const GroupID group = editor().getSelectedEnvironmentGroupID();
    EXPECT_TRUE(drop(list, *filesDrag({sound("g1.wav"), sound("g2.wav")}), rowPosition(list, group)));
    EXPECT_TRUE(drop(list, *filesDrag({sound("x.wav"), sound("y.wav")}), background(list)));
    ASSERT_TRUE(world().isPlaying());
    const SoundID x = world().getIndEnvironmentSoundID(2);
    const SoundID y = world().getIndEnvironmentSoundID(3);

    auto expectOnePlayEach = [&](const char* step) {
        SCOPED_TRACE(step);
        for (int i = 0; i < world().getNumGroups(); ++i) EXPECT_EQ(scheduledPlays(world().getIndGroupID(i)), 1);
        for (int i = 0; i < world().getNumEnvironmentSounds(); ++i) {
            const SoundID sound = world().getIndEnvironmentSoundID(i);
            if (world().getEnvironmentSoundGroupID(sound) == 0) {
                EXPECT_EQ(scheduledPlays(sound), 1);
            }
        }
    };
    expectOnePlayEach("added");
    std::unique_ptr<QMimeData> row(list->addDragItems({x}));
    EXPECT_TRUE(drop(list, *row, rowPosition(list, group)));
    expectOnePlayEach("moved into the group");
    select(list, y);
    clickCommand("RMES");
    expectOnePlayEach("removed");
    select(list, group);
    for (int value : {2, 3}) control<QSlider>("WET2", 18)->setValue(value);
    expectOnePlayEach("interval changed");
    processEventsUntil([] { return false; }, 300);  // the world plays on under the editor
    expectOnePlayEach("played on");
    EXPECT_EQ(world().getNumGroups(), 1);
}

TEST_F(EditorFiles, AWorldBuiltInTheEditorSavesAndReopensTheSame) {
    EXPECT_TRUE(drop(loopList(), *filesDrag({sound("bed.wav")}), background(loopList())));
    editor().showTab(app::WorldEditorWindow::ENVIRONMENT_SOUNDS_TAB);
    app::EditorSoundList* list = environmentList();
    clickCommand("FLDR");
    list->commitEditing();
    const GroupID group = editor().getSelectedEnvironmentGroupID();
    EXPECT_TRUE(drop(list, *filesDrag({sound("Owl 10.wav"), sound("Owl 2.wav")}), rowPosition(list, group)));
    select(list, group);
    field("WET2", 23)->setText(QString());
    QTest::keyClicks(field("WET2", 23), "90");
    QCoreApplication::processEvents();
    EXPECT_TRUE(drop(control<app::PictureWell>("WET3", 2), *filesDrag({picture("marsh.png")}), QPoint(10, 10)));
    const QStringList shown = shownNames(list);

    ASSERT_EQ(world().doSaveAs(dir.ref(), QStringLiteral("Marsh.sylvora")), noErr);
    world().resetToInitialState();
    editor().startEditing();
    EXPECT_TRUE(shownNames(list).isEmpty());
    ASSERT_EQ(world().loadFromPackage(WorldFixture::ref(dir.filePath("Marsh.sylvora"))), noErr);
    editor().startEditing();
    list->expand(list->listModel()->indexOf(world().getIndGroupID(0)));
    EXPECT_EQ(shownNames(list), shown);
    EXPECT_EQ(shownNames(loopList()), QStringList{"bed.wav"});
    select(list, world().getIndGroupID(0));
    EXPECT_EQ(field("WET2", 23)->text(), "90");
    EXPECT_EQ(control<QLabel>("WET3", 3)->text(), "marsh.png");
}

}  // namespace
}  // namespace sylvora::test
