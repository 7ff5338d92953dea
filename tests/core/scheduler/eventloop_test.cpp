// The two event loops the world runs on: Qt's for the app, the virtual one for renders and tests.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <functional>
#include <vector>

#include "core/time/qteventloop.h"
#include "core/time/virtualeventloop.h"

namespace sylvora {
namespace {

constexpr double TICK = 1.0 / 15.0;

TEST(VirtualEventLoop, ClockStartsAtItsOriginAndFollowsTheAudioForward) {
    VirtualEventLoop loop;
    EXPECT_GT(loop.currentEventTime(), 0.0);
    EXPECT_DOUBLE_EQ(loop.currentEventTime(), VirtualEventLoop::DEFAULT_CLOCK_ORIGIN);
    loop.setAudioTime(2.5);
    EXPECT_NEAR(loop.currentEventTime(), VirtualEventLoop::DEFAULT_CLOCK_ORIGIN + 2.5, 1e-6);
    const double later = loop.currentEventTime();
    loop.setAudioTime(1.0);
    EXPECT_EQ(loop.currentEventTime(), later);

    VirtualEventLoop unusable(0.0);  // an origin that would read 0 is not taken
    EXPECT_GT(unusable.currentEventTime(), 0.0);
}

// A timer never fires inside installTimer: with no delay it fires on the next turn, otherwise once
// its delay has passed, then every interval; a late one fires once and keeps its grid; a one-shot
// fires once and stays installed until removed.
TEST(VirtualEventLoop, TimersFireAfterTheirDelayThenOnTheirGrid) {
    VirtualEventLoop loop;
    int ticks = 0;
    int delayed = 0;
    int oneShot = 0;
    loop.installTimer(0.0, 0.1, [&] { ++ticks; });
    loop.installTimer(0.5, 0.25, [&] { ++delayed; });
    const EventLoopTimerRef once = loop.installTimer(0.3, 0.0, [&] { ++oneShot; });
    EXPECT_EQ(ticks, 0);
    EXPECT_EQ(loop.processDueTimers(), 1);
    EXPECT_EQ(loop.processDueTimers(), 0) << "same clock, next point not reached";
    loop.setAudioTime(0.05);
    loop.processDueTimers();
    EXPECT_EQ(ticks, 1);
    loop.setAudioTime(0.49);
    EXPECT_EQ(loop.processDueTimers(), 2) << "late: the tick fires once, the one-shot is due";
    EXPECT_EQ(ticks, 2);
    EXPECT_EQ(delayed, 0);
    EXPECT_NEAR(loop.nextDueTime(), loop.clockOrigin() + 0.5, 1e-9);
    for (const double t : {0.5, 0.75, 1.0, 2.0}) {
        loop.setAudioTime(t);
        loop.processDueTimers();
    }
    EXPECT_EQ(delayed, 4);
    EXPECT_EQ(oneShot, 1);
    EXPECT_EQ(loop.timerCount(), 3);
    loop.removeTimer(once);
    EXPECT_EQ(loop.timerCount(), 2);
}

// Callbacks may remove any timer, themselves included (a removed timer does not get its turn in the
// same pass), and timers they install wait for the next turn.
TEST(VirtualEventLoop, CallbacksMayInstallAndRemoveTimers) {
    VirtualEventLoop loop;
    int firstFired = 0;
    int secondFired = 0;
    int inner = 0;
    EventLoopTimerRef first = nullptr;
    EventLoopTimerRef second = nullptr;
    first = loop.installTimer(0.0, TICK, [&] {
        ++firstFired;
        loop.removeTimer(first);
        loop.removeTimer(second);
        loop.installTimer(0.0, TICK, [&] { ++inner; });
    });
    second = loop.installTimer(0.0, TICK, [&] { ++secondFired; });
    loop.processDueTimers();
    EXPECT_EQ(firstFired, 1);
    EXPECT_EQ(secondFired, 0);
    EXPECT_EQ(inner, 0);
    loop.setAudioTime(1.0);
    loop.processDueTimers();
    EXPECT_EQ(firstFired, 1);
    EXPECT_EQ(inner, 1);
    EXPECT_EQ(loop.timerCount(), 1);
}

// A rearmed timer skips the points of its grid before the time given and keeps its grid after it;
// a time already past (0 among them) means its next point from now, never one it fired at. Its own
// callback may rearm it, and a one-shot timer ignores it.
TEST(VirtualEventLoop, RearmedTimersFireAtTheirFirstGridPointAtOrAfterTheTime) {
    struct Case {
        const char* what;
        int afterPoint;              // rearmed once this point's turn is over (-1: never)
        std::vector<double> times;   // seconds from the origin, in order
        int inCallbackAt;            // the callback rearms to 0.75 at this point (-1: never)
        std::vector<int> fired;  // -1: the one-shot, at its own time
    };
    const Case cases[] = {
        {"between points", 1, {0.45}, -1, {0, 1, -1, 5, 6, 7, 8}},
        {"on a point, or a rounding past it", 1, {0.5 + 5e-7}, -1, {0, 1, -1, 5, 6, 7, 8}},
        {"later, then back to now", 1, {0.65, 0.0}, -1, {0, 1, 2, 3, -1, 4, 5, 6, 7, 8}},
        {"a time past", 3, {0.05}, -1, {0, 1, 2, 3, -1, 4, 5, 6, 7, 8}},
        {"from its own callback", -1, {}, 2, {0, 1, 2, -1, 8}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        VirtualEventLoop loop;
        std::vector<int> fired;
        int point = 0;
        EventLoopTimerRef timer = nullptr;
        timer = loop.installTimer(0.0, 0.1, [&] {
            fired.push_back(point);
            if (point == c.inCallbackAt) loop.rearmTimer(timer, loop.clockOrigin() + 0.75);
        });
        const EventLoopTimerRef once = loop.installTimer(0.3, 0.0, [&] { fired.push_back(-1); });
        for (point = 0; point < 9; ++point) {
            loop.setAudioTime(point * 0.1);
            loop.processDueTimers();
            if (point == c.afterPoint) {
                for (const double t : c.times) loop.rearmTimer(timer, loop.clockOrigin() + t);
            }
            loop.rearmTimer(once, loop.clockOrigin() + 0.1);
        }
        EXPECT_EQ(fired, c.fired);
    }
}

// Qt's loop: the waits below only bound how long a broken loop may hang the test; nothing asserts
// on how long anything took.
bool spinUntil(const std::function<bool()>& done) {
    QElapsedTimer guard;
    guard.start();
    while (!done() && guard.elapsed() < 10000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
    }
    return done();
}

TEST(QtEventLoop, ClockIsPositiveAndNeverGoesBack) {
    QtEventLoop loop;
    double previous = loop.currentEventTime();
    EXPECT_GT(previous, 0.0);
    for (int i = 0; i < 1000; ++i) {
        const double now = loop.currentEventTime();
        ASSERT_GE(now, previous);
        previous = now;
    }
}

// A timer fires on the loop's turns, never inside installTimer, and stops for good once removed,
// also from its own callback.
TEST(QtEventLoop, TimersFireOnTheLoopAndStopWhenRemoved) {
    QtEventLoop loop;
    int fired = 0;
    EventLoopTimerRef timer = nullptr;
    timer = loop.installTimer(0.0, 0.01, [&] {
        if (++fired == 3) loop.removeTimer(timer);
    });
    EXPECT_EQ(fired, 0);
    ASSERT_TRUE(spinUntil([&] { return fired >= 3; }));
    int marker = 0;
    EventLoopTimerRef later = loop.installTimer(0.2, 0.0, [&] { ++marker; });
    ASSERT_TRUE(spinUntil([&] { return marker == 1; }));
    EXPECT_EQ(fired, 3) << "a removed timer fired again";
    loop.removeTimer(later);

    // Rearmed from its callback and from outside, a timer keeps to its grid and fires no sooner.
    std::vector<double> at;
    EventLoopTimerRef grid = nullptr;
    const double first = loop.currentEventTime();
    grid = loop.installTimer(0.0, 0.01, [&] {
        at.push_back(loop.currentEventTime());
        if (at.size() == 1) loop.rearmTimer(grid, first + 0.095);
    });
    ASSERT_TRUE(spinUntil([&] { return at.size() == 2; }));
    loop.rearmTimer(grid, at.back() + 0.05);
    ASSERT_TRUE(spinUntil([&] { return at.size() == 3; }));
    loop.removeTimer(grid);
    EXPECT_GE(at[1], first + 0.1);
    EXPECT_GE(at[2], first + 0.15);
}

// A watch runs on a turn of its loop while its descriptor has something to read, never before, and
// no more once removed, also from its own callback while there is still something to read. Both
// loops, on a real pipe.
TEST(EventLoops, WatchesRunWhileTheirDescriptorIsReadableUntilRemoved) {
    VirtualEventLoop virtualLoop;
    QtEventLoop qtLoop;
    for (EventLoop* loop : std::initializer_list<EventLoop*>{&virtualLoop, &qtLoop}) {
        SCOPED_TRACE(loop == &qtLoop ? "Qt" : "virtual");
        const auto turns = [&] {
            for (int i = 0; i < 5; ++i) {
                if (loop == &qtLoop) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
                else virtualLoop.processDueTimers();
            }
        };
        int fds[2];
        ASSERT_EQ(pipe2(fds, O_NONBLOCK | O_CLOEXEC), 0);
        int runs = 0;
        EventLoopWatchRef watch = nullptr;
        watch = loop->installWatch(fds[0], [&] {
            char byte = 0;
            ++runs;
            if (read(fds[0], &byte, 1) == 1 && byte == 'x') loop->removeWatch(watch);
        });
        turns();
        EXPECT_EQ(runs, 0);
        ASSERT_EQ(write(fds[1], "a", 1), 1);
        turns();
        EXPECT_EQ(runs, 1) << "run once, and read";
        ASSERT_EQ(write(fds[1], "xy", 2), 2);
        turns();
        EXPECT_EQ(runs, 2) << "removed by itself with a byte still unread";
        close(fds[0]);
        close(fds[1]);
    }
}

}  // namespace
}  // namespace sylvora
