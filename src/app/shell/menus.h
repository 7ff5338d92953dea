#pragma once

// The application's menus: the menu bar shared by the editor and the Get Info windows (File with
// Known Worlds, Edit, Volume, World, Help), the Dock menu shown by the tray, and the three handlers
// that keep them current: the Known Worlds and Dock menus are rebuilt when they open, the volume
// and Close and edit commands are enabled and checked from the current state.
//
// Lifecycle: createMenus() once at start-up (the role of the interface file "main") ->
// attachMenuBar() for each window with a menu bar -> destroyMenus() at shut-down. Main thread only.

#include <QString>

#include "app/shell/commandids.h"
#include "util/status.h"

class QAction;
class QMainWindow;
class QMenu;
class QWidget;

namespace sylvora::app {

inline constexpr int FILE_MENU_ID = 128;          // holds "clos"
inline constexpr int EDIT_MENU_ID = 129;          // the six edit commands
inline constexpr int VOLUME_MENU_ID = 130;        // VOL+, VOL-, and the levels at items 4 to 11
inline constexpr int KNOWN_WORLDS_MENU_ID = 131;  // filled when it opens
inline constexpr int DOCK_MENU_ID = 1000;

// The nearest of the eight levels to volume x 7: the first k with volume below (2k + 1) / 14,
// else 7 (also for NaN).
int volumeLevel(double volume);

// Builds the menus and dockVolumeSubMenu; false when they could not be built.
bool createMenus();
void destroyMenus();
// The menu of that ID (the table above), or null.
QMenu* getMenu(int menuID);
// The first action of the shared menus (and the Dock volume submenu) that sends `command`.
QAction* findMenuCommand(CommandID command);
// Adds the shared menus to the window's menu bar.
void attachMenuBar(QMainWindow& window);
// Makes the menus' key equivalents work in a window without a menu bar: Qt only honours a shortcut
// whose action sits in a shown widget.
void addKeyEquivalents(QWidget& window);
// The same menus as one popup, for a right-click.
QMenu* getContextMenu();

OSStatus knownWorldsMenuEventHandler();
OSStatus dockMenuEventHandler();
// The Dock menu as the tray shows it: dockMenuEventHandler, then the two items the desktop adds to
// every such menu, Show (the Get Info window) and Quit.
void rebuildDockMenu();
// Always eventNotHandledErr, so whatever else enables items still runs.
OSStatus enableMenuItemsEventHandler();

}  // namespace sylvora::app
