#include "core/time/virtualeventloop.h"

#include <poll.h>

#include <algorithm>
#include <cmath>

#include "core/time/eventlooptimer.h"

namespace sylvora {

namespace {

// Removal during a turn only marks the record: its callback may be the one running.
template <typename Record>
void remove(std::vector<std::unique_ptr<Record>>& records, const void* ref, bool processing) {
    const auto it = findRecord(records, ref);
    if (it == records.end()) {
        return;
    }
    if (processing) {
        (*it)->removed = true;
    } else {
        records.erase(it);
    }
}

}  // namespace

class VirtualEventLoop::Timer final : public EventLoopTimer {
public:
    Timer(std::function<void()> cb, double firstDue, double repeat, std::uint64_t seq, std::uint64_t installedIn)
        : callback(std::move(cb)), first(firstDue), interval(repeat), sequence(seq), installedInTurn(installedIn) {}

    // Due times are counted from the first one rather than accumulated, so they do not drift.
    double due() const { return first + static_cast<double>(fired) * interval; }

    std::function<void()> callback;
    double first;
    double interval;
    std::uint64_t sequence;
    std::uint64_t installedInTurn;
    std::int64_t fired = 0;  // the grid point it is due at
    std::int64_t lastFired = -1;
    bool removed = false;
    bool spent = false;  // a one-shot timer that has fired stays installed, silent, until removed
};

class VirtualEventLoop::Watch final : public EventLoopWatch {
public:
    Watch(int descriptor, std::function<void()> cb, std::uint64_t installedIn)
        : fd(descriptor), callback(std::move(cb)), installedInTurn(installedIn) {}

    int fd;
    std::function<void()> callback;
    std::uint64_t installedInTurn;
    bool removed = false;
};

VirtualEventLoop::VirtualEventLoop(double clockOrigin) : clockOrigin_(clockOrigin > 0.0 ? clockOrigin : DEFAULT_CLOCK_ORIGIN) {}

VirtualEventLoop::~VirtualEventLoop() = default;

// [main]
EventLoopTimerRef VirtualEventLoop::installTimer(double delay, double interval, std::function<void()> callback) {
    // A timer installed while a turn runs belongs to the next turn.
    const std::uint64_t installedIn = processing_ ? turn_ : 0;
    timers_.push_back(std::make_unique<Timer>(std::move(callback), currentEventTime() + std::max(0.0, delay),
                                              interval, nextSequence_++, installedIn));
    return timers_.back().get();
}

// [main]
void VirtualEventLoop::removeTimer(EventLoopTimerRef timer) { remove(timers_, timer, processing_); }

// [main] The point at the clock counts as not yet past, as the renderer may turn the loop there.
void VirtualEventLoop::rearmTimer(EventLoopTimerRef ref, double time) {
    const auto it = findRecord(timers_, ref);
    if (it == timers_.end() || (*it)->removed || (*it)->interval <= 0.0) {
        return;
    }
    Timer& timer = **it;
    const std::int64_t earliest =
        std::max(timer.lastFired + 1, gridPointAtOrAfter(timer.first, timer.interval, currentEventTime() - tolerance_));
    timer.fired = std::max(earliest, gridPointAtOrAfter(timer.first, timer.interval, time));
}

// [main]
void VirtualEventLoop::setAudioTime(double seconds) { audioTime_ = std::max(audioTime_, seconds); }

// [main]
int VirtualEventLoop::processDueTimers() {
    if (processing_) {
        return 0;  // a callback does not run a nested turn
    }
    processing_ = true;
    ++turn_;
    int fired = serveReadyWatches();
    const double now = currentEventTime();

    std::vector<Timer*> due;
    for (const auto& timer : timers_) {
        if (!timer->removed && !timer->spent && timer->installedInTurn != turn_ && timer->due() <= now + tolerance_) {
            due.push_back(timer.get());
        }
    }
    std::sort(due.begin(), due.end(), [](const Timer* a, const Timer* b) {
        return a->due() != b->due() ? a->due() < b->due() : a->sequence < b->sequence;
    });

    for (Timer* timer : due) {
        if (timer->removed) {
            continue;
        }
        // The next point is settled before the callback, which may rearm the timer past it.
        if (timer->interval > 0.0) {
            // Next grid point after now; missed ones are skipped, as a busy real loop does.
            const auto passed = static_cast<std::int64_t>(std::floor((now + tolerance_ - timer->first) / timer->interval));
            timer->lastFired = timer->fired;
            timer->fired = std::max(timer->fired + 1, passed + 1);
        } else {
            timer->spent = true;
        }
        timer->callback();
        ++fired;
    }

    std::erase_if(timers_, [](const std::unique_ptr<Timer>& t) { return t->removed; });
    std::erase_if(watches_, [](const std::unique_ptr<Watch>& w) { return w->removed; });
    processing_ = false;
    return fired;
}

// [main]
EventLoopWatchRef VirtualEventLoop::installWatch(int fd, std::function<void()> callback) {
    watches_.push_back(std::make_unique<Watch>(fd, std::move(callback), processing_ ? turn_ : 0));
    return watches_.back().get();
}

// [main]
void VirtualEventLoop::removeWatch(EventLoopWatchRef watch) { remove(watches_, watch, processing_); }

// [main] Within a turn: every descriptor is asked once, without waiting, before any callback runs.
int VirtualEventLoop::serveReadyWatches() {
    std::vector<Watch*> ready;
    for (const auto& watch : watches_) {
        pollfd asked{watch->fd, POLLIN, 0};
        if (watch->installedInTurn != turn_ && poll(&asked, 1, 0) > 0 && (asked.revents & POLLIN) != 0) {
            ready.push_back(watch.get());
        }
    }
    int served = 0;
    for (Watch* watch : ready) {
        if (!watch->removed) {
            watch->callback();
            ++served;
        }
    }
    return served;
}

// [main]
int VirtualEventLoop::timerCount() const {
    return static_cast<int>(std::count_if(timers_.begin(), timers_.end(),
                                          [](const std::unique_ptr<Timer>& t) { return !t->removed; }));
}

// [main]
double VirtualEventLoop::nextDueTime() const {
    double earliest = 0.0;
    for (const auto& timer : timers_) {
        if (!timer->removed && !timer->spent && (earliest == 0.0 || timer->due() < earliest)) {
            earliest = timer->due();
        }
    }
    return earliest;
}

}  // namespace sylvora
