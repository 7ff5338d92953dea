#pragma once

// One place that says "something the menus, the tray or the desktop show may have changed": after
// every command, dialog result and window shown or hidden. Whatever mirrors the application's state
// (enabled menu items, check marks, the tray's menu and tooltip, the media-player interface)
// recomputes itself from the globals when it hears it, so no path can forget to update one of them,
// and a shortcut is never blocked by a stale enabled state.

#include <QObject>
#include <atomic>

namespace sylvora::app {

class ShellEvents : public QObject {
    Q_OBJECT
public:
    static ShellEvents& instance();

    // [main] Emits stateChanged at once.
    void notifyStateChanged() { Q_EMIT stateChanged(); }
    // [any thread] Emits stateChanged once, on the main loop's next turn, however often it is asked
    // before then: for news that arrives in the middle of another operation (an edit of the world,
    // its timer, the sound server's thread), which the windows must not read half done.
    void notifyStateChangedSoon();

Q_SIGNALS:
    void stateChanged();

private:
    std::atomic<bool> pending_{false};
};

}  // namespace sylvora::app
