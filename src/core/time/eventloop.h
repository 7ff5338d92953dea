#pragma once

// The event clock and the repeating timers of the main event loop. The desktop app and the live
// command-line player use Qt's event loop (QtEventLoop); tests and offline renders use a virtual
// loop whose clock is the rendered audio time (VirtualEventLoop). The same World code runs on all.
//
// Lifecycle: installTimer() -> the callback runs on the main thread, first after `delay` seconds
// (0: on the loop's next turn, never inside installTimer itself), then every `interval` seconds ->
// removeTimer(). A callback may install or remove timers, its own included.
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
};

}  // namespace sylvora
