#pragma once

// The application's window entries, compiled from their Qt Designer files: the role the interface
// file plays for windows. Each entry fills an empty main window with its controls.

#include <QString>

class QMainWindow;

namespace sylvora::app {

// False when there is no entry of that name; the window is then left empty.
bool createWindowFromEntry(const QString& name, QMainWindow& window);

}  // namespace sylvora::app
