// The two event loops the world runs on: Qt's for the app, the virtual one for renders and tests.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <functional>

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

TEST(VirtualEventLoop, ZeroDelayTimerFiresOnTheNextTurnThenEveryInterval) {
    VirtualEventLoop loop;
    int fired = 0;
    loop.installTimer(0.0, TICK, [&] { ++fired; });
    EXPECT_EQ(fired, 0) << "a timer must never fire inside installTimer";
    EXPECT_EQ(loop.processDueTimers(), 1);
    EXPECT_EQ(fired, 1);
    EXPECT_EQ(loop.processDueTimers(), 0) << "same clock, next point not reached";
    loop.setAudioTime(TICK / 2);
    loop.processDueTimers();
    EXPECT_EQ(fired, 1);
    loop.setAudioTime(TICK);
    loop.processDueTimers();
    EXPECT_EQ(fired, 2);
}

TEST(VirtualEventLoop, DelayedTimerWaitsForItsDelay) {
    VirtualEventLoop loop;
    int fired = 0;
    loop.installTimer(0.5, 0.25, [&] { ++fired; });
    loop.processDueTimers();
    loop.setAudioTime(0.49);
    loop.processDueTimers();
    EXPECT_EQ(fired, 0);
    loop.setAudioTime(0.5);
    loop.processDueTimers();
    loop.setAudioTime(0.75);
    loop.processDueTimers();
    EXPECT_EQ(fired, 2);
}

// Driven the way the renderer drives it, the 1/15-s timer fires once at every block boundary, for
// rates where a tick is a whole number of frames and for one where it is not.
TEST(VirtualEventLoop, RendererBoundariesHitEveryTickWithoutDrift) {
    for (const int rate : {44100, 48000, 8000, 11025}) {
        VirtualEventLoop loop;
        loop.setTolerance(1.0 / rate);
        int fired = 0;
        loop.installTimer(0.0, TICK, [&] { ++fired; });
        const int ticks = 15 * 600;  // ten minutes
        for (int k = 0; k < ticks; ++k) {
            const auto frame = (2ULL * static_cast<unsigned long long>(k) * static_cast<unsigned>(rate) + 15) / 30;
            loop.setAudioTime(static_cast<double>(frame) / rate);
            ASSERT_EQ(loop.processDueTimers(), 1) << "rate " << rate << " tick " << k;
        }
        EXPECT_EQ(fired, ticks);
    }
}

TEST(VirtualEventLoop, ALateTimerFiresOnceAndKeepsItsGrid) {
    VirtualEventLoop loop;
    int fired = 0;
    loop.installTimer(0.0, 0.1, [&] { ++fired; });
    loop.processDueTimers();
    loop.setAudioTime(1.05);
    EXPECT_EQ(loop.processDueTimers(), 1);
    EXPECT_NEAR(loop.nextDueTime(), loop.clockOrigin() + 1.1, 1e-9);
    EXPECT_EQ(fired, 2);
}

TEST(VirtualEventLoop, ATimerMayRemoveItselfAndOthersFromItsCallback) {
    VirtualEventLoop loop;
    int firstFired = 0;
    int secondFired = 0;
    EventLoopTimerRef first = nullptr;
    EventLoopTimerRef second = nullptr;
    first = loop.installTimer(0.0, TICK, [&] {
        ++firstFired;
        loop.removeTimer(first);
        loop.removeTimer(second);
    });
    second = loop.installTimer(0.0, TICK, [&] { ++secondFired; });
    loop.processDueTimers();
    loop.setAudioTime(1.0);
    loop.processDueTimers();
    EXPECT_EQ(firstFired, 1);
    EXPECT_EQ(secondFired, 0) << "removed before its turn in the same pass";
    EXPECT_EQ(loop.timerCount(), 0);
}

TEST(VirtualEventLoop, TimersInstalledDuringATurnWaitForTheNextOne) {
    VirtualEventLoop loop;
    int inner = 0;
    EventLoopTimerRef outer = nullptr;
    outer = loop.installTimer(0.0, 0.0, [&] {
        loop.installTimer(0.0, TICK, [&] { ++inner; });
        loop.removeTimer(outer);
    });
    loop.processDueTimers();
    EXPECT_EQ(inner, 0);
    loop.processDueTimers();
    EXPECT_EQ(inner, 1);
}

TEST(VirtualEventLoop, OneShotTimerFiresOnceAndStaysInstalledUntilRemoved) {
    VirtualEventLoop loop;
    int fired = 0;
    EventLoopTimerRef timer = loop.installTimer(0.5, 0.0, [&] { ++fired; });
    for (double t = 0.0; t < 3.0; t += 0.25) {
        loop.setAudioTime(t);
        loop.processDueTimers();
    }
    EXPECT_EQ(fired, 1);
    EXPECT_EQ(loop.timerCount(), 1);
    loop.removeTimer(timer);
    EXPECT_EQ(loop.timerCount(), 0);
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

TEST(QtEventLoop, ZeroDelayTimerFiresOnTheLoopsNextTurnNotInsideInstall) {
    QtEventLoop loop;
    int fired = 0;
    EventLoopTimerRef timer = loop.installTimer(0.0, TICK, [&] { ++fired; });
    EXPECT_EQ(fired, 0);
    ASSERT_TRUE(spinUntil([&] { return fired >= 3; }));
    loop.removeTimer(timer);
    const int afterRemoval = fired;
    int marker = 0;
    EventLoopTimerRef later = loop.installTimer(0.3, 0.0, [&] { ++marker; });
    ASSERT_TRUE(spinUntil([&] { return marker == 1; }));
    EXPECT_EQ(fired, afterRemoval) << "a removed timer fired again";
    loop.removeTimer(later);
}

TEST(QtEventLoop, ATimerRemovingItselfInItsCallbackStopsSafely) {
    QtEventLoop loop;
    int fired = 0;
    EventLoopTimerRef timer = nullptr;
    timer = loop.installTimer(0.0, 0.01, [&] {
        if (++fired == 3) loop.removeTimer(timer);
    });
    ASSERT_TRUE(spinUntil([&] { return fired >= 3; }));
    int marker = 0;
    EventLoopTimerRef later = loop.installTimer(0.2, 0.0, [&] { ++marker; });
    ASSERT_TRUE(spinUntil([&] { return marker == 1; }));
    EXPECT_EQ(fired, 3);
    loop.removeTimer(later);
}

}  // namespace
}  // namespace sylvora
