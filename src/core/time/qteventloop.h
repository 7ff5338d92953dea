#pragma once

// The event loop of the desktop app and the live player: Qt's own loop, with precise timers and
// the monotonic clock (seconds since boot).
//
// Lifecycle: construct on the main thread once a QCoreApplication exists -> installTimer() any
// time -> the callbacks run from Qt's loop (a delay of 0 means its next turn) -> removeTimer(),
// also from inside the timer's own callback -> destroy, which drops the remaining timers.

#include <functional>
#include <memory>
#include <vector>

#include "core/time/eventloop.h"

namespace sylvora {

class QtEventLoop final : public EventLoop {
public:
    QtEventLoop();
    ~QtEventLoop() override;
    QtEventLoop(const QtEventLoop&) = delete;
    QtEventLoop& operator=(const QtEventLoop&) = delete;

    // [main]
    double currentEventTime() const override;
    EventLoopTimerRef installTimer(double delay, double interval, std::function<void()> callback) override;
    void removeTimer(EventLoopTimerRef timer) override;
    EventLoopWatchRef installWatch(int fd, std::function<void()> callback) override;
    void removeWatch(EventLoopWatchRef watch) override;
    void rearmTimer(EventLoopTimerRef timer, double time) override;

private:
    class Timer;
    void fire(Timer& timer);
    void retire(Timer& timer);

    std::vector<std::unique_ptr<Timer>> timers_;
    // Timers removed while their own callback ran: their QTimer is still emitting, so they are
    // destroyed at the next safe moment instead.
    std::vector<std::unique_ptr<Timer>> retired_;

    class Watch;
    std::vector<std::unique_ptr<Watch>> watches_;
};

// [any] CLOCK_MONOTONIC in seconds: counts from boot and never goes back.
double monotonicSecondsSinceBoot();

}  // namespace sylvora
