// Every command the application handles, reaching the same code from wherever it is sent.

#include <QApplication>
#include <QTest>

#include "app/editor/worldeditorwindow.h"
#include "app/info/aboutwindow.h"
#include "app/info/getinfowindow.h"
#include "app/shell/applicationevents.h"
#include "app/shell/commanddispatch.h"
#include "app/shell/globals.h"
#include "app/shell/menus.h"
#include "app/support/appfixture.h"
#include "core/strings/stringresources.h"
#include "support/worldfixture.h"

using namespace sylvora;
using namespace sylvora::app;
using namespace sylvora::test;

namespace {

class ShellCommands : public AppTest {};

int knownWorldIndex(const QString& name) {
    for (int i = 0; i < gPrefs->getNumKnownWorlds(); ++i) {
        if (gPrefs->getIndKnownWorldName(i) == name) return i;
    }
    return -1;
}

CommandID knownWorldCommand(int index) { return Preferences::KNOWN_WORLD_COMMAND_BASE + static_cast<CommandID>(index); }

}  // namespace

TEST_F(ShellCommands, VolumeCommandsSetTheLevelsAndStepWithinBounds) {
    struct Case {
        double before;
        CommandID command;
        double after;
    };
    std::vector<Case> cases = {{0.05, command::VOLUME_DOWN, 0.0}, {0.95, command::VOLUME_UP, 1.0},
                               {3.0 / 7.0, command::VOLUME_UP, 4.0 / 7.0}, {3.0 / 7.0, command::VOLUME_DOWN, 2.0 / 7.0}};
    for (int level = 0; level < 8; ++level) cases.push_back({0.5, command::VOLUME_LEVEL_0 + CommandID(level), level / 7.0});
    for (const Case& c : cases) {
        gCurrentWorld->setVolume(c.before);
        EXPECT_EQ(dispatchCommand(c.command), noErr) << commandIDString(c.command).toStdString();
        EXPECT_NEAR(gCurrentWorld->getVolume(), c.after, 1e-12) << commandIDString(c.command).toStdString();
    }
}

TEST_F(ShellCommands, WindowCommandsShowTheirWindowsAndTheRestFallThrough) {
    EXPECT_EQ(dispatchCommand(command::GET_INFO), noErr);
    EXPECT_TRUE(gGetInfoWindow->isVisible());
    gGetInfoWindow->hide();
    EXPECT_EQ(dispatchCommand(command::SHOW), noErr);  // the tray's Show
    EXPECT_TRUE(gGetInfoWindow->isVisible());
    EXPECT_EQ(dispatchCommand(command::ABOUT), noErr);
    EXPECT_TRUE(gAboutWindow->isVisible());
    EXPECT_EQ(dispatchCommand(command::EDIT_WORLD), noErr);
    EXPECT_TRUE(gWorldEditorWindow->isVisible());

    // Close hides the active window and only that one.
    QWidget* about = gAboutWindow->getWindow();
    about->activateWindow();
    ASSERT_TRUE(processEventsUntil([about] { return QApplication::activeWindow() == about; }));
    EXPECT_EQ(dispatchCommand(command::CLOSE), noErr);
    EXPECT_FALSE(gAboutWindow->isVisible());
    EXPECT_TRUE(gGetInfoWindow->isVisible());

    EXPECT_EQ(dispatchCommand(fourCharCode("xyzw")), eventNotHandledErr);
    // Quit without unsaved changes is the platform's to carry out, and it ends the loop.
    EXPECT_EQ(applicationEventHandler(HICommand{0, command::QUIT, 0}), eventNotHandledErr);
    EXPECT_TRUE(quitsWhile([] { dispatchCommand(command::QUIT); }));
}

TEST_F(ShellCommands, KeyEquivalentsWorkWhenTheAboutWindowIsTheOnlyOneShown) {
    dispatchCommand(command::ABOUT);
    QWidget* about = gAboutWindow->getWindow();
    ASSERT_TRUE(processEventsUntil([about] { return QApplication::activeWindow() == about; }));
    QTest::keyClick(about, Qt::Key_E, Qt::ControlModifier);
    EXPECT_TRUE(processEventsUntil([] { return gWorldEditorWindow->isVisible(); }));
    gWorldEditorWindow->hide();
    about->activateWindow();
    ASSERT_TRUE(processEventsUntil([about] { return QApplication::activeWindow() == about; }));
    QTest::keyClick(about, Qt::Key_I, Qt::ControlModifier);
    EXPECT_TRUE(processEventsUntil([] { return gGetInfoWindow->isVisible(); }));
}

TEST_F(ShellCommands, KnownWorldCommandsOpenByIndexAndForgetWorldsThatAreGone) {
    const QString alpha = makeWorldPackage(QStringLiteral("Alpha"));
    const QString beta = makeWorldPackage(QStringLiteral("Beta"));
    gPrefs->updateKnownWorlds(WorldFixture::aliasOf(alpha).get(), QStringLiteral("Alpha"));
    gPrefs->updateKnownWorlds(WorldFixture::aliasOf(beta).get(), QStringLiteral("Beta"));

    EXPECT_EQ(dispatchCommand(knownWorldCommand(knownWorldIndex(QStringLiteral("Beta")))), noErr);
    EXPECT_EQ(gCurrentWorld->getName(), QStringLiteral("Beta"));
    EXPECT_TRUE(gCurrentWorld->isPlaying());
    EXPECT_FALSE(gGetInfoWindow->isVisible()) << "a known world never brings up its information";

    // The whole range is the application's, whether or not an entry is there; beyond it is not.
    EXPECT_EQ(applicationEventHandler(HICommand{0, knownWorldCommand(199), 0}), noErr);
    EXPECT_EQ(applicationEventHandler(HICommand{0, knownWorldCommand(200), 0}), eventNotHandledErr);
    EXPECT_EQ(applicationEventHandler(HICommand{0, knownWorldCommand(-1), 0}), eventNotHandledErr);
    EXPECT_EQ(gCurrentWorld->getName(), QStringLiteral("Beta"));

    ASSERT_TRUE(QDir(alpha).removeRecursively());
    MessageSeen alert;
    answerMessageBox(QMessageBox::Ok, &alert);
    EXPECT_EQ(dispatchCommand(knownWorldCommand(knownWorldIndex(QStringLiteral("Alpha")))), noErr);
    ASSERT_TRUE(waitForAnswers());
    EXPECT_EQ(alert.text, QStringLiteral("“Alpha” could not be opened: it is no longer there."));
    EXPECT_FALSE(alert.informativeText.isEmpty());
    EXPECT_EQ(gCurrentWorld->getName(), QStringLiteral("Beta")) << "the world that played plays on";
    EXPECT_TRUE(gCurrentWorld->isPlaying());
    EXPECT_EQ(knownWorldIndex(QStringLiteral("Alpha")), -1);
    EXPECT_EQ(gPrefs->getNumKnownWorlds(), 1);
}
