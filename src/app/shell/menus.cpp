#include "app/shell/menus.h"

#include <QAction>
#include <QActionGroup>
#include <QFileInfo>
#include <QHash>
#include <QKeySequence>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <memory>
#include <vector>

#include "app/desktop/autostart.h"
#include "core/platform/beep.h"
#include "app/desktop/sleeptimermenu.h"
#include "app/shell/applicationevents.h"
#include "app/shell/commanddispatch.h"
#include "app/shell/globals.h"
#include "app/shell/knownworldsqmenu.h"
#include "app/shell/shellevents.h"
#include "app/windows/mycarbonwindow.h"

namespace sylvora::app {

namespace {

constexpr int VOLUME_LEVELS = 8;
constexpr int FIRST_LEVEL_ITEM = 4;  // items 4 to 11 of the Volume menu, counted from 1

struct MenuSet {
    std::unique_ptr<QMenu> file, edit, volume, knownWorlds, world, help, context, dock, dockVolume;
};
std::unique_ptr<MenuSet> gMenus;

QAction* addCommand(QMenu& menu, const QString& text, CommandID command,
                    const QKeySequence& shortcut = QKeySequence()) {
    QAction* action = makeCommandAction(text, command, &menu);
    if (!shortcut.isEmpty()) {
        action->setShortcut(shortcut);
        action->setShortcutContext(Qt::ApplicationShortcut);  // key equivalents work in every window
    }
    menu.addAction(action);
    return action;
}

QString levelText(int level) {
    if (level == 0) return QObject::tr("Silent");
    if (level == VOLUME_LEVELS - 1) return QObject::tr("Full");
    return QObject::tr("Level %1").arg(level);
}

void addLevels(QMenu& menu, bool withShortcuts) {
    // One level is the volume at a time: the group draws them as radio items.
    auto* group = new QActionGroup(&menu);
    for (int level = 0; level < VOLUME_LEVELS; ++level) {
        const auto command = static_cast<CommandID>(command::VOLUME_LEVEL_0 + static_cast<CommandID>(level));
        QAction* item = addCommand(menu, levelText(level), command,
                                   withShortcuts ? QKeySequence(QStringLiteral("Ctrl+%1").arg(level)) : QKeySequence());
        item->setCheckable(true);
        group->addAction(item);
    }
}

QString playPauseText() { return gCurrentWorld != nullptr && gCurrentWorld->isPlaying() ? QObject::tr("Pause") : QObject::tr("Play"); }

// The tray's own copy of a command of the shared menus, made afresh with each rebuild.
QAction* makeTrayCommand(const QString& text, CommandID command, bool enabled = true) {
    QAction* action = makeCommandAction(text, command, dockMenu);
    action->setEnabled(enabled);
    return action;
}

void buildFileMenu(QMenu& file, QMenu& knownWorlds) {
    addCommand(file, QObject::tr("&New World"), command::NEW, QKeySequence::New);
    addCommand(file, QObject::tr("&Open World…"), command::OPEN, QKeySequence::Open);
    file.addMenu(&knownWorlds);
    file.addSeparator();
    addCommand(file, QObject::tr("&Close Window"), command::CLOSE, QKeySequence::Close);
    addCommand(file, QObject::tr("&Save"), command::SAVE, QKeySequence::Save);
    addCommand(file, QObject::tr("Save &As…"), command::SAVE_AS, QKeySequence::SaveAs);
    file.addSeparator();
    addCommand(file, QObject::tr("&Quit"), command::QUIT, QKeySequence::Quit);
}

void buildEditMenu(QMenu& edit) {
    addCommand(edit, QObject::tr("&Undo"), command::UNDO, QKeySequence::Undo);
    edit.addSeparator();
    addCommand(edit, QObject::tr("Cu&t"), command::CUT, QKeySequence::Cut);
    addCommand(edit, QObject::tr("&Copy"), command::COPY, QKeySequence::Copy);
    addCommand(edit, QObject::tr("&Paste"), command::PASTE, QKeySequence::Paste);
    addCommand(edit, QObject::tr("&Delete"), command::CLEAR);
    addCommand(edit, QObject::tr("Select &All"), command::SELECT_ALL, QKeySequence::SelectAll);
}

void buildVolumeMenu(QMenu& volume) {
    addCommand(volume, QObject::tr("&Louder"), command::VOLUME_UP, QKeySequence(QStringLiteral("Ctrl+Up")));
    addCommand(volume, QObject::tr("&Softer"), command::VOLUME_DOWN, QKeySequence(QStringLiteral("Ctrl+Down")));
    volume.addSeparator();
    addLevels(volume, true);
}

// Known worlds of one name are told apart by the folder that holds each.
void distinguishSameNames(QMenu& menu) {
    QHash<QString, int> count;
    QList<QAction*> worlds;
    for (QAction* action : menu.actions()) {
        const CommandID index = commandOf(*action) - Preferences::KNOWN_WORLD_COMMAND_BASE;
        if (action->isSeparator() || index >= static_cast<CommandID>(Preferences::MAX_KNOWN_WORLDS)) continue;
        worlds << action;
        ++count[action->text()];
    }
    for (QAction* action : worlds) {
        if (count.value(action->text()) < 2) continue;
        const auto index = static_cast<int>(commandOf(*action) - Preferences::KNOWN_WORLD_COMMAND_BASE);
        const Alias* alias = gPrefs->getIndKnownWorldAlias(index);
        if (alias == nullptr) continue;
        FSRef package;
        const QString path = FSResolveAlias(*alias, package) == noErr ? package.path : alias->recordedPath();
        const QString folder = QFileInfo(QFileInfo(path).absolutePath()).fileName();
        if (!folder.isEmpty()) action->setText(QObject::tr("%1 — %2").arg(action->text(), folder));
    }
}

void setLevelChecks(QMenu& menu, int firstItem, int level) {
    const auto items = menu.actions();
    for (int i = 0; i < VOLUME_LEVELS && firstItem - 1 + i < items.size(); ++i) {
        items[firstItem - 1 + i]->setChecked(i == level);
    }
}

void setEnabled(CommandID command, bool enabled) {
    if (QAction* action = findMenuCommand(command)) action->setEnabled(enabled);
}

}  // namespace

int volumeLevel(double volume) {
    for (int level = 0; level < VOLUME_LEVELS - 1; ++level) {
        if (volume < (2.0 * level + 1.0) / 14.0) return level;
    }
    return VOLUME_LEVELS - 1;
}

bool createMenus() {
    gMenus = std::make_unique<MenuSet>();
    MenuSet& m = *gMenus;
    m.file = std::make_unique<QMenu>(QObject::tr("&File"));
    m.edit = std::make_unique<QMenu>(QObject::tr("&Edit"));
    m.volume = std::make_unique<QMenu>(QObject::tr("&Volume"));
    m.knownWorlds = std::make_unique<QMenu>(QObject::tr("&Known Worlds"));
    m.world = std::make_unique<QMenu>(QObject::tr("&World"));
    m.help = std::make_unique<QMenu>(QObject::tr("&Help"));
    m.dockVolume = std::make_unique<QMenu>(QObject::tr("Volume"));
    m.dock = std::make_unique<QMenu>();
    m.context = std::make_unique<QMenu>();

    buildFileMenu(*m.file, *m.knownWorlds);
    buildEditMenu(*m.edit);
    buildVolumeMenu(*m.volume);
    addLevels(*m.dockVolume, false);
    // Space belongs to a focused text field first: a field takes its printable keys before any shortcut.
    addCommand(*m.world, playPauseText(), command::PLAY_PAUSE, QKeySequence(Qt::Key_Space));
    m.world->addSeparator();
    addCommand(*m.world, QObject::tr("Get &Info"), command::GET_INFO, QKeySequence(QStringLiteral("Ctrl+I")));
    addCommand(*m.world, QObject::tr("&Edit World"), command::EDIT_WORLD, QKeySequence(QStringLiteral("Ctrl+E")));
    addCommand(*m.world, QObject::tr("&Mixer"), command::MIXER, QKeySequence(QStringLiteral("Ctrl+M")));
    addCommand(*m.help, QObject::tr("Sylvora &Help"), command::APP_HELP, QKeySequence::HelpContents);
    addCommand(*m.help, QObject::tr("&About Sylvora"), command::ABOUT);
    for (QMenu* menu : {m.file.get(), m.edit.get(), m.volume.get(), m.world.get(), m.help.get()}) {
        m.context->addMenu(menu);
    }

    QObject::connect(m.knownWorlds.get(), &QMenu::aboutToShow, [] { knownWorldsMenuEventHandler(); });
    for (QMenu* menu : {m.file.get(), m.edit.get(), m.volume.get()}) {
        QObject::connect(menu, &QMenu::aboutToShow, [] { enableMenuItemsEventHandler(); });
    }
    dockVolumeSubMenu = m.dockVolume.get();
    dockMenu = m.dock.get();
    QObject::connect(dockMenu, &QMenu::aboutToShow, [] { rebuildDockMenu(); });
    enableMenuItemsEventHandler();
    return true;
}

void destroyMenus() {
    dockMenu = nullptr;
    dockVolumeSubMenu = nullptr;
    gMenus.reset();
}

QMenu* getMenu(int menuID) {
    if (!gMenus) return nullptr;
    switch (menuID) {
        case FILE_MENU_ID: return gMenus->file.get();
        case EDIT_MENU_ID: return gMenus->edit.get();
        case VOLUME_MENU_ID: return gMenus->volume.get();
        case KNOWN_WORLDS_MENU_ID: return gMenus->knownWorlds.get();
        case DOCK_MENU_ID: return gMenus->dock.get();
        default: return nullptr;
    }
}

QAction* findMenuCommand(CommandID command) {
    if (!gMenus) return nullptr;
    for (QMenu* menu : {gMenus->file.get(), gMenus->edit.get(), gMenus->volume.get(), gMenus->world.get(),
                        gMenus->help.get()}) {
        for (QAction* action : menu->actions()) {
            if (commandOf(*action) == command) return action;
        }
    }
    return nullptr;
}

void attachMenuBar(QMainWindow& window) {
    if (!gMenus) return;
    QMenuBar* bar = window.menuBar();
    for (QMenu* menu : {gMenus->file.get(), gMenus->edit.get(), gMenus->volume.get(), gMenus->world.get(),
                        gMenus->help.get()}) {
        bar->addMenu(menu);
    }
}

void addKeyEquivalents(QWidget& window) {
    if (!gMenus) return;
    for (QMenu* menu : {gMenus->file.get(), gMenus->edit.get(), gMenus->volume.get(), gMenus->world.get(),
                        gMenus->help.get()}) {
        for (QAction* action : menu->actions()) {
            if (!action->shortcut().isEmpty()) window.addAction(action);
        }
    }
}

QMenu* getContextMenu() { return gMenus ? gMenus->context.get() : nullptr; }

OSStatus knownWorldsMenuEventHandler() {
    QMenu* menu = getMenu(KNOWN_WORLDS_MENU_ID);
    if (menu == nullptr) return eventNotHandledErr;
    const Alias* current = gCurrentWorld->getPackageAlias();
    if (current != nullptr) gPrefs->updateKnownWorlds(current, gCurrentWorld->getName());
    KnownWorldsQMenu filler(*menu);
    gPrefs->fillMenuWithKnownWorlds(filler, current);
    distinguishSameNames(*menu);
    return noErr;
}

OSStatus dockMenuEventHandler() {
    if (dockMenu == nullptr) return eventNotHandledErr;
    const Alias* current = gCurrentWorld->getPackageAlias();
    if (current != nullptr) gPrefs->updateKnownWorlds(current, gCurrentWorld->getName());
    KnownWorldsQMenu filler(*dockMenu);
    gPrefs->fillMenuWithKnownWorlds(filler, current);
    distinguishSameNames(*dockMenu);
    dockMenu->addSeparator();
    if (dockVolumeSubMenu == nullptr || dockVolumeSubMenu->title().isEmpty()) return noErr;
    dockMenu->addMenu(dockVolumeSubMenu);
    setLevelChecks(*dockVolumeSubMenu, 1, volumeLevel(masterVolume()));
    return noErr;
}

void rebuildDockMenu() {
    if (dockMenuEventHandler() != noErr) return;
    // What a person with no window open reaches for first: play or pause, and a world to start from.
    auto* separator = new QAction(dockMenu);
    separator->setSeparator(true);
    dockMenu->insertActions(dockMenu->actions().value(0),
                            {makeTrayCommand(playPauseText(), command::PLAY_PAUSE, gCurrentWorld->isPlaying() || worldHasSounds()),
                             makeTrayCommand(QObject::tr("Open World…"), command::OPEN),
                             makeTrayCommand(QObject::tr("New World"), command::NEW), separator});
    if (SleepTimerMenu* sleep = SleepTimerMenu::instance()) dockMenu->addMenu(sleep->menu());
    dockMenu->addSeparator();
    QAction* autostart = dockMenu->addAction(QObject::tr("Start with the desktop session"));
    autostart->setCheckable(true);
    autostart->setChecked(isAutostartEnabled());
    QObject::connect(autostart, &QAction::triggered, dockMenu, [](bool wanted) {
        if (!setAutostartEnabled(wanted)) SysBeep(1);
        ShellEvents::instance().notifyStateChanged();
    });
    dockMenu->addAction(makeCommandAction(QObject::tr("Show Sylvora"), command::SHOW, dockMenu));
    dockMenu->addAction(makeCommandAction(QObject::tr("Quit"), command::QUIT, dockMenu));
}

OSStatus enableMenuItemsEventHandler() {
    if (!gMenus || gCurrentWorld == nullptr) return eventNotHandledErr;
    const double volume = masterVolume();  // a sleep timer's fade does not move the check mark
    setEnabled(command::VOLUME_DOWN, !(volume < 1.0 / 14.0));
    setEnabled(command::VOLUME_UP, volume < 13.0 / 14.0);
    setLevelChecks(*gMenus->volume, FIRST_LEVEL_ITEM, volumeLevel(volume));

    bool anyWindowVisible = false;
    for (PlatformWindow* window : MyCarbonWindow::windowList()) anyWindowVisible |= window->isVisible();
    setEnabled(command::CLOSE, anyWindowVisible);
    if (QAction* playPause = findMenuCommand(command::PLAY_PAUSE)) {
        playPause->setText(playPauseText());
        playPause->setEnabled(gCurrentWorld->isPlaying() || worldHasSounds());
    }

    // The edit commands act on a focused text field, and only then.
    const bool editable = focusedEditableText() != nullptr;
    for (CommandID command : {command::UNDO, command::CUT, command::COPY, command::PASTE, command::CLEAR,
                              command::SELECT_ALL}) {
        setEnabled(command, editable);
    }
    return eventNotHandledErr;
}

}  // namespace sylvora::app
