#include "core/time/qteventloop.h"

#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>
#include <limits>

#include "core/time/eventlooptimer.h"

namespace sylvora {

class QtEventLoop::Timer final : public EventLoopTimer {
public:
    Timer(std::function<void()> cb, double firstDue, double repeat)
        : callback(std::move(cb)), first(firstDue), interval(repeat) {
        qtimer.setSingleShot(true);
        qtimer.setTimerType(Qt::PreciseTimer);
    }

    // Each firing rearms a single shot for the next point of the grid counted from the first due
    // time, so a 1/15-s timer keeps 15 per second although Qt counts in whole milliseconds.
    void armFor(double due, double now) {
        const double waitMs = std::ceil(std::max(0.0, due - now) * 1000.0);
        qtimer.start(std::chrono::milliseconds(static_cast<std::int64_t>(std::min(waitMs, 2147483647.0))));
    }

    QTimer qtimer;
    std::function<void()> callback;
    double first;
    double interval;
    std::int64_t fired = 0;  // the grid point it is armed for
    std::int64_t lastFired = -1;
    bool firing = false;
    bool rearmed = false;  // by its own callback, which then decides the next point
    bool removed = false;
};

class QtEventLoop::Watch final : public EventLoopWatch {
public:
    explicit Watch(int fd) : notifier(new QSocketNotifier(fd, QSocketNotifier::Read)) {}
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    // Its signal may be the one running: the notifier goes once Qt's loop is back in control.
    ~Watch() override {
        notifier->setEnabled(false);
        notifier->deleteLater();
    }

    QSocketNotifier* notifier;
};

double monotonicSecondsSinceBoot() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const double seconds = static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
    // A start time of 0 or less means "not scheduled"; the clock must never read it, even in a
    // freshly booted container.
    return std::max(seconds, std::numeric_limits<double>::min());
}

QtEventLoop::QtEventLoop() = default;

QtEventLoop::~QtEventLoop() = default;

// [main]
double QtEventLoop::currentEventTime() const { return monotonicSecondsSinceBoot(); }

// [main] The first firing is always posted to Qt's loop, even with a delay of 0.
EventLoopTimerRef QtEventLoop::installTimer(double delay, double interval, std::function<void()> callback) {
    const double now = currentEventTime();
    auto timer = std::make_unique<Timer>(std::move(callback), now + std::max(0.0, delay), interval);
    Timer* raw = timer.get();
    QObject::connect(&raw->qtimer, &QTimer::timeout, [this, raw] { fire(*raw); });
    raw->armFor(raw->first, now);
    timers_.push_back(std::move(timer));
    return raw;
}

// [main]
void QtEventLoop::removeTimer(EventLoopTimerRef ref) {
    const auto it = findRecord(timers_, ref);
    if (it == timers_.end()) {
        return;
    }
    Timer& timer = **it;
    timer.qtimer.stop();
    if (timer.firing) {
        timer.removed = true;  // fire() retires it once the callback has returned
    } else {
        timers_.erase(it);
    }
}

// [main]
void QtEventLoop::rearmTimer(EventLoopTimerRef ref, double time) {
    const auto it = findRecord(timers_, ref);
    if (it == timers_.end() || (*it)->removed || (*it)->interval <= 0.0) {
        return;
    }
    Timer* timer = it->get();
    const double now = currentEventTime();
    const std::int64_t earliest =
        std::max(timer->lastFired + 1, gridPointAtOrAfter(timer->first, timer->interval, now));
    timer->fired = std::max(earliest, gridPointAtOrAfter(timer->first, timer->interval, time));
    if (timer->firing) {
        timer->rearmed = true;  // fire() arms it once the callback has returned
    } else {
        timer->armFor(timer->first + static_cast<double>(timer->fired) * timer->interval, now);
    }
}

void QtEventLoop::retire(Timer& timer) {
    const auto it = findRecord(timers_, &timer);
    if (it != timers_.end()) {
        retired_.push_back(std::move(*it));
        timers_.erase(it);
    }
}

// [main] Called from the QTimer's timeout; the timers retired earlier are no longer emitting.
void QtEventLoop::fire(Timer& timer) {
    retired_.clear();
    timer.lastFired = timer.fired;
    timer.rearmed = false;
    timer.firing = true;
    timer.callback();
    timer.firing = false;
    if (timer.removed) {
        retire(timer);
        return;
    }
    if (timer.interval <= 0.0) {
        return;  // one-shot: stays installed and silent until removed
    }
    const double now = currentEventTime();
    if (!timer.rearmed) {
        const auto passed = static_cast<std::int64_t>(std::floor((now - timer.first) / timer.interval));
        timer.fired = std::max(timer.fired + 1, passed + 1);
    }
    timer.armFor(timer.first + static_cast<double>(timer.fired) * timer.interval, now);
}

// [main] The callback lives in the notifier's connection, so that it outlasts a removal from
// inside itself.
EventLoopWatchRef QtEventLoop::installWatch(int fd, std::function<void()> callback) {
    watches_.push_back(std::make_unique<Watch>(fd));
    QObject::connect(watches_.back()->notifier, &QSocketNotifier::activated, std::move(callback));
    return watches_.back().get();
}

// [main]
void QtEventLoop::removeWatch(EventLoopWatchRef ref) {
    if (const auto it = findRecord(watches_, ref); it != watches_.end()) {
        watches_.erase(it);
    }
}

}  // namespace sylvora
