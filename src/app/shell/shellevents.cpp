#include "app/shell/shellevents.h"

namespace sylvora::app {

ShellEvents& ShellEvents::instance() {
    static ShellEvents events;
    return events;
}

void ShellEvents::notifyStateChangedSoon() {
    if (pending_.exchange(true)) return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            pending_ = false;
            notifyStateChanged();
        },
        Qt::QueuedConnection);
}

}  // namespace sylvora::app
