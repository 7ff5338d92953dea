#include "app/desktop/trayicon.h"

#include <QApplication>
#include <QTimer>

#include "app/desktop/sleeptimermenu.h"
#include "app/info/controlstrip.h"
#include "app/shell/applicationevents.h"
#include "app/shell/commanddispatch.h"
#include "app/shell/globals.h"
#include "app/shell/menus.h"
#include "app/shell/shellevents.h"
#include "app/shell/startup.h"
#include "core/world/world.h"

namespace sylvora::app {

namespace {
constexpr int LOOK_FOR_TRAY_INTERVAL_MS = 2000;
}  // namespace

TrayIcon::TrayIcon() : icon_(QApplication::windowIcon()) {
    connect(&ShellEvents::instance(), &ShellEvents::stateChanged, this, &TrayIcon::refresh);
    if (SleepTimerMenu* sleep = SleepTimerMenu::instance()) {
        connect(sleep, &SleepTimerMenu::statusTextChanged, this, &TrayIcon::refresh);
    }
    connect(&icon_, &QSystemTrayIcon::activated, this, [](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger) postCommand(command::SHOW);
    });
    showWhenTrayAvailable();
    if (shown_) return;
    lookForTray_ = new QTimer(this);
    lookForTray_->setInterval(LOOK_FOR_TRAY_INTERVAL_MS);
    connect(lookForTray_, &QTimer::timeout, this, &TrayIcon::showWhenTrayAvailable);
    lookForTray_->start();
}

void TrayIcon::showWhenTrayAvailable() {
    if (shown_ || !QSystemTrayIcon::isSystemTrayAvailable()) return;
    if (lookForTray_ != nullptr) lookForTray_->stop();
    shown_ = true;
    icon_.setContextMenu(dockMenu);
    refresh();
    icon_.show();
    setTrayAvailable(true);  // closing the last window no longer quits
}

void TrayIcon::refresh() {
    if (!shown_) return;
    rebuildDockMenu();
    const QString name = gCurrentWorld->getName();
    QString tip = name.isEmpty() ? QApplication::applicationDisplayName()
                                 : QStringLiteral("%1 — %2").arg(QApplication::applicationDisplayName(), name);
    if (soundServerMissing()) tip += QLatin1Char('\n') + tr("No sound server — waiting");
    if (const QString unreadable = ControlStrip::unreadableText(); !unreadable.isEmpty()) {
        tip += QLatin1Char('\n') + unreadable;
    }
    if (const SleepTimerMenu* sleep = SleepTimerMenu::instance(); sleep && !sleep->statusText().isEmpty()) {
        tip += QLatin1Char('\n') + sleep->statusText();
    }
    icon_.setToolTip(tip);
}

}  // namespace sylvora::app
