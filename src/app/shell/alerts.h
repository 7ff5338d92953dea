#pragma once

// The stop alert through which every failure to open or save a world is reported: the message,
// and beneath it what the status means in words with the number after them (nothing for 0).

#include <QString>

#include "util/status.h"

namespace sylvora::app {

// [main] Modal; returns once the person has dismissed it. `details`, when not empty, goes behind
// the alert's Show Details button.
void showErrorAlert(const QString& message, OSStatus status, const QString& details = QString());

// [main] The alert of a failed save of the current world: names the world, says what went wrong,
// and, when the save kept the previous version of the world, where it is.
void showSaveErrorAlert(OSStatus status);

// A world that could not be opened: the main text names it (`name`, or the package's name from
// `packagePath`) and says why where the package shows it; the status stays beneath.
void showOpenErrorAlert(const QString& packagePath, OSStatus status, const QString& name = {});
QString copyOpenErrorMessage(const QString& packagePath, OSStatus status, const QString& name = {});

}  // namespace sylvora::app
