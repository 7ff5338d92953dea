// Play and pause, the master volume and the sleep timer, from the Get Info window's strip and from
// everything else that drives them: the strip, the World menu, Space, the tray all say the same.

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QDirIterator>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QSlider>
#include <QTest>
#include <QToolButton>
#include <cmath>
#include <functional>
#include <vector>

#include "app/desktop/sleeptimermenu.h"
#include "app/editor/worldeditorwindow.h"
#include "app/info/controlstrip.h"
#include "app/info/getinfowindow.h"
#include "app/shell/applicationevents.h"
#include "app/shell/commanddispatch.h"
#include "app/shell/globals.h"
#include "app/shell/menus.h"
#include "app/shell/shellevents.h"
#include "infofixture.h"

using namespace sylvora;
using namespace sylvora::app;
using namespace sylvora::test;

namespace {

class ControlStripTest : public InfoAppTest {
protected:
    void openPlayingWorld() {
        ASSERT_EQ(doOpenDocsEvent({makeWorldPackage(QStringLiteral("Meadow"))}), noErr);
        ASSERT_TRUE(gGetInfoWindow->isVisible());
        ASSERT_TRUE(gCurrentWorld->isPlaying());
        QApplication::setActiveWindow(gGetInfoWindow->getWindow());
        settle();
    }
    static ControlStrip& strip() { return *gGetInfoWindow->getControlStrip(); }
    static QAction& trayPlayPause() {
        rebuildDockMenu();
        return *dockMenu->actions().at(0);
    }
};

}  // namespace

TEST_F(ControlStripTest, PlayAndPauseFromEveryPlaceAgreeWithTheWorld) {
    openPlayingWorld();
    QLineEdit* nameField = nullptr;
    struct Way {
        const char* name;
        std::function<void()> press;
        bool toggles;
    };
    const std::vector<Way> ways{
        {"strip button", [] { strip().playPauseButton()->click(); }, true},
        {"World menu", [] { findMenuCommand(command::PLAY_PAUSE)->trigger(); }, true},
        {"Space on the slider", [] { strip().volumeSlider()->setFocus(); QTest::keyClick(strip().volumeSlider(), Qt::Key_Space); }, true},
        {"tray", [] { trayPlayPause().trigger(); }, true},
        {"Space in a text field", [&nameField] {
             nameField = gWorldEditorWindow->getWindow()->findChild<QLineEdit*>(QStringLiteral("nameField"));
             nameField->setFocus();
             QTest::keyClick(nameField, Qt::Key_Space);
         }, false},
    };
    bool playing = true;
    for (const Way& way : ways) {
        SCOPED_TRACE(way.name);
        if (!way.toggles) {
            gWorldEditorWindow->startEditing();  // plays, as the editor always does
            playing = true;
            QApplication::setActiveWindow(gWorldEditorWindow->getWindow());
            settle();
        }
        way.press();
        settle();
        if (way.toggles) playing = !playing;
        EXPECT_EQ(gCurrentWorld->isPlaying(), playing);
        EXPECT_EQ(strip().stateLabel()->text(), playing ? QStringLiteral("Playing") : QStringLiteral("Paused"));
        EXPECT_EQ(findMenuCommand(command::PLAY_PAUSE)->text(), playing ? QStringLiteral("Pause") : QStringLiteral("Play"));
        EXPECT_EQ(trayPlayPause().text(), findMenuCommand(command::PLAY_PAUSE)->text());
        EXPECT_EQ(commandOf(trayPlayPause()), command::PLAY_PAUSE);
    }
    ASSERT_NE(nameField, nullptr);
    EXPECT_TRUE(nameField->text().endsWith(QLatin1Char(' '))) << "the field keeps its space";

    // A world with nothing to play has nothing to start.
    gWorldEditorWindow->hide();
    gCurrentWorld->resetToInitialState();
    ShellEvents::instance().notifyStateChanged();
    EXPECT_FALSE(strip().playPauseButton()->isEnabled());
    EXPECT_FALSE(findMenuCommand(command::PLAY_PAUSE)->isEnabled());
    dispatchCommand(command::PLAY_PAUSE);
    EXPECT_FALSE(gCurrentWorld->isPlaying());
}

TEST_F(ControlStripTest, SliderAndVolumeLevelsFollowEachOther) {
    openPlayingWorld();
    QSlider& slider = *strip().volumeSlider();
    const QList<QAction*> levels = getMenu(VOLUME_MENU_ID)->actions().mid(3, 8);
    ASSERT_NE(levels.first()->actionGroup(), nullptr);
    EXPECT_TRUE(levels.first()->actionGroup()->isExclusive()) << "one level at a time, drawn as radio items";
    const auto checkedLevel = [&levels] {
        for (int level = 0; level < 8; ++level) {
            if (levels[level]->isChecked()) return level;
        }
        return -1;
    };

    struct Case {
        int slider;
        int level;
    };
    for (const Case c : {Case{50, 4}, Case{7, 0}, Case{8, 1}, Case{100, 7}, Case{0, 0}, Case{92, 6}}) {
        SCOPED_TRACE(c.slider);
        slider.setValue(c.slider);  // as a drag or a key moves it
        EXPECT_NEAR(gCurrentWorld->getVolume(), c.slider / 100.0, 1e-9);
        EXPECT_EQ(checkedLevel(), c.level);
    }
    for (int level : {2, 7, 0, 5}) {
        SCOPED_TRACE(level);
        dispatchCommand(command::VOLUME_LEVEL_0 + CommandID(level));
        EXPECT_EQ(slider.value(), static_cast<int>(std::lround(level * 100.0 / 7.0)));
        EXPECT_EQ(checkedLevel(), level);
    }
    dispatchCommand(command::VOLUME_UP);
    EXPECT_EQ(slider.value(), static_cast<int>(std::lround(6 * 100.0 / 7.0)));
}

TEST_F(ControlStripTest, SleepTimerShowsItsTimeAndItsEndLeavesAPausedWorldThatPlaysAtTheMasterLevel) {
    openPlayingWorld();
    dispatchCommand(command::VOLUME_LEVEL_0 + 5);
    SleepTimerMenu& sleep = *SleepTimerMenu::instance();
    EXPECT_EQ(strip().sleepButton()->menu(), sleep.menu()) << "the same choices as the menu";
    sleep.choose(15);
    EXPECT_EQ(strip().stateLabel()->text(), QStringLiteral("Sleeping in 15 min"));
    EXPECT_EQ(strip().sleepButton()->text(), QStringLiteral("15 min"));

    sleep.timer().start(0.2);  // fades over all of so short a time
    ASSERT_TRUE(processEventsUntil([] { return !gCurrentWorld->isPlaying(); }, 3000));
    settle();
    EXPECT_EQ(strip().stateLabel()->text(), QStringLiteral("Paused"));
    EXPECT_EQ(findMenuCommand(command::PLAY_PAUSE)->text(), QStringLiteral("Play"));
    EXPECT_EQ(strip().sleepButton()->text(), QStringLiteral("Sleep"));
    strip().playPauseButton()->click();
    EXPECT_TRUE(gCurrentWorld->isPlaying());
    EXPECT_NEAR(gCurrentWorld->getVolume(), 5.0 / 7.0, 1e-9);
    EXPECT_EQ(strip().volumeSlider()->value(), 71);
}

TEST_F(ControlStripTest, ALoopSoundWhoseFileBreaksIsNamedUntilItIsMended) {
    // Long enough to be streamed, so that each play reads the file again.
    const QString package = makeWorldPackage(QStringLiteral("Creek"), {}, 3.5);
    ASSERT_EQ(doOpenDocsEvent({package}), noErr);
    ASSERT_TRUE(gCurrentWorld->isPlaying());
    QDirIterator files(package, {QStringLiteral("loop.wav")}, QDir::Files, QDirIterator::Subdirectories);
    ASSERT_TRUE(files.hasNext());
    const QString loop = files.next();
    const QString kept = loop + QStringLiteral(".kept");
    ASSERT_TRUE(QFile::rename(loop, kept));

    const auto stripSays = [](const QString& text) { return strip().stateLabel()->text() == text; };
    EXPECT_TRUE(processEventsUntil([&] { return stripSays(QStringLiteral("Playing — cannot read: loop")); }, 15000))
        << strip().stateLabel()->text().toStdString();
    EXPECT_EQ(ControlStrip::unreadableText(), QStringLiteral("cannot read: loop")) << "what the tray's tooltip adds";
    ASSERT_TRUE(QFile::rename(kept, loop));
    EXPECT_TRUE(processEventsUntil([&] { return stripSays(QStringLiteral("Playing")); }, 15000))
        << strip().stateLabel()->text().toStdString();
}
