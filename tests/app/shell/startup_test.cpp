// The first world of a run, worlds handed to the application, and what a run leaves for the next.

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>

#include "app/editor/worldeditorwindow.h"
#include "app/info/getinfowindow.h"
#include "app/shell/applicationevents.h"
#include "app/shell/commanddispatch.h"
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
    EXPECT_EQ(alert.text, copyLocalizedString(UNKNOWN_ERROR_OPENING_WORLD, ERRORS_STRINGS_FILE));
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
}
