// Playback: the 1/15-second timer that starts due instances, crossfades the loop sounds, applies
// the world's volume and schedules each play's successor with fresh random draws.
//
// Every random number comes from random(), seeded once by the constructor, and the draws are made
// in a fixed order (member pick, then interval, then volume), so a seed replays a world exactly.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"
#include "core/world/world.h"

namespace sylvora {

namespace {

constexpr double RANDOM_MAX = 2147483647.0;

// gain × volume × 256 × world volume, truncated toward zero, of which the low 16 bits are the
// instance's 8.8 volume. Values no sane world produces are pinned first so the truncation stays
// defined; the low-16-bit wrap is kept as the format has always had it.
std::int16_t movieVolume(double gain, double volume, double worldVolume) {
    double value = gain * volume * 256.0 * worldVolume;
    if (std::isnan(value)) {
        value = 0.0;
    }
    constexpr double LIMIT = 4611686018427387904.0;  // 2^62
    value = std::clamp(value, -LIMIT, LIMIT);
    const auto truncated = static_cast<std::int64_t>(value);
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(truncated & 0xFFFF));
}

}  // namespace

double secondsOf(const audio::SoundInstance& movie, std::int64_t time) {
    const std::int32_t timeScale = movie.timeScale();
    return timeScale > 0 ? static_cast<double>(time) / timeScale : 0.0;
}

double equalPowerCrossfade(double fraction, bool fadeIn) {
    if (fadeIn) {
        const double fromEnd = fraction - 1.0;
        return 1.0 - fromEnd * fromEnd;
    }
    return 1.0 - fraction * fraction;
}

// [main]
void World::setVolume(double value) {
    if (std::fabs(value - volume) <= 0.0001) {
        return;
    }
    volume = value < 0.0 ? 0.0 : std::min(1.0, value);
    applyVolumes();
}

// [main] A volume is heard now rather than at the next tick (up to 1/15 s away): the output's
// queue is latency enough. The tick would set the same values.
void World::applyVolumes() {
    if (moviesTaskTimerRef == nullptr) {
        return;
    }
    const double now = eventLoop.currentEventTime();
    const double lead = engine.outputDelay();
    for (int i = 0; i < numMovies; ++i) {
        MovieEntry& entry = movies[static_cast<std::size_t>(i)];
        if (isDue(entry, now, lead) && entry.movie->rate() != 0.0 && !entry.movie->isDone()) {
            updateMovieVolume(entry);
        }
    }
    wakeForNextTick();
}

// [main]
double World::drawUnit() {
    return static_cast<double>(random()) / RANDOM_MAX;
}

// [main] Unreadable sounds sit out the draw; with every sound readable it is what it always was.
SoundID World::pickLoopSound() {
    int readable = 0;
    for (int i = 0; i < numLoopSounds; ++i) {
        readable += loopSounds[static_cast<std::size_t>(i)].unreadable ? 0 : 1;
    }
    if (readable < 1) {
        return 0;
    }
    auto skip = random() % readable;
    for (int i = 0; i < numLoopSounds; ++i) {
        const LoopSound& sound = loopSounds[static_cast<std::size_t>(i)];
        if (!sound.unreadable && skip-- == 0) {
            return sound.id;
        }
    }
    return 0;
}

// [main]
SoundID World::getRandomEnvironmentSoundInGroup(GroupID groupID) {
    std::array<SoundID, MAX_ENVIRONMENT_SOUNDS> members{};
    std::size_t count = 0;
    for (int i = 0; i < numEnvironmentSounds; ++i) {
        const EnvironmentSound& sound = environmentSounds[static_cast<std::size_t>(i)];
        if (sound.settings.groupID == groupID) {
            members[count++] = sound.id;
        }
    }
    if (count == 0) {
        return 0;
    }
    return members[static_cast<std::size_t>(random()) % count];
}

// [main]
double World::drawInterval(SoundID environmentSound) {
    const EnvironmentSound* sound = findEnvironmentSound(environmentSound);
    if (sound == nullptr) {
        return 0.0;
    }
    double minimum = sound->settings.minInterval;
    double maximum = sound->settings.maxInterval;
    if (sound->settings.groupID != 0) {
        if (const EnvironmentSoundGroup* group = findGroup(sound->settings.groupID)) {
            minimum = group->minInterval;
            maximum = group->maxInterval;
        }
    }
    return minimum + drawUnit() * (maximum - minimum);
}

// [main]
double World::drawVolume(SoundID environmentSound) {
    const EnvironmentSound* sound = findEnvironmentSound(environmentSound);
    if (sound == nullptr) {
        return 0.0;
    }
    return sound->settings.minVolume + drawUnit() * (sound->settings.maxVolume - sound->settings.minVolume);
}

// [main] A streamed sound needs its first blocks read before it is due, and it is read from the
// position it will start at: a stopped instance is rewound now rather than when it starts. One that
// is still sounding (a loop instance left to play out) is not touched, and neither is one that is
// done (stopped at its end before a tick saw it end): when its turn comes it counts as a play that
// ended and is not played, so rewinding it here would change what plays and what is drawn.
//
// A loop instance that follows another is cued on it, so that it starts on the very sample at
// which the crossfade begins (at crossfade 0, the sample after the other's last one) instead of at
// the first tick after: what reaches the ear is one unbroken sound, not a gap, an overlap or a dip.
// Its predecessor is the loop instance due last before it. `startTime` stays the time the tick
// expects it by; it begins silent when it fades in.
void World::scheduleMovie(int index, double startTime, double playVolume) {
    wakeForNextTick();
    MovieEntry& entry = movies[static_cast<std::size_t>(index)];
    entry.startTime = startTime;
    entry.volume = playVolume;
    audio::SoundInstance& movie = *entry.movie;
    if (movie.rate() != 0.0 || movie.isDone()) {
        return;
    }
    if (movie.time() != 0) {
        movie.goToBeginning();
    }
    movie.prepareToStart();
    if (!entry.isLoopSound) {
        return;
    }
    const MovieEntry* predecessor = nullptr;
    for (int i = 0; i < numMovies; ++i) {
        const MovieEntry& other = movies[static_cast<std::size_t>(i)];
        if (&other != &entry && other.isLoopSound && other.startTime > 0.0 && other.startTime <= startTime &&
            (predecessor == nullptr || other.startTime > predecessor->startTime)) {
            predecessor = &other;
        }
    }
    if (predecessor != nullptr) {
        const bool entersSilently = loopSoundsCrossFadeDuration > 0;
        movie.setVolume(entersSilently ? std::int16_t{0} : movieVolume(1.0, playVolume, volume));
        movie.cueAfter(*predecessor->movie, loopSoundsCrossFadeDuration);
    }
}

// [main] When the first instance cannot be had, its duration is taken as 0: the second instance is
// then due at once, so the loop chain still begins (c seconds early, which only means now).
void World::startLoopChain(double now) {
    double firstDuration = 0.0;
    SoundID first = pickLoopSound();
    const int firstIndex = getPlayableLoopMovie(first);
    if (firstIndex >= 0) {
        MovieEntry& entry = movies[static_cast<std::size_t>(firstIndex)];
        entry.skipFadeIn = true;
        scheduleMovie(firstIndex, now, getLoopSoundVolume(first));
        firstDuration = entry.duration;
    }
    SoundID second = pickLoopSound();
    const int secondIndex = getPlayableLoopMovie(second);
    if (secondIndex >= 0) {
        scheduleMovie(secondIndex, now + firstDuration - loopSoundsCrossFadeDuration,
                      getLoopSoundVolume(second));
    }
}

// [main]
void World::start() {
    if (moviesTaskTimerRef != nullptr) {
        return;
    }
    moviesTaskTimerRef = eventLoop.installTimer(0.0, MOVIES_TASK_TIMER_INTERVAL, [this] {
        MOVIES_TASK_TIMER_UPP(moviesTaskTimerRef, this);
        sleepUntilNeeded(tickListener ? tickListener() : 0.0);
    });
    const double now = eventLoop.currentEventTime();

    if (numLoopSounds > 0) {
        startLoopChain(now);
    }
    for (int i = 0; i < numEnvironmentSounds; ++i) {
        const EnvironmentSound& sound = environmentSounds[static_cast<std::size_t>(i)];
        if (sound.settings.groupID != 0) {
            continue;
        }
        const SoundID id = sound.id;
        const int index = getUnscheduledMovie(false, id);
        if (index >= 0) {
            const double startTime = now + drawInterval(id);
            const double playVolume = drawVolume(id);
            scheduleMovie(index, startTime, playVolume);
        }
    }
    for (int g = 0; g < numGroups; ++g) {
        const SoundID member = getRandomEnvironmentSoundInGroup(groups[static_cast<std::size_t>(g)].id);
        if (member == 0) {
            continue;
        }
        const int index = getUnscheduledMovie(false, member);
        if (index < 0) {
            continue;
        }
        const double startTime = now + drawInterval(member);
        const double playVolume = drawVolume(member);
        scheduleMovie(index, startTime, playVolume);
    }
}

// [main] The first loop instance is started now rather than at the next tick, fading in, so
// that it takes over from what sounded before without the wait of a tick between them.
void World::startFadingIn(double seconds) {
    start();
    for (int i = 0; i < numMovies; ++i) {
        MovieEntry& entry = movies[static_cast<std::size_t>(i)];
        if (entry.skipFadeIn && entry.startTime > 0.0 && entry.movie->rate() == 0.0) {
            entry.movie->setVolume(movieVolume(1.0, entry.volume, volume));
            entry.movie->fadeNextChange(seconds);
            entry.movie->start();
            return;
        }
    }
}

// [main]
void World::stop() {
    for (int i = 0; i < numMovies; ++i) {
        MovieEntry& entry = movies[static_cast<std::size_t>(i)];
        entry.movie->stop();
        entry.startTime = -1.0;
    }
    removeMoviesTaskTimer();
}

// [main]
void World::removeMoviesTaskTimer() {
    if (moviesTaskTimerRef != nullptr) {
        eventLoop.removeTimer(moviesTaskTimerRef);
        moviesTaskTimerRef = nullptr;
    }
}

// [main] The next loop sound overlaps the instance that is sounding now by the crossfade; with
// none sounding it starts at once.
void World::scheduleNextLoopSound(double now) {
    double next = now;
    for (int i = 0; i < numMovies; ++i) {
        const MovieEntry& entry = movies[static_cast<std::size_t>(i)];
        if (entry.isLoopSound && entry.startTime > 0.0 && now >= entry.startTime) {
            next = now + (entry.duration - secondsOf(*entry.movie, entry.movie->time())) - loopSoundsCrossFadeDuration;
            break;
        }
    }
    SoundID sound = pickLoopSound();
    const int index = getPlayableLoopMovie(sound);
    if (index >= 0) {
        scheduleMovie(index, next, getLoopSoundVolume(sound));
    }
}

// [main] A sound that has left the world is not played again; a group plays any of its members.
void World::scheduleNextEnvironmentPlay(SoundID ended, double now) {
    const EnvironmentSound* sound = findEnvironmentSound(ended);
    if (sound == nullptr) {
        return;
    }
    SoundID next = ended;
    if (sound->settings.groupID != 0) {
        next = getRandomEnvironmentSoundInGroup(sound->settings.groupID);
        if (next == 0) {
            return;
        }
    }
    const int index = getUnscheduledMovie(false, next);
    if (index < 0) {
        return;
    }
    const double startTime = now + drawInterval(next);
    const double playVolume = drawVolume(next);
    scheduleMovie(index, startTime, playVolume);
}

bool World::isDue(const MovieEntry& entry, double now, double lead) {
    return entry.startTime > 0.0 && now + (entry.isLoopSound ? 0.0 : lead) >= entry.startTime;
}

// [main]
void World::serviceMovie(MovieEntry& entry, double now, double lead) {
    if (!isDue(entry, now, lead)) {
        return;
    }
    audio::SoundInstance& movie = *entry.movie;

    if (movie.isDone()) {
        // One failed read is enough: the sound sits out until its file changes, and the chain goes on.
        if (entry.isLoopSound && movie.failedToRead()) {
            markLoopSoundUnreadable(entry.soundID);
            releaseLoopSuccessors(now);
        }
        entry.startTime = -1.0;
        entry.skipFadeIn = false;
        movie.stop();
        movie.goToBeginning();
        if (entry.isLoopSound) {
            scheduleNextLoopSound(now);
        } else {
            // The play ended in what has been rendered; it is heard to end a queue later, and the
            // next one waits its interval from there.
            scheduleNextEnvironmentPlay(entry.soundID, now + lead);
        }
        return;
    }

    if (movie.rate() == 0.0) {
        if (movie.isCued()) {
            return;  // it starts itself when the instance before it gets there
        }
        // A loop instance always enters silently: either it fades in, or (the first of a chain) it
        // takes its full volume at the next tick.
        const bool entersSilently = entry.isLoopSound && loopSoundsCrossFadeDuration > 0;
        movie.setVolume(entersSilently ? std::int16_t{0} : movieVolume(1.0, entry.volume, volume));
        movie.goToBeginning();
        movie.start();
        return;
    }
    updateMovieVolume(entry);
}

void World::updateMovieVolume(MovieEntry& entry) {
    audio::SoundInstance& movie = *entry.movie;
    const std::int16_t newVolume = volumeAt(entry, secondsOf(movie, movie.time()));
    if (newVolume != movie.volume()) {
        movie.setVolume(newVolume);
    }
}

std::int16_t World::volumeAt(const MovieEntry& entry, double position) const {
    double gain = 1.0;
    if (entry.isLoopSound) {
        const auto crossfade = static_cast<double>(loopSoundsCrossFadeDuration);
        if (!entry.skipFadeIn && crossfade > position) {
            gain = equalPowerCrossfade(position / crossfade, true);
        } else if (position > entry.duration - crossfade) {
            gain = equalPowerCrossfade((position - (entry.duration - crossfade)) / crossfade, false);
        }
    }
    return movieVolume(gain, entry.volume, volume);
}

// [main] The timer procedure. Sounds may be added while the walk runs (a successor needing a new
// instance), so the count is read again at every step and new entries are visited this tick.
// It does only what can change: with no entry due it returns after the engine's service (which
// frees what the audio thread let go). The timer runs it only at the ticks where something does
// (world_wake.cpp), and removeLoopSound runs it at once.
void World::moviesTaskTimer(EventLoopTimerRef /*timer*/, void* world) {
    World& self = *static_cast<World*>(world);
    const double now = self.eventLoop.currentEventTime();
    if (self.numMovies < 1) {
        return;
    }
    self.engine.service();
    const double lead = self.engine.outputDelay();
    const bool due = std::any_of(self.movies.begin(), self.movies.begin() + self.numMovies,
                                 [now, lead](const MovieEntry& entry) { return isDue(entry, now, lead); });
    if (!due) {
        return;
    }
    for (int i = 0; i < self.numMovies; ++i) {
        self.serviceMovie(self.movies[static_cast<std::size_t>(i)], now, lead);
    }
    self.validateScheduling();
}

}  // namespace sylvora
