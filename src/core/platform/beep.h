#pragma once

// SysBeep: the desktop's alert sound. Below the app layer there is no desktop, so the app installs
// the real beep as a hook; without one a beep does nothing.

#include <functional>

namespace sylvora {

void SysBeep(int duration);
void setSysBeepHook(std::function<void()> hook);

}  // namespace sylvora
