#pragma once

// Every command (menu item, shortcut, tray item, window button, posted command) goes through
// dispatchCommand: the active window sees it first, then the application's handler, and what
// neither handles gets the platform's default ("quit" ends the event loop, "clos" closes the active
// window, the edit commands act on the focused text field).

#include <QString>

#include "app/shell/commandids.h"
#include "util/status.h"

class QAction;
class QObject;
class QWidget;

namespace sylvora::app {

// The command record of a command event.
struct HICommand {
    quint32 attributes = 0;
    CommandID commandID = 0;
    quint16 menuItemIndex = 0;
};

// [main] Returns noErr when someone handled the command, else eventNotHandledErr.
OSStatus dispatchCommand(CommandID command);
// [main] Dispatches on the event loop's next turn, after the caller has returned.
void postCommand(CommandID command);

// An action that posts `command` when triggered (carried as its data).
QAction* makeCommandAction(const QString& text, CommandID command, QObject* parent);
CommandID commandOf(const QAction& action);

// The focused text field that the edit commands act on, or null.
QWidget* focusedEditableText();

}  // namespace sylvora::app
