#pragma once

// An event loop without a thread or a wall clock, for offline renders and tests. Its clock is the
// audio time rendered so far plus a fixed origin: the event clock counts from start-up, and a start
// time of 0 or less means "not scheduled", so the clock must never read 0 (and a crossfade longer
// than a loop must not push a start time below it).
//
// The clock runs one part in a billion faster than the audio. On a real machine the event clock and
// the audio clock are separate oscillators, so a start time reckoned from a sound's position never
// falls exactly on a later tick; the scheduler counts "now equal to a start time" as not yet started,
// and one shared count would make such ties routine (every loop whose length is a whole number of
// ticks). The skew breaks them the way a real clock does, and moves nothing by a sample in hours.
//
// Lifecycle: install timers and watches -> setAudioTime() moves the clock -> processDueTimers() is
// one turn of the loop, running the watches whose descriptors are readable, then every timer that is
// due. A watch is the real descriptor asked without waiting, so a test sees exactly the kernel's
// notifications, at the turn after they came. A timer installed with delay 0 first fires on the next
// turn, never inside installTimer, then every `interval` seconds of audio time. Like a real loop it
// does not catch up: a timer late by several intervals fires once and resumes on its grid.

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "core/time/eventloop.h"

namespace sylvora {

class VirtualEventLoop final : public EventLoop {
public:
    static constexpr double DEFAULT_CLOCK_ORIGIN = 1000.0;
    static constexpr double CLOCK_SKEW = 1e-9;

    explicit VirtualEventLoop(double clockOrigin = DEFAULT_CLOCK_ORIGIN);
    ~VirtualEventLoop() override;
    VirtualEventLoop(const VirtualEventLoop&) = delete;
    VirtualEventLoop& operator=(const VirtualEventLoop&) = delete;

    // [main]
    double currentEventTime() const override { return clockOrigin_ + audioTime_ * (1.0 + CLOCK_SKEW); }
    EventLoopTimerRef installTimer(double delay, double interval, std::function<void()> callback) override;
    void removeTimer(EventLoopTimerRef timer) override;
    EventLoopWatchRef installWatch(int fd, std::function<void()> callback) override;
    void removeWatch(EventLoopWatchRef watch) override;
    void rearmTimer(EventLoopTimerRef timer, double time) override;

    // [main] Moves the clock to `seconds` of rendered audio; it never goes back.
    void setAudioTime(double seconds);
    double audioTime() const { return audioTime_; }
    double clockOrigin() const { return clockOrigin_; }

    // [main] A timer this close to the clock counts as due. The renderer sets half a tick's
    // rounding (a frame), so a timer on the 1/15-s grid fires at the block boundary nearest to it.
    void setTolerance(double seconds) { tolerance_ = seconds; }

    // [main] One turn: runs the watches whose descriptors are readable, then fires every timer due
    // at the current clock, earliest first (install order among equals). Timers and watches
    // installed during the turn wait for the next one. Returns how many callbacks ran.
    int processDueTimers();

    // [main] Installed timers, and the earliest time one of them is due (0 with none).
    int timerCount() const;
    double nextDueTime() const;

private:
    class Timer;
    std::vector<std::unique_ptr<Timer>> timers_;
    class Watch;
    int serveReadyWatches();
    std::vector<std::unique_ptr<Watch>> watches_;
    double clockOrigin_;
    double audioTime_ = 0.0;
    double tolerance_ = 1e-9;
    std::uint64_t nextSequence_ = 0;
    std::uint64_t turn_ = 0;
    bool processing_ = false;
};

}  // namespace sylvora
