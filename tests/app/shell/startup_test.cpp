// The first world of a run, worlds handed to the application, and what a run leaves for the next.

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QAbstractButton>
#include <QMessageBox>
#include <functional>
#include <vector>

#include "app/editor/worldeditorwindow.h"
#include "app/info/getinfowindow.h"
#include "app/shell/applicationevents.h"
#include "app/shell/commanddispatch.h"
#include "app/shell/bundledworlds.h"
#include "app/shell/globals.h"
#include "app/shell/startup.h"
#include "app/shell/worldfiledialogs.h"
#include "app/support/appfixture.h"
#include "core/strings/stringresources.h"
#include "support/worldfixture.h"

using namespace sylvora;
using namespace sylvora::app;
using namespace sylvora::test;

namespace {

class StartUpAndOpen : public AppTest {
protected:
    void restart() {
        shutDownApp();
        startApp();
    }
};

}  // namespace

TEST_F(StartUpAndOpen, OpenDocumentsTakesTheFirstWorldPackageWhateverTheCaseOfItsExtension) {
    const QString plain = dir.writeFile(QStringLiteral("notes.sylvora.txt"), "not a world");
    const QString folder = dir.makeDir(QStringLiteral("Just a folder"));
    const QString faked = dir.writeFile(QStringLiteral("Faked.sylvora"), "a file, not a package");
    const QString upper = makeWorldPackage(QStringLiteral("LOUD"));  // then renamed below
    ASSERT_TRUE(QFile::rename(upper, dir.filePath(QStringLiteral("LOUD.SYLVORA"))));
    const QString later = makeWorldPackage(QStringLiteral("Later"));

    EXPECT_EQ(doOpenDocsEvent({plain, folder, faked, dir.filePath(QStringLiteral("LOUD.SYLVORA")), later}), noErr);
    EXPECT_EQ(gCurrentWorld->getName(), QStringLiteral("LOUD"));
    EXPECT_TRUE(gCurrentWorld->isPlaying());
    EXPECT_TRUE(gGetInfoWindow->isVisible()) << "a world met for the first time shows its information";

    // Opened again once known: no Get Info of its own accord.
    gGetInfoWindow->hide();
    EXPECT_EQ(doOpenDocsEvent({dir.filePath(QStringLiteral("LOUD.SYLVORA"))}), noErr);
    EXPECT_EQ(gCurrentWorld->getName(), QStringLiteral("LOUD"));
    EXPECT_FALSE(gGetInfoWindow->isVisible());

    // A package that cannot be read is reported and forgets nothing.
    const int known = gPrefs->getNumKnownWorlds();
    const QString broken = dir.makeDir(QStringLiteral("Broken.sylvora"));
    MessageSeen alert;
    answerMessageBox(QMessageBox::Ok, &alert);
    EXPECT_NE(doOpenDocsEvent({broken}), noErr);
    ASSERT_TRUE(waitForAnswers());
    EXPECT_EQ(alert.text, QStringLiteral("“Broken” could not be opened: its data file is missing."));
    EXPECT_EQ(gPrefs->getNumKnownWorlds(), known);
}

TEST_F(StartUpAndOpen, ShutDownStoresTheWorldAndVolumeThatTheNextRunReopens) {
    const QString package = makeWorldPackage(QStringLiteral("Creek"));
    EXPECT_EQ(doOpenDocsEvent({package}), noErr);
    dispatchCommand(command::VOLUME_LEVEL_0 + 3);
    shutDownApp();
    ASSERT_TRUE(QFile::exists(settingsFile()));
    {
        Preferences stored(settingsFile());
        stored.loadPreferences();
        EXPECT_NEAR(stored.getMasterVolume(), 3.0 / 7.0, 1e-12);
        ASSERT_NE(stored.getLastWorldAlias(), nullptr);
        EXPECT_TRUE(stored.isAKnownWorld(WorldFixture::ref(package)));
    }

    startApp();
    EXPECT_NEAR(gCurrentWorld->getVolume(), 3.0 / 7.0, 1e-12);
    openFirstWorld({});
    EXPECT_EQ(gCurrentWorld->getName(), QStringLiteral("Creek"));
    EXPECT_TRUE(gCurrentWorld->isPlaying());
    EXPECT_FALSE(gWorldEditorWindow->isVisible());
    EXPECT_TRUE(gGetInfoWindow->isVisible()) << "without a tray, a window to show that it runs";

    // A world never saved clears the last world; the next launch asks for one.
    dispatchCommand(command::NEW);
    restart();
    Preferences cleared(settingsFile());
    cleared.loadPreferences();
    EXPECT_EQ(cleared.getLastWorldAlias(), nullptr);
    answerNextModal([](QWidget* modal) {
        EXPECT_NE(qobject_cast<WorldOpenDialog*>(modal), nullptr);
        qobject_cast<QDialog*>(modal)->reject();
    });
    openFirstWorld({});
    ASSERT_TRUE(waitForAnswers());
}

// The question at launch, answered with the button of `label`; its text kept in `seen`.
static void answerRestoreQuestion(const QString& label, QString* seen) {
    answerNextModal([label, seen](QWidget* modal) {
        auto* box = qobject_cast<QMessageBox*>(modal);
        ASSERT_NE(box, nullptr);
        *seen = box->text();
        for (QAbstractButton* button : box->buttons())
            if (button->text() == label) button->click();
    });
}

TEST_F(StartUpAndOpen, EditsUnsavedAtAnEndingFromOutsideAreOfferedAtTheNextLaunch) {
    const QString recovery = dir.filePath(QStringLiteral("state/sylvora/unsaved world.plist"));
    const QString package = makeWorldPackage(QStringLiteral("Creek"));
    ASSERT_EQ(doOpenDocsEvent({package}), noErr);
    gCurrentWorld->setName(QStringLiteral("Creek at Dusk"));
    shutDownApp(true);
    ASSERT_TRUE(QFile::exists(recovery));

    startApp();
    QString question;
    answerRestoreQuestion(QStringLiteral("Restore"), &question);
    openFirstWorld({});
    ASSERT_TRUE(waitForAnswers());
    EXPECT_EQ(question, QStringLiteral("Sylvora was ended with unsaved changes to the world “Creek at Dusk”. "
                                       "Do you want to restore them?"));
    EXPECT_EQ(gCurrentWorld->getName(), QStringLiteral("Creek at Dusk"));
    EXPECT_TRUE(gCurrentWorld->getModified());
    EXPECT_TRUE(gCurrentWorld->isPlaying());
    EXPECT_TRUE(gWorldEditorWindow->isVisible());

    // Declined, the edits are forgotten and the last saved world opens as on any launch.
    shutDownApp(true);
    startApp();
    answerRestoreQuestion(QStringLiteral("Discard Changes"), &question);
    openFirstWorld({});
    ASSERT_TRUE(waitForAnswers());
    EXPECT_EQ(gCurrentWorld->getName(), QStringLiteral("Creek"));
    EXPECT_FALSE(QFile::exists(recovery));

    // A quit the person asked for, or an ending with nothing unsaved, keeps nothing.
    gCurrentWorld->setName(QStringLiteral("Creek Again"));
    shutDownApp(true);
    ASSERT_TRUE(QFile::exists(recovery));
    startApp();
    shutDownApp(false);
    EXPECT_FALSE(QFile::exists(recovery));
    startApp();
    shutDownApp(true);
    EXPECT_FALSE(QFile::exists(recovery));

    // Where they cannot be kept, the ending says so.
    startApp();
    gCurrentWorld->setName(QStringLiteral("Creek Lost"));
    ASSERT_TRUE(QDir(QFileInfo(recovery).absolutePath()).removeRecursively());
    dir.writeFile(QStringLiteral("state/sylvora"), "");  // a file where its folder would be
    testing::internal::CaptureStderr();
    shutDownApp(true);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("could not be kept"), std::string::npos);
    startApp();
}

TEST_F(StartUpAndOpen, EachFileDialogComesBackInItsOwnFolderInTheNextRun) {
    const QString worlds = dir.makeDir(QStringLiteral("worlds"));
    const QString saved = dir.makeDir(QStringLiteral("saved"));
    const QString package = makeWorldPackage(QStringLiteral("Creek"), worlds);
    answerFileDialog(package);
    dispatchCommand(command::OPEN);
    ASSERT_TRUE(waitForAnswers());
    ASSERT_TRUE(processEventsUntil([] { return navOpenDialog.isNull(); }));
    answerFileDialog(QDir(saved).filePath(QStringLiteral("Copy")));
    dispatchCommand(command::SAVE_AS);
    ASSERT_TRUE(waitForAnswers());
    ASSERT_TRUE(processEventsUntil([] { return navPutDialog.isNull(); }));
    EXPECT_TRUE(QFileInfo::exists(QDir(saved).filePath(QStringLiteral("Copy.sylvora"))));

    restart();
    EXPECT_EQ(gPrefs->getDialogFolder(Preferences::DialogFolder::Open), worlds);
    EXPECT_EQ(gPrefs->getDialogFolder(Preferences::DialogFolder::SaveAs), saved);
    for (CommandID command : {command::OPEN, command::SAVE_AS}) {
        QString shown;
        answerNextModal([&shown](QWidget* modal) {
            auto* dialog = qobject_cast<QFileDialog*>(modal);
            ASSERT_NE(dialog, nullptr);
            shown = dialog->directory().absolutePath();
            dialog->reject();
        });
        dispatchCommand(command);
        ASSERT_TRUE(waitForAnswers());
        EXPECT_EQ(shown, command == command::OPEN ? worlds : saved);
    }

    // A plain folder chosen in Open is entered, not taken; a remembered Save As folder that has
    // gone gives way to the person's own worlds folder.
    const QString inner = dir.makeDir(QStringLiteral("worlds/Inner"));
    ASSERT_TRUE(QDir(saved).removeRecursively());
    for (CommandID command : {command::OPEN, command::SAVE_AS}) {
        QString shown;
        answerNextModal([&shown, command](QWidget* modal) {
            auto* dialog = qobject_cast<QFileDialog*>(modal);
            ASSERT_NE(dialog, nullptr);
            if (command == command::OPEN) {
                dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(QStringLiteral("Inner"));
                QMetaObject::invokeMethod(dialog, "accept");
                EXPECT_TRUE(dialog->isVisible());
            }
            shown = dialog->directory().absolutePath();
            dialog->reject();
        });
        dispatchCommand(command);
        ASSERT_TRUE(waitForAnswers());
        EXPECT_EQ(shown, command == command::OPEN ? inner : userWorldsFolder());
    }
}

namespace {

bool anyWindowVisible() {
    for (PlatformWindow* window : MyCarbonWindow::windowList()) {
        if (window->isVisible()) return true;
    }
    return false;
}

}  // namespace

TEST_F(StartUpAndOpen, FirstLaunchPlaysTheBundledWorldAndEveryLaunchByAPersonLeavesAWindow) {
    ASSERT_TRUE(isFirstRun()) << "no settings file yet";
    ASSERT_FALSE(bundledFirstWorld().isEmpty()) << "the build generates the example world";
    openFirstWorld({});
    EXPECT_EQ(gCurrentWorld->getName(), QStringLiteral("Evening Forest"));
    EXPECT_TRUE(gCurrentWorld->isPlaying());
    EXPECT_TRUE(gGetInfoWindow->isVisible()) << "new to this person, so its information comes up";

    // Later launches reopen the last world as always, and with a tray standing for the application
    // a launch still shows a window; in the background it shows none.
    struct Launch {
        const char* name;
        bool background, tray, windowShown;
    };
    for (const Launch& launch : {Launch{"by a person, with a tray", false, true, true},
                                 Launch{"in the background, with a tray", true, true, false},
                                 Launch{"in the background, no tray", true, false, true}}) {
        SCOPED_TRACE(launch.name);
        shutDownApp();
        startApp(launch.background);
        setTrayAvailable(launch.tray);
        EXPECT_FALSE(isFirstRun());
        openFirstWorld({});
        EXPECT_EQ(gCurrentWorld->getName(), QStringLiteral("Evening Forest"));
        EXPECT_TRUE(gCurrentWorld->isPlaying());
        EXPECT_EQ(anyWindowVisible(), launch.windowShown);
        EXPECT_EQ(gGetInfoWindow->isVisible(), launch.windowShown);
    }

    // A known world handed over by a later launch comes with its window when none is up.
    const QString creek = makeWorldPackage(QStringLiteral("Creek"));
    gPrefs->updateKnownWorlds(WorldFixture::aliasOf(creek).get(), QStringLiteral("Creek"));
    gGetInfoWindow->hide();
    openHandedDocuments({creek});
    EXPECT_EQ(gCurrentWorld->getName(), QStringLiteral("Creek"));
    EXPECT_TRUE(gGetInfoWindow->isVisible());
    gGetInfoWindow->hide();
    openHandedDocuments({});
    EXPECT_TRUE(gGetInfoWindow->isVisible()) << "a second launch with nothing to open shows the world";

    // A launch given a world opens that one, not the last.
    shutDownApp();
    startApp();
    openFirstWorld({makeWorldPackage(QStringLiteral("Brook"))});
    EXPECT_EQ(gCurrentWorld->getName(), QStringLiteral("Brook"));
}

TEST_F(StartUpAndOpen, ADamagedWorldLeavesTheCurrentOnePlayingAndTheAlertNamesIt) {
    ASSERT_EQ(doOpenDocsEvent({makeWorldPackage(QStringLiteral("Creek"))}), noErr);
    struct Case {
        const char* name;
        std::function<void(const QString& package)> damage;
        OSStatus status;
        QString message;
    };
    const std::vector<Case> cases{
        {"Broken Glade", [](const QString& package) {
             QFile data(package + QStringLiteral("/data.plist"));
             ASSERT_TRUE(data.open(QIODevice::WriteOnly | QIODevice::Truncate));
             data.write("<?xml version=\"1.0\"?><plist><dict><key>Name</key><strin");
         }, -1, QStringLiteral("“Broken Glade” could not be opened: its data file is damaged.")},
        {"No Loops", [](const QString& package) { ASSERT_TRUE(QDir(package + QStringLiteral("/Loop Sounds")).removeRecursively()); },
         -43, QStringLiteral("“No Loops” could not be opened: its folder “Loop Sounds” is missing.")},
        {"No Birds", [](const QString& package) { ASSERT_TRUE(QDir(package + QStringLiteral("/Environment Sounds")).removeRecursively()); },
         -43, QStringLiteral("“No Birds” could not be opened: its folder “Environment Sounds” is missing.")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const QString package = makeWorldPackage(QLatin1String(c.name));
        c.damage(package);
        MessageSeen alert;
        answerMessageBox(QMessageBox::Ok, &alert);
        EXPECT_EQ(doOpenDocsEvent({package}), c.status);
        ASSERT_TRUE(waitForAnswers());
        EXPECT_EQ(alert.text, c.message);
        EXPECT_FALSE(alert.informativeText.isEmpty()) << "what went wrong, in words, beneath";
        EXPECT_EQ(gCurrentWorld->getName(), QStringLiteral("Creek"));
        EXPECT_TRUE(gCurrentWorld->isPlaying());
        EXPECT_EQ(gCurrentWorld->getNumLoopSounds(), 1);
    }
}
