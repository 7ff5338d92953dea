// When the playback timer runs. It keeps its 1/15-s grid, so the ticks that act are the very ones
// that acted when it ran at every point, but it sleeps through the points at which a tick would
// find nothing to do: after each tick it works out the earliest moment anything would happen (a
// waiting play falls due, a play ends, a fading instance's 8.8 volume takes its next step, what the
// tick listener asks for) and is rearmed for the first point at or after it. An edit that may
// change any of that (a revived loop sound's new turn among them) rearms it for its next point,
// where the tick works it out again.
//
// A play can also end before its end: a streamed sound whose file breaks stops where what was read
// of it runs out. The engine tells how far each play is sure to get, and the timer sleeps no
// further than that, then looks again: the early end is seen at the very tick it always was. It
// costs a look each time the streaming thread's read-ahead (a second or more) has been played. A
// longest sleep instead would see the end up to that sleep late, leaving the next loop sound silent
// meanwhile; a wake sent from the streaming thread would need a way into the main loop that every
// event loop, the virtual one included, honours on its grid.

#include <algorithm>
#include <cmath>
#include <limits>

#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"
#include "core/world/world.h"

namespace sylvora {

namespace {

constexpr double NEVER = std::numeric_limits<double>::infinity();
// Whatever the world says, the timer looks again after this long.
constexpr double LONGEST_SLEEP = 10.0;
// The clock a tick reads is a little off its grid point (a frame in a render, the loop's latency
// live), so a moment is aimed at a little early: at worst a tick wakes to find nothing yet.
constexpr double CLOCK_SLACK = 0.005;
// Positions come from the audio thread, tick times from the event clock, a frame or a rounding
// apart: a step is looked for this far either side of where a play is expected to be.
constexpr double POSITION_SLACK = 0.002;
// How much longer the output's queue may be at a later look than now; a queued output makes an
// environment sound due that much early.
constexpr double QUEUE_GROWTH = 0.5;

}  // namespace

// [main]
void World::wakeForNextTick() {
    if (moviesTaskTimerRef != nullptr) {
        eventLoop.rearmTimer(moviesTaskTimerRef, 0.0);
    }
}

// [main] After a tick; the listener may have stopped the world.
void World::sleepUntilNeeded(double listenerWants) {
    if (moviesTaskTimerRef == nullptr) {
        return;
    }
    const double now = eventLoop.currentEventTime();
    double next = std::min(nextChangeTime(now), now + LONGEST_SLEEP);
    if (listenerWants > 0.0) {
        next = std::min(next, listenerWants);
    }
    eventLoop.rearmTimer(moviesTaskTimerRef, next - CLOCK_SLACK);
}

// [main] The earliest event-clock time at which a tick would act; `now` for the next tick.
double World::nextChangeTime(double now) const {
    if (numMovies < 1) {
        return NEVER;
    }
    // What the audio thread let go is freed only by a tick, and a broken schedule is reported at
    // every tick.
    if (engine.servicePending() || !checkScheduling(false)) {
        return now;
    }
    const double lead = engine.outputDelay();
    double next = NEVER;
    for (int i = 0; i < numMovies; ++i) {
        next = std::min(next, entryChangeTime(movies[static_cast<std::size_t>(i)], now, lead));
    }
    return next;
}

// [main]
double World::entryChangeTime(const MovieEntry& entry, double now, double lead) const {
    if (entry.startTime <= 0.0) {
        return NEVER;
    }
    if (!isDue(entry, now, lead)) {
        return entry.isLoopSound ? entry.startTime : entry.startTime - lead - (lead > 0.0 ? QUEUE_GROWTH : 0.0);
    }
    const audio::SoundInstance& movie = *entry.movie;
    if (movie.isDone() || movie.rate() == 0.0) {
        return now;  // it ends or starts (a cued one any moment now)
    }
    return soundingChangeTime(entry, now);
}

// [main] The first tick at which a sounding entry's volume would be set, or its play be over (or
// may be, by what the engine has read of it). Ticks are counted from this one, `now`, and a
// returned time lies half a tick before the one meant, wherever this tick's clock fell.
double World::soundingChangeTime(const MovieEntry& entry, double now) const {
    const audio::SoundInstance& movie = *entry.movie;
    const std::int16_t current = movie.volume();
    const double position = secondsOf(movie, movie.time());
    if (volumeAt(entry, position) != current) {
        return now;
    }
    const double assured = secondsOf(movie, movie.assuredTime());
    // Where the volume stays what it is: an environment sound's whole play, a loop's stretch
    // between its fade-in and its fade-out.
    const auto crossfade = static_cast<double>(loopSoundsCrossFadeDuration);
    double steadyFrom = -NEVER;
    double steadyTo = NEVER;
    if (entry.isLoopSound) {
        steadyFrom = entry.skipFadeIn ? -NEVER : crossfade;
        steadyTo = entry.duration - crossfade;
    }
    constexpr double TICK = MOVIES_TASK_TIMER_INTERVAL;
    for (double ticks = 1.0;;) {
        const double at = position + ticks * TICK;
        const double tickTime = now + (ticks - 0.5) * TICK;
        if (at + POSITION_SLACK >= assured || ticks * TICK > LONGEST_SLEEP) {
            return tickTime;
        }
        const bool steady = at - POSITION_SLACK >= steadyFrom && at + POSITION_SLACK <= steadyTo;
        if (steady ? volumeAt(entry, at) != current
                   : volumeAt(entry, at - POSITION_SLACK) != current || volumeAt(entry, at + POSITION_SLACK) != current) {
            return tickTime;
        }
        double next = ticks + 1.0;
        if (steady) {
            next = std::max(next, std::ceil((std::min(steadyTo, assured) - POSITION_SLACK - position) / TICK));
        }
        ticks = next;
    }
}

}  // namespace sylvora
