#pragma once

// The desktop's alert sound: the sound theme's "bell" through libcanberra, or Qt's beep where the
// theme cannot play it.

namespace sylvora::app {

// [main] Installs the desktop beep as the hook of SysBeep.
void installDesktopBeep();
// [main] Releases the sound context; SysBeep does nothing afterwards.
void removeDesktopBeep();

}  // namespace sylvora::app
