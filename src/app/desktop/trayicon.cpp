#include "app/desktop/trayicon.h"

#include <QApplication>

#include "app/desktop/sleeptimermenu.h"
#include "app/shell/commanddispatch.h"
#include "app/shell/globals.h"
#include "app/shell/menus.h"
#include "app/shell/shellevents.h"
#include "core/world/world.h"

namespace sylvora::app {

TrayIcon::TrayIcon() : icon_(QApplication::windowIcon()) {
    rebuildDockMenu();
    connect(&ShellEvents::instance(), &ShellEvents::stateChanged, this, &TrayIcon::refresh);
    if (SleepTimerMenu* sleep = SleepTimerMenu::instance()) {
        connect(sleep, &SleepTimerMenu::statusTextChanged, this, &TrayIcon::refresh);
    }
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
    QString tip = name.isEmpty() ? QApplication::applicationDisplayName()
                                 : QStringLiteral("%1 — %2").arg(QApplication::applicationDisplayName(), name);
    if (const SleepTimerMenu* sleep = SleepTimerMenu::instance(); sleep && !sleep->statusText().isEmpty()) {
        tip += QLatin1Char('\n') + sleep->statusText();
    }
    icon_.setToolTip(tip);
}

}  // namespace sylvora::app
