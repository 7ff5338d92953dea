#pragma once

// The Dock tile's part on a Linux desktop: a tray icon whose menu is the Dock menu (known worlds,
// the volume levels, Show and Quit) and whose click shows the Get Info window. The menu is rebuilt
// whenever the state changes, because some tray hosts never say when they open it; without a tray
// nothing is rebuilt (the rebuild also forgets deleted worlds, which nobody would see).

#include <QObject>
#include <QSystemTrayIcon>

class QTimer;

namespace sylvora::app {

class TrayIcon : public QObject {
    Q_OBJECT
public:
    TrayIcon();
    // Whether the desktop shows the icon; without a tray the application keeps a window visible.
    bool isShown() const { return shown_; }
    QSystemTrayIcon& icon() { return icon_; }

private:
    void refresh();
    // Shows the icon once the desktop has a tray: a panel may start after Sylvora does.
    void showWhenTrayAvailable();

    QSystemTrayIcon icon_;
    QTimer* lookForTray_ = nullptr;
    bool shown_ = false;
};

}  // namespace sylvora::app
