#include "app/desktop/desktopbeep.h"

#include <canberra.h>

#include <QApplication>

#include "core/platform/beep.h"

namespace sylvora::app {

namespace {
ca_context* gSoundContext = nullptr;

void playBell() {
    if (gSoundContext == nullptr ||
        ca_context_play(gSoundContext, 0, CA_PROP_EVENT_ID, "bell", CA_PROP_EVENT_DESCRIPTION, "Sylvora alert",
                        nullptr) != CA_SUCCESS) {
        QApplication::beep();
    }
}
}  // namespace

void installDesktopBeep() {
    if (gSoundContext == nullptr && ca_context_create(&gSoundContext) != CA_SUCCESS) gSoundContext = nullptr;
    if (gSoundContext != nullptr) {
        ca_context_change_props(gSoundContext, CA_PROP_APPLICATION_NAME, "Sylvora", CA_PROP_APPLICATION_ID,
                                "sylvora", nullptr);
    }
    setSysBeepHook(playBell);
}

void removeDesktopBeep() {
    setSysBeepHook({});
    if (gSoundContext != nullptr) ca_context_destroy(gSoundContext);
    gSoundContext = nullptr;
}

}  // namespace sylvora::app
