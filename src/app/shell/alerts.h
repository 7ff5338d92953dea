#pragma once

// The stop alert through which every failure to open or save a world is reported: the message,
// the bare status number beneath it (none for 0), and what the status means in its details.

#include <QString>

#include "util/status.h"

namespace sylvora::app {

// [main] Modal; returns once the person has dismissed it.
void showErrorAlert(const QString& message, OSStatus status);

// What a status means, in the user's language; empty for a status without an explanation.
QString copyStatusExplanation(OSStatus status);

}  // namespace sylvora::app
