#include "core/platform/beep.h"

#include <utility>

namespace sylvora {

namespace {
std::function<void()>& beepHook() {
    static std::function<void()> hook;
    return hook;
}
}  // namespace

void SysBeep(int /*duration*/) {
    if (beepHook()) beepHook()();
}

void setSysBeepHook(std::function<void()> hook) { beepHook() = std::move(hook); }

}  // namespace sylvora
