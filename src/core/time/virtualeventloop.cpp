#include "core/time/virtualeventloop.h"

#include <algorithm>
#include <cmath>

#include "core/time/eventlooptimer.h"

namespace sylvora {

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
    std::int64_t fired = 0;
    bool removed = false;
    bool spent = false;  // a one-shot timer that has fired stays installed, silent, until removed
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

// [main] Removal during a turn only marks the timer: its callback may be the one running.
void VirtualEventLoop::removeTimer(EventLoopTimerRef timer) {
    const auto it = std::find_if(timers_.begin(), timers_.end(),
                                 [timer](const std::unique_ptr<Timer>& t) { return t.get() == timer; });
    if (it == timers_.end()) {
        return;
    }
    if (processing_) {
        (*it)->removed = true;
    } else {
        timers_.erase(it);
    }
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

    int fired = 0;
    for (Timer* timer : due) {
        if (timer->removed) {
            continue;
        }
        timer->callback();
        ++fired;
        if (timer->removed) {
            continue;
        }
        if (timer->interval > 0.0) {
            // Next grid point after now; missed ones are skipped, as a busy real loop does.
            const auto passed = static_cast<std::int64_t>(std::floor((now + tolerance_ - timer->first) / timer->interval));
            timer->fired = std::max(timer->fired + 1, passed + 1);
        } else {
            timer->spent = true;
        }
    }

    std::erase_if(timers_, [](const std::unique_ptr<Timer>& t) { return t->removed; });
    processing_ = false;
    return fired;
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
