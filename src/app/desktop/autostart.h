#pragma once

// Starting Sylvora with the desktop session: an entry in the person's autostart folder
// ($XDG_CONFIG_HOME/autostart, ~/.config/autostart by default) that runs it with --background, so
// that the world plays from the tray without a window. The tray's "Start with the desktop session"
// item writes and removes it. Main thread only.

#include <QString>

namespace sylvora::app {

QString autostartEntryPath();
bool isAutostartEnabled();
// Writes or removes the entry; false when the folder or the file could not be written or removed.
bool setAutostartEnabled(bool enabled);

}  // namespace sylvora::app
