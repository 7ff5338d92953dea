// The menus follow the application's state: volume check marks and enabling at the level
// boundaries, Close and the edit commands, and the two menus rebuilt from the known worlds.

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <cmath>

#include "app/desktop/trayicon.h"
#include "app/desktop/autostart.h"
#include "app/info/getinfowindow.h"
#include "app/shell/commanddispatch.h"
#include "app/shell/globals.h"
#include "app/shell/menus.h"
#include "app/shell/shellevents.h"
#include "app/support/appfixture.h"
#include "support/worldfixture.h"

using namespace sylvora;
using namespace sylvora::app;
using namespace sylvora::test;

namespace {

class ShellMenus : public AppTest {};

QStringList itemTexts(const QMenu& menu) {
    QStringList texts;
    for (const QAction* action : menu.actions()) {
        texts << (action->isSeparator() ? QStringLiteral("-") : action->text() + (action->isChecked() ? "*" : ""));
    }
    return texts;
}

int checkedLevel(const QMenu& menu, int firstItem) {
    int checked = -1;
    const auto items = menu.actions();
    for (int level = 0; level < 8; ++level) {
        if (items.at(firstItem - 1 + level)->isChecked()) {
            EXPECT_EQ(checked, -1) << "two levels checked";
            checked = level;
        }
    }
    return checked;
}

}  // namespace

TEST_F(ShellMenus, VolumeLevelsAreCheckedAndSteppedAtTheirBoundaries) {
    struct Case {
        double volume;
        int level;
    };
    for (const Case c : {Case{0.0714, 0}, Case{0.0715, 1}, Case{0.5, 4}, Case{0.92, 6}, Case{0.93, 7}, Case{0.0, 0},
                         Case{1.0, 7}, Case{1.0 / 14.0, 1}, Case{13.0 / 14.0, 7}}) {
        SCOPED_TRACE(c.volume);
        gCurrentWorld->setVolume(0.3);  // the world ignores steps of 1e-4 and less
        gCurrentWorld->setVolume(c.volume);
        ShellEvents::instance().notifyStateChanged();  // what every command does afterwards
        EXPECT_EQ(volumeLevel(c.volume), c.level);
        EXPECT_EQ(checkedLevel(*getMenu(VOLUME_MENU_ID), 4), c.level);
        EXPECT_EQ(findMenuCommand(command::VOLUME_DOWN)->isEnabled(), c.level != 0);
        EXPECT_EQ(findMenuCommand(command::VOLUME_UP)->isEnabled(), c.level != 7);
        rebuildDockMenu();
        EXPECT_EQ(checkedLevel(*dockVolumeSubMenu, 1), c.level);
    }
    EXPECT_EQ(volumeLevel(std::nan("")), 7);
    // The Volume menu's own layout: louder, softer, then the eight levels from item 4 and no more.
    const auto items = getMenu(VOLUME_MENU_ID)->actions();
    ASSERT_TRUE(items.at(11)->isSeparator()) << "the levels end at item 11";
    EXPECT_EQ(dockVolumeSubMenu->actions().size(), 8);
    EXPECT_EQ(commandOf(*items.at(0)), command::VOLUME_UP);
    EXPECT_EQ(commandOf(*items.at(1)), command::VOLUME_DOWN);
    for (int level = 0; level < 8; ++level) EXPECT_EQ(commandOf(*items.at(3 + level)), command::VOLUME_LEVEL_0 + CommandID(level));
    EXPECT_EQ(itemTexts(*getMenu(FILE_MENU_ID)), (QStringList{"&New World", "&Open World…", "&Known Worlds", "-", "&Close Window",
                                                             "&Save", "Save &As…", "-", "&Quit"}));
}

TEST_F(ShellMenus, DockAndKnownWorldsMenusAreRebuiltWithoutDuplicates) {
    const QString beta = makeWorldPackage(QStringLiteral("Beta"));
    const QString alpha = makeWorldPackage(QStringLiteral("Alpha"));
    gPrefs->updateKnownWorlds(WorldFixture::aliasOf(beta).get(), QStringLiteral("Beta"));
    ASSERT_EQ(gCurrentWorld->loadFromPackage(WorldFixture::ref(alpha)), noErr);  // known once a menu opens
    gCurrentWorld->setVolume(0.5);

    rebuildDockMenu();
    const QStringList first = itemTexts(*dockMenu);
    rebuildDockMenu();
    EXPECT_EQ(itemTexts(*dockMenu), first);
    // What a person with no window reaches for first, then the known worlds and the volume.
    EXPECT_EQ(first.mid(0, 8), (QStringList{"Play", "Open World…", "New World", "-", "Alpha*", "Beta", "-",
                                            dockVolumeSubMenu->title()}));
    EXPECT_EQ(commandOf(*dockMenu->actions().at(0)), command::PLAY_PAUSE);
    EXPECT_TRUE(dockMenu->actions().at(0)->isEnabled()) << "a world with sounds that is not playing can be played";
    EXPECT_EQ(commandOf(*dockMenu->actions().at(1)), command::OPEN);
    EXPECT_EQ(commandOf(*dockMenu->actions().at(2)), command::NEW);
    EXPECT_EQ(dockMenu->actions().at(7)->menu(), dockVolumeSubMenu);
    // And last, the two items every tray menu ends with.
    EXPECT_EQ(commandOf(*dockMenu->actions().value(first.size() - 2)), command::SHOW);
    EXPECT_EQ(commandOf(*dockMenu->actions().value(first.size() - 1)), command::QUIT);

    // Before them, the session's autostart entry, written and removed by one check item.
    const auto autostartItem = [] {
        rebuildDockMenu();
        return dockMenu->actions().value(dockMenu->actions().size() - 3);
    };
    EXPECT_EQ(autostartItem()->text(), QStringLiteral("Start with the desktop session"));
    EXPECT_TRUE(autostartEntryPath().startsWith(dir.path())) << "the private config folder";
    for (bool wanted : {true, false}) {
        QAction* item = autostartItem();
        EXPECT_EQ(item->isChecked(), !wanted);
        item->trigger();
        EXPECT_EQ(QFile::exists(autostartEntryPath()), wanted);
        EXPECT_EQ(autostartItem()->isChecked(), wanted);
        if (!wanted) continue;
        QFile entry(autostartEntryPath());
        ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(entry.readAll());
        EXPECT_TRUE(text.contains(QLatin1String("\nExec=")) && text.contains(QLatin1String(" --background\n"))) << text.toStdString();
    }

    QMenu& knownWorlds = *getMenu(KNOWN_WORLDS_MENU_ID);
    Q_EMIT knownWorlds.aboutToShow();  // what opening it does
    knownWorldsMenuEventHandler();
    EXPECT_EQ(itemTexts(knownWorlds), (QStringList{"Alpha*", "Beta"}));
    EXPECT_EQ(commandOf(*knownWorlds.actions().at(1)) - Preferences::KNOWN_WORLD_COMMAND_BASE, 1u);

    // Each menu first records the current world under the name it has now.
    gCurrentWorld->setName(QStringLiteral("Canyon"));
    knownWorldsMenuEventHandler();
    EXPECT_EQ(itemTexts(knownWorlds), (QStringList{"Beta", "Canyon*"}));
    gCurrentWorld->setName(QStringLiteral("Abyss"));
    rebuildDockMenu();
    EXPECT_EQ(itemTexts(*dockMenu).mid(4, 2), (QStringList{"Abyss*", "Beta"}));  // after Play, Open, New and a line
}

TEST_F(ShellMenus, WithoutATrayTheTrayMenuIsNotRebuiltNorAreKnownWorldsForgotten) {
    const QString gone = makeWorldPackage(QStringLiteral("Gone"));
    gPrefs->updateKnownWorlds(WorldFixture::aliasOf(gone).get(), QStringLiteral("Gone"));
    ASSERT_TRUE(QDir(gone).removeRecursively());
    TrayIcon tray;  // the offscreen platform has no tray
    ASSERT_FALSE(tray.isShown());
    ShellEvents::instance().notifyStateChanged();
    EXPECT_EQ(gPrefs->getNumKnownWorlds(), 1);
    EXPECT_TRUE(dockMenu->actions().isEmpty());
}

TEST_F(ShellMenus, CloseNeedsAVisibleWindowAndEditCommandsAFocusedField) {
    ShellEvents::instance().notifyStateChanged();
    EXPECT_FALSE(findMenuCommand(command::CLOSE)->isEnabled());
    EXPECT_FALSE(findMenuCommand(command::PASTE)->isEnabled());
    EXPECT_FALSE(findMenuCommand(command::PLAY_PAUSE)->isEnabled()) << "a world without sounds has nothing to play";

    dispatchCommand(command::GET_INFO);
    EXPECT_TRUE(findMenuCommand(command::CLOSE)->isEnabled());

    // A text field the person is typing in gets the edit commands, through the same dispatcher.
    auto* field = new QLineEdit(QStringLiteral("rain on leaves"), gGetInfoWindow->getWindow());
    field->show();
    gGetInfoWindow->getWindow()->activateWindow();
    field->setFocus();
    ASSERT_TRUE(processEventsUntil([field] { return field->hasFocus(); }));
    for (CommandID edit : {command::UNDO, command::CUT, command::COPY, command::PASTE, command::CLEAR, command::SELECT_ALL}) {
        EXPECT_TRUE(findMenuCommand(edit)->isEnabled()) << commandIDString(edit).toStdString();
    }
    EXPECT_EQ(dispatchCommand(command::SELECT_ALL), noErr);
    EXPECT_EQ(dispatchCommand(command::CLEAR), noErr);
    EXPECT_EQ(field->text(), QString());
    field->setReadOnly(true);
    ShellEvents::instance().notifyStateChanged();
    EXPECT_FALSE(findMenuCommand(command::PASTE)->isEnabled());
    delete field;
}
