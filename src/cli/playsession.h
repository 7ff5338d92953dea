#pragma once

// A world playing live on the Qt event loop, with its status line and its way out: Ctrl+C, SIGTERM
// or the end of the duration start a one-second fade of the world's volume, after which playback
// stops and the event loop quits. A second Ctrl+C during the fade stops at once. With a sleep timer
// the world fades out over the timer's last 30 s instead, and the session ends with it.

#include <QString>
#include <QTimer>
#include <memory>
#include <optional>

#include "cli/playbackobserver.h"
#include "cli/statusline.h"
#include "core/playback/sleeptimer.h"
#include "core/world/world.h"

namespace sylvora::audio {
class AudioOutput;
}

namespace sylvora::cli {

class PlaySession {
public:
    static constexpr int FADE_TICKS = 15;  // one second at the world's own tick rate

    PlaySession(World& world, QString worldName, std::optional<double> duration);

    // [main] Before begin(): a sleep timer that runs out `seconds` after the start.
    void setSleep(std::optional<double> seconds) { sleepSeconds = seconds; }
    // [main] Before begin(): the output whose waits for a sound server the line tells of.
    void setOutput(const audio::AudioOutput* playing) { output = playing; }
    // [main] Starts the world and the timers; the caller then runs the Qt event loop.
    void begin();
    // [main] Starts the fade-out (once); `immediately` skips it.
    void finish(bool immediately);

    double elapsed() const;

private:
    void showStatus();
    double statusTick();
    void fadeStep();

    World& world;
    QString name;
    std::optional<double> duration;
    std::optional<double> sleepSeconds;
    const audio::AudioOutput* output = nullptr;
    std::unique_ptr<SleepTimer> sleepTimer;
    double startedAt = 0.0;
    double shownSecond = -1.0;  // the whole second of the clock the line last showed
    double volumeBeforeFade = 1.0;
    int fadeTick = -1;  // -1 while not fading
    PlaybackObserver observer;
    StatusLine line;
    QTimer fadeTimer;
    QTimer durationTimer;
};

}  // namespace sylvora::cli
