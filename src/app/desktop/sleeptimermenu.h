#pragma once

// The sleep timer as the desktop app offers it: a "Sleep Timer" submenu (Off, 15, 30, 45, 60 and 90
// minutes, the running choice checked) at the end of the Volume menu and in the tray's menu, and the
// time left for the tray's tooltip. The timer itself (the fade, the stop, the volume given back) is
// core's SleepTimer; changes are announced through ShellEvents like every other state change.
//
// Lifecycle: one instance, made at start-up after the menus and the world -> destroyed at shut-down
// before the preferences are written, which gives back a volume held down by a fade. Main thread.

#include <QObject>
#include <QString>
#include <QTimer>
#include <array>
#include <memory>

#include "core/playback/sleeptimer.h"

class QAction;
class QActionGroup;
class QMenu;

namespace sylvora {
class World;
}

namespace sylvora::app {

class SleepTimerMenu : public QObject {
    Q_OBJECT
public:
    static constexpr std::array<int, 6> CHOICES_MINUTES{0, 15, 30, 45, 60, 90};  // 0 is Off

    explicit SleepTimerMenu(World& world);
    ~SleepTimerMenu() override;
    static SleepTimerMenu* instance();

    QMenu* menu() const { return menu_.get(); }
    SleepTimer& timer() { return timer_; }
    const SleepTimer& timer() const { return timer_; }
    // [main] Starts the timer for `minutes`, or with 0 turns it off.
    void choose(int minutes);
    // "Sleep timer: 14 min left"; empty while off.
    QString statusText() const;

Q_SIGNALS:
    void statusTextChanged();

private:
    void refresh();

    SleepTimer timer_;
    std::unique_ptr<QMenu> menu_;
    QActionGroup* group_ = nullptr;
    std::array<QAction*, CHOICES_MINUTES.size()> items_{};
    QAction* separator_ = nullptr;  // before the submenu in the Volume menu
    QTimer clock_;                  // while the timer runs, for the time left
    QString lastStatus_;
};

// The master volume a person chose: the world's volume, or while the sleep timer's fade holds it
// lower, the level it fades from. Menus, the media-player interface and the volume steps use it.
double masterVolume();

}  // namespace sylvora::app
