// Replacing the one world with unsaved changes: the ask-save-changes box, the Open and Save As
// dialogs, and the action waiting behind them, answered as a person would answer them.

#include <QDir>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QTest>

#include "app/editor/worldeditorwindow.h"
#include "app/info/getinfowindow.h"
#include "app/shell/applicationevents.h"
#include "app/shell/commanddispatch.h"
#include "app/shell/documentflow.h"
#include "app/shell/globals.h"
#include "app/shell/menus.h"
#include "app/shell/worldfiledialogs.h"
#include "app/support/appfixture.h"
#include "core/platform/beep.h"
#include "core/strings/stringresources.h"
#include "support/worldfixture.h"

using namespace sylvora;
using namespace sylvora::app;
using namespace sylvora::test;

namespace {

class DocumentFlow : public AppTest {
protected:
    // The current world with unsaved changes, loaded from `package` or never saved.
    void changeWorld(const QString& package = {}) {
        if (!package.isEmpty()) {
            ASSERT_EQ(gCurrentWorld->loadFromPackage(WorldFixture::ref(package)), noErr);
        }
        gCurrentWorld->setDescription(QStringLiteral("changed by the person"));
        ASSERT_TRUE(gCurrentWorld->getModified());
    }
    // The editor's name field, which shows the world it was last filled from.
    static QString nameInEditor() {
        auto* field = qobject_cast<QLineEdit*>(gWorldEditorWindow->myGetControlByID(fourCharCode("WET4"), 3));
        return field == nullptr ? QString() : field->text();
    }
    bool idle() const {
        return gAskSaveChangesAction == ASK_SAVE_CHANGES_NONE && !gNextOpenDocument && navOpenDialog.isNull() &&
               navPutDialog.isNull() && navAskSaveChangesDialog.isNull();
    }
};

}  // namespace

TEST_F(DocumentFlow, QuitAsksNamingTheWorldAndCancelKeepsEverything) {
    gCurrentWorld->setName(QStringLiteral("Marsh"));
    MessageSeen ask;
    answerMessageBox(QMessageBox::Cancel, &ask);
    EXPECT_FALSE(quitsWhile([] { dispatchCommand(command::QUIT); }, 1500));
    ASSERT_TRUE(waitForAnswers());
    EXPECT_TRUE(ask.text.contains(QStringLiteral("Marsh"))) << ask.text.toStdString();
    EXPECT_TRUE(ask.text.contains(QStringLiteral("quit"))) << ask.text.toStdString();
    EXPECT_TRUE(idle());
    EXPECT_TRUE(gCurrentWorld->getModified());

    // A logout is held and asks the same; with nothing unsaved it goes on unasked.
    ask.text.clear();
    answerMessageBox(QMessageBox::Cancel, &ask);
    EXPECT_TRUE(holdSessionEndForUnsavedChanges());
    ASSERT_TRUE(waitForAnswers());
    EXPECT_TRUE(ask.text.contains(QStringLiteral("quit"))) << ask.text.toStdString();
    EXPECT_TRUE(idle());
    gCurrentWorld->resetToInitialState();
    EXPECT_FALSE(holdSessionEndForUnsavedChanges());
    gCurrentWorld->setName(QStringLiteral("Marsh"));

    // A second request while the box is up is dropped with a beep.
    int beeps = 0;
    setSysBeepHook([&beeps] { ++beeps; });
    doAskSaveChanges(ASK_SAVE_CHANGES_NEW_WORLD, nullptr);
    doAskSaveChanges(ASK_SAVE_CHANGES_QUIT, nullptr);
    EXPECT_EQ(beeps, 1);
    EXPECT_EQ(gAskSaveChangesAction, ASK_SAVE_CHANGES_NEW_WORLD);
    EXPECT_TRUE(navAskSaveChangesDialog->text().contains(QStringLiteral("clos")));
    setSysBeepHook({});
    cancelNextDialog();
    ASSERT_TRUE(waitForAnswers());
    EXPECT_TRUE(idle());
}

TEST_F(DocumentFlow, QuitSavingANeverSavedWorldCancelledInSaveAsKeepsRunning) {
    changeWorld();
    answerMessageBox(QMessageBox::Save);
    cancelNextDialog();  // the Save As dialog the save leads to
    EXPECT_FALSE(quitsWhile([] { dispatchCommand(command::QUIT); }, 1500));
    ASSERT_TRUE(waitForAnswers());
    EXPECT_TRUE(idle());
    EXPECT_TRUE(gCurrentWorld->getModified());
}

TEST_F(DocumentFlow, QuitSavingANeverSavedWorldSavesRecordsAndQuits) {
    changeWorld();
    gCurrentWorld->setName(QStringLiteral("Dunes"));
    answerMessageBox(QMessageBox::Save);
    answerFileDialog(dir.filePath(QStringLiteral("My Dunes")));  // the extension is added
    EXPECT_TRUE(quitsWhile([] { dispatchCommand(command::QUIT); }));
    ASSERT_TRUE(waitForAnswers());
    EXPECT_TRUE(QFileInfo(dir.filePath(QStringLiteral("My Dunes.sylvora/data.plist"))).isFile());
    EXPECT_FALSE(gCurrentWorld->getModified());
    EXPECT_TRUE(gPrefs->isAKnownWorld(WorldFixture::ref(dir.filePath(QStringLiteral("My Dunes.sylvora")))));
}

TEST_F(DocumentFlow, KnownWorldWithDontSaveOpensItAndReleasesTheWaitingAlias) {
    const QString other = makeWorldPackage(QStringLiteral("Other"));
    gPrefs->updateKnownWorlds(WorldFixture::aliasOf(other).get(), QStringLiteral("Other"));
    changeWorld(makeWorldPackage(QStringLiteral("Current")));
    answerMessageBox(QMessageBox::Discard);
    dispatchCommand(Preferences::KNOWN_WORLD_COMMAND_BASE + 0);
    EXPECT_EQ(gAskSaveChangesAction, ASK_SAVE_CHANGES_OPEN_DOCUMENT);
    EXPECT_TRUE(gNextOpenDocument);
    ASSERT_TRUE(waitForAnswers());
    EXPECT_EQ(gCurrentWorld->getName(), QStringLiteral("Other"));
    EXPECT_TRUE(gCurrentWorld->isPlaying());
    EXPECT_TRUE(idle());
}

TEST_F(DocumentFlow, OpenWithDontSaveShowsTheOpenDialogAndANewWorldShowsItsInformation) {
    const QString fresh = makeWorldPackage(QStringLiteral("Fresh"));
    changeWorld();
    answerMessageBox(QMessageBox::Discard);
    answerNextModal([fresh](QWidget* modal) {
        ASSERT_EQ(modal, navOpenDialog.data());
        ASSERT_NE(qobject_cast<WorldOpenDialog*>(modal), nullptr);
        EXPECT_EQ(gAskSaveChangesAction, ASK_SAVE_CHANGES_NONE);
        // A second Open while one is up only beeps.
        int beeps = 0;
        setSysBeepHook([&beeps] { ++beeps; });
        doWorldOpenPrompt();
        setSysBeepHook({});
        EXPECT_EQ(beeps, 1);
        chooseInFileDialog(modal, fresh);
    });
    dispatchCommand(command::OPEN);
    ASSERT_TRUE(waitForAnswers());
    ASSERT_TRUE(processEventsUntil([] { return navOpenDialog.isNull(); }));
    EXPECT_EQ(gCurrentWorld->getName(), QStringLiteral("Fresh"));
    EXPECT_TRUE(gGetInfoWindow->isVisible()) << "a world never met before presents its information";
    EXPECT_TRUE(gCurrentWorld->isPlaying());
    EXPECT_TRUE(idle());
}

TEST_F(DocumentFlow, NewWithSaveSavesInPlaceThenStartsTheEditorOnAnEmptyWorld) {
    const QString package = makeWorldPackage(QStringLiteral("Kept"));
    changeWorld(package);
    gGetInfoWindow->show();
    answerMessageBox(QMessageBox::Save);
    dispatchCommand(command::NEW);
    ASSERT_TRUE(waitForAnswers());
    ASSERT_TRUE(processEventsUntil([] { return gWorldEditorWindow->isVisible(); }));
    EXPECT_FALSE(gGetInfoWindow->isVisible());
    EXPECT_EQ(gCurrentWorld->getName(), QString());
    EXPECT_EQ(gCurrentWorld->getPackageAlias(), nullptr);
    EXPECT_TRUE(idle());
    WorldFixture reread;  // what the save left on disk
    ASSERT_EQ(reread.load(package), noErr);
    EXPECT_EQ(reread.world.getDescription(), QStringLiteral("changed by the person"));
}

TEST_F(DocumentFlow, SaveAsFromTheMenuAsksBeforeReplacingAndLeavesNothingWaiting) {
    const QString existing = makeWorldPackage(QStringLiteral("Taken"));
    gCurrentWorld->setName(QStringLiteral("Taken"));
    answerNextModal([existing](QWidget* modal) {
        auto* dialog = qobject_cast<WorldSaveDialog*>(modal);
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(dialog->selectedFiles().value(0).section(u'/', -1), QStringLiteral("Taken.sylvora"));
        chooseInFileDialog(modal, existing);
    });
    answerMessageBox(QMessageBox::Yes);  // replace it
    dispatchCommand(command::SAVE_AS);
    ASSERT_TRUE(waitForAnswers());
    ASSERT_TRUE(processEventsUntil([] { return navPutDialog.isNull(); }));
    EXPECT_TRUE(idle());
    EXPECT_NE(gCurrentWorld->getPackageAlias(), nullptr);

    // The new package is listed, checked, the next time the menu opens.
    knownWorldsMenuEventHandler();
    const auto items = getMenu(KNOWN_WORLDS_MENU_ID)->actions();
    ASSERT_EQ(items.size(), 1);
    EXPECT_EQ(items.at(0)->text(), QStringLiteral("Taken"));
    EXPECT_TRUE(items.at(0)->isChecked());
}

TEST_F(DocumentFlow, DroppedWorldWithUnsavedChangesWaitsUntilCancelled) {
    changeWorld();
    const QString dropped = makeWorldPackage(QStringLiteral("Dropped"));
    EXPECT_EQ(doOpenDocsEvent({dropped}), noErr);
    EXPECT_EQ(gAskSaveChangesAction, ASK_SAVE_CHANGES_OPEN_DOCUMENT);
    EXPECT_TRUE(gNextOpenDocument);
    cancelNextDialog();
    ASSERT_TRUE(waitForAnswers());
    EXPECT_TRUE(idle());
    EXPECT_NE(gCurrentWorld->getName(), QStringLiteral("Dropped"));
}

TEST_F(DocumentFlow, TheAskBoxDismissedWithoutAButtonIsCancelAndALaterSaveOnlySaves) {
    const QString package = makeWorldPackage(QStringLiteral("Kept"));
    const std::function<void(QWidget*)> dismissals[] = {
        [](QWidget* box) { box->close(); },  // the title bar's close button, Alt+F4
        [](QWidget* box) { QTest::keyClick(box, Qt::Key_Escape); },
    };
    int round = 0;
    for (const auto& dismiss : dismissals) {
        for (CommandID command : {command::QUIT, command::NEW}) {
            ASSERT_EQ(gCurrentWorld->loadFromPackage(WorldFixture::ref(package)), noErr);
            gCurrentWorld->setDescription(QStringLiteral("change %1").arg(++round));
            answerNextModal(dismiss);
            dispatchCommand(command);
            ASSERT_TRUE(waitForAnswers());
            ASSERT_TRUE(processEventsUntil([this] { return idle(); })) << commandIDString(command).toStdString();
            EXPECT_FALSE(quitsWhile([] { dispatchCommand(command::SAVE); }, 500));
            EXPECT_EQ(gCurrentWorld->getName(), QStringLiteral("Kept"));
            EXPECT_FALSE(gCurrentWorld->getModified());
        }
    }
}

TEST_F(DocumentFlow, WithoutATrayAFlowThatEndsWithNothingShownBringsBackGetInfo) {
    // The last window closed with unsaved changes asks to quit; every way of not quitting leaves a
    // window to come back to.
    const std::function<void()> answers[] = {
        [] { answerMessageBox(QMessageBox::Cancel); },
        [] { answerNextModal([](QWidget* box) { box->close(); }); },
        [] { answerMessageBox(QMessageBox::Save); cancelNextDialog(); },  // then Cancel in Save As
    };
    for (const auto& answer : answers) {
        changeWorld();
        gGetInfoWindow->show();
        gGetInfoWindow->hide();
        answer();
        windowClosedByUser();
        ASSERT_TRUE(waitForAnswers());
        EXPECT_TRUE(processEventsUntil([] { return gGetInfoWindow->isVisible(); }));
        EXPECT_TRUE(idle());
        EXPECT_TRUE(gCurrentWorld->getModified());
    }
}

TEST_F(DocumentFlow, AFailedSaveKeepsTheWaitingActionUntilASaveSucceeds) {
    const QString package = makeWorldPackage(QStringLiteral("Fragile"));
    changeWorld(package);
    // The sound inside the package turns into a folder: copying it fails, and not as "not found".
    const QString loop = QDir(package).filePath(QStringLiteral("Loop Sounds/loop.wav"));
    const QString aside = dir.filePath(QStringLiteral("loop.wav"));
    ASSERT_TRUE(QFile::copy(loop, aside));
    ASSERT_TRUE(QFile::remove(loop));
    ASSERT_TRUE(QDir().mkpath(loop));

    MessageSeen alert;
    answerMessageBox(QMessageBox::Save);
    answerMessageBox(QMessageBox::Ok, &alert);
    dispatchCommand(command::NEW);
    ASSERT_TRUE(waitForAnswers());
    EXPECT_EQ(alert.text, QStringLiteral("“Fragile” could not be saved.")) << "the alert names the world";
    EXPECT_FALSE(alert.informativeText.isEmpty()) << "and says why in its main text";
    EXPECT_EQ(gAskSaveChangesAction, ASK_SAVE_CHANGES_NEW_WORLD);
    EXPECT_TRUE(gCurrentWorld->getModified());
    EXPECT_TRUE(processEventsUntil([] { return gGetInfoWindow->isVisible(); })) << "a window to try again from";

    ASSERT_TRUE(QDir(loop).removeRecursively());
    ASSERT_TRUE(QFile::copy(aside, loop));
    dispatchCommand(command::SAVE);
    EXPECT_EQ(gCurrentWorld->getName(), QString()) << "the waiting new world came";
    EXPECT_TRUE(gWorldEditorWindow->isVisible());
    EXPECT_TRUE(idle());
    WorldFixture reread;
    ASSERT_EQ(reread.load(package), noErr);
    EXPECT_EQ(reread.world.getDescription(), QStringLiteral("changed by the person"));
}

TEST_F(DocumentFlow, AFailedSaveAsAbandonsTheWaitingQuit) {
    changeWorld();
    MessageSeen alert;
    answerMessageBox(QMessageBox::Save);
    answerNextModal([this](QWidget* modal) {
        auto* dialog = qobject_cast<WorldSaveDialog*>(modal);
        ASSERT_NE(dialog, nullptr);
        dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(dir.filePath("gone/World"));
        static_cast<QDialog*>(dialog)->accept();
    });
    answerMessageBox(QMessageBox::Ok, &alert);
    EXPECT_FALSE(quitsWhile([] { dispatchCommand(command::QUIT); }, 1500));
    ASSERT_TRUE(waitForAnswers());
    EXPECT_TRUE(alert.text.endsWith(QStringLiteral("” could not be saved."))) << alert.text.toStdString();
    EXPECT_TRUE(idle());
    EXPECT_TRUE(gCurrentWorld->getModified());
}

TEST_F(DocumentFlow, SaveAsTakesAPackageSelectedOrDoubleClickedAsTheWorldToReplace) {
    for (bool doubleClick : {false, true}) {
        const QString existing = makeWorldPackage(QStringLiteral("Taken"));
        QDir().mkpath(QFileInfo(existing).absolutePath() + QStringLiteral("/Plain"));
        gCurrentWorld->setName(QStringLiteral("Mine"));
        answerNextModal([existing, doubleClick](QWidget* modal) {
            auto* dialog = qobject_cast<WorldSaveDialog*>(modal);
            ASSERT_NE(dialog, nullptr);
            dialog->setDirectory(QFileInfo(existing).absolutePath());
            auto* files = dialog->findChild<QFileSystemModel*>();
            auto* view = dialog->findChild<QListView*>(QStringLiteral("listView"));
            ASSERT_TRUE(files != nullptr && view != nullptr);
            const QModelIndex package = files->index(existing);
            ASSERT_TRUE(package.isValid());
            if (doubleClick) {
                Q_EMIT view->activated(package);
            } else {
                auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
                const QString proposed = name->text();
                view->setCurrentIndex(files->index(QFileInfo(existing).absolutePath() + QStringLiteral("/Plain")));
                EXPECT_EQ(name->text(), proposed) << "a plain folder is a place, not a name";
                view->setCurrentIndex(package);
                EXPECT_EQ(name->text(), "Taken.sylvora");
                static_cast<QDialog*>(dialog)->accept();
            }
        });
        MessageSeen replace;
        answerMessageBox(QMessageBox::Yes, &replace);
        dispatchCommand(command::SAVE_AS);
        ASSERT_TRUE(waitForAnswers());
        ASSERT_TRUE(processEventsUntil([] { return navPutDialog.isNull(); }));
        EXPECT_TRUE(replace.text.contains(QStringLiteral("Taken.sylvora"))) << replace.text.toStdString();
        EXPECT_FALSE(QFileInfo::exists(QDir(existing).filePath(QStringLiteral("Mine.sylvora"))));
        WorldFixture reread;
        ASSERT_EQ(reread.load(existing), noErr);
        EXPECT_EQ(reread.world.getName(), QStringLiteral("Mine"));
        ASSERT_TRUE(QDir(existing).removeRecursively());
    }
}

TEST_F(DocumentFlow, OpeningWithTheEditorShownRefillsItAndOnlyANewWorldShowsItsInformation) {
    const QString fresh = makeWorldPackage(QStringLiteral("Fresh"));
    const QString known = makeWorldPackage(QStringLiteral("Known"));
    gPrefs->updateKnownWorlds(WorldFixture::aliasOf(known).get(), QStringLiteral("Known"));
    dispatchCommand(command::EDIT_WORLD);

    answerFileDialog(fresh);  // through the Open dialog
    dispatchCommand(command::OPEN);
    ASSERT_TRUE(waitForAnswers());
    ASSERT_TRUE(processEventsUntil([] { return navOpenDialog.isNull(); }));
    EXPECT_EQ(nameInEditor(), QStringLiteral("Fresh"));
    EXPECT_TRUE(gGetInfoWindow->isVisible());
    EXPECT_TRUE(gCurrentWorld->isPlaying());

    gGetInfoWindow->hide();
    dispatchCommand(Preferences::KNOWN_WORLD_COMMAND_BASE + 0);  // the Known Worlds menu
    EXPECT_EQ(nameInEditor(), QStringLiteral("Known"));
    EXPECT_FALSE(gGetInfoWindow->isVisible());

    // A waiting open asks whether the world is known before loading it (the load makes it known).
    const QString unmet = makeWorldPackage(QStringLiteral("Unmet"));
    for (const QString& next : {unmet, known}) {
        changeWorld();
        answerMessageBox(QMessageBox::Discard);
        doOpenDocsEvent({next});
        ASSERT_TRUE(waitForAnswers());
        EXPECT_EQ(nameInEditor(), QFileInfo(next).completeBaseName());
        EXPECT_EQ(gGetInfoWindow->isVisible(), next == unmet) << next.toStdString();
        gGetInfoWindow->hide();
        EXPECT_TRUE(idle());
    }
}

TEST_F(DocumentFlow, TheOpenAndSaveAsDialogsAndTheAskSaveBoxHoldEveryOtherWindow) {
    gGetInfoWindow->show();
    QWindow* info = gGetInfoWindow->getWindow()->windowHandle();
    for (const CommandID command : {command::OPEN, command::SAVE_AS, command::NEW}) {
        SCOPED_TRACE(commandIDString(command).toStdString());
        if (command == command::NEW) gCurrentWorld->setDescription(QStringLiteral("unsaved"));  // so that it asks
        answerNextModal([info](QWidget* dialog) {
            QTest::keyClick(info, Qt::Key_E, Qt::ControlModifier);  // through the window system, as typed
            QCoreApplication::processEvents();
            EXPECT_FALSE(gWorldEditorWindow->isVisible());
            static_cast<QDialog*>(dialog)->reject();
        });
        dispatchCommand(command);
        ASSERT_TRUE(waitForAnswers());
        ASSERT_TRUE(processEventsUntil([this] { return idle(); }));
    }
}
