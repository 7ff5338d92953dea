#pragma once

// The event clock and the repeating timers of the main event loop. The desktop app and the live
// command-line player use Qt's event loop (QtEventLoop); tests and offline renders use a virtual
// loop whose clock is the rendered audio time (VirtualEventLoop). The same World code runs on all.
//
// Lifecycle: installTimer() -> the callback runs on the main thread, first after `delay` seconds
// (0: on the loop's next turn, never inside installTimer itself), then every `interval` seconds ->
// removeTimer(). A callback may install, rearm or remove timers, its own included.
// installWatch() -> the callback runs on the main thread, on a turn of the loop, whenever the
// descriptor has something to read (it must read it, or it is called again at once) ->
// removeWatch(), also from inside the callback. The loop never owns or closes the descriptor.

#include <functional>

namespace sylvora {

class EventLoopTimer;  // opaque; owned by the loop
using EventLoopTimerRef = EventLoopTimer*;
class EventLoopWatch;  // opaque; owned by the loop
using EventLoopWatchRef = EventLoopWatch*;

class EventLoop {
public:
    virtual ~EventLoop() = default;

    // [main] GetCurrentEventTime: seconds on a monotonic clock that counts from some start-up
    // moment. Never 0 or less, because a start time of 0 or less means "not scheduled".
    virtual double currentEventTime() const = 0;

    // [main] InstallEventLoopTimer / RemoveEventLoopTimer.
    virtual EventLoopTimerRef installTimer(double delay, double interval, std::function<void()> callback) = 0;
    virtual void removeTimer(EventLoopTimerRef timer) = 0;

    // [main] A descriptor the loop wakes for, such as a file watcher's.
    virtual EventLoopWatchRef installWatch(int fd, std::function<void()> callback) = 0;
    virtual void removeWatch(EventLoopWatchRef watch) = 0;

    // [main] A repeating timer skips the points of its grid (its first due time plus whole
    // intervals) that come before `time`: it next fires at the first point at or after `time`,
    // never at or before a point it has fired at, nor at one already past (a `time` of 0: its next
    // point from now). A point within a microsecond of `time` counts as at it. Later firings keep
    // to the grid as before. A one-shot timer ignores it.
    virtual void rearmTimer(EventLoopTimerRef timer, double time) = 0;
};

}  // namespace sylvora
