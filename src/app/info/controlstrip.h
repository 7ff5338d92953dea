#pragma once

// The strip below the Get Info window's picture, as the menu bar is above it: play and pause, the
// master volume as a slider, the sleep timer with its time left, and what the world is doing. Each
// control goes through the same command or World call as the menus, and the strip follows every
// change made elsewhere (menus, tray, media keys, the sleep timer) by listening to ShellEvents.
//
// Lifecycle: made with the Get Info window from its entry, after the sleep timer's menu -> lives
// until the window goes at shut-down. Main thread only.

#include <QWidget>

class QLabel;
class QSlider;
class QToolButton;

namespace sylvora::app {

class ControlStrip : public QWidget {
    Q_OBJECT
public:
    static constexpr int VOLUME_STEPS = 100;  // the slider's 0 to 100 %

    explicit ControlStrip(QWidget* parent = nullptr);

    QToolButton* playPauseButton() const { return playPause_; }
    QSlider* volumeSlider() const { return volume_; }
    QToolButton* sleepButton() const { return sleep_; }
    QLabel* stateLabel() const { return state_; }

    // "Playing", "Paused" or "Sleeping in 12 min"; "No sound server — waiting" while there is none;
    // while playing, followed by unreadableText() when a loop sound sits out.
    static QString stateText();
    // "cannot read: rain, creek": the loop sounds whose files could not be read; empty when none.
    static QString unreadableText();
    // [main] Shows the world's state, the master volume and the time the sleep timer has left.
    void refresh();

private:
    void volumeMoved(int value);
    void holdLowLatency(bool held);

    QToolButton* playPause_ = nullptr;
    QSlider* volume_ = nullptr;
    QToolButton* sleep_ = nullptr;
    QLabel* state_ = nullptr;
    bool listeningToSleepTimer_ = false;
};

}  // namespace sylvora::app
