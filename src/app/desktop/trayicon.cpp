#include "app/desktop/trayicon.h"

#include <QApplication>

#include "app/shell/commanddispatch.h"
#include "app/shell/globals.h"
#include "app/shell/menus.h"
#include "app/shell/shellevents.h"
#include "core/world/world.h"

namespace sylvora::app {

TrayIcon::TrayIcon() : icon_(QApplication::windowIcon()) {
    rebuildDockMenu();
    connect(&ShellEvents::instance(), &ShellEvents::stateChanged, this, &TrayIcon::refresh);
    if (!QSystemTrayIcon::isSystemTrayAvailable()) return;
    icon_.setContextMenu(dockMenu);
    connect(&icon_, &QSystemTrayIcon::activated, this, [](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger) postCommand(command::SHOW);
    });
    refresh();
    icon_.show();
    shown_ = true;
}

void TrayIcon::refresh() {
    rebuildDockMenu();
    const QString name = gCurrentWorld->getName();
    icon_.setToolTip(name.isEmpty() ? QApplication::applicationDisplayName()
                                    : QStringLiteral("%1 — %2").arg(QApplication::applicationDisplayName(), name));
}

}  // namespace sylvora::app
