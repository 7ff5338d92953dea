// Adding, removing and regrouping sounds, on a stopped world and on a playing one. Each operation
// changes the model and then repairs the schedule, so that while the world plays a loop instance is
// always playing or due, and every ungrouped environment sound and every non-empty group has
// exactly one play scheduled.

#include <array>
#include <span>

#include "audio/engine/soundinstance.h"
#include "core/files/utils.h"
#include "core/world/world.h"

namespace sylvora {

namespace {

template <typename Record, std::size_t N>
bool isFileInTable(const Alias& alias, const std::array<Record, N>& table, int count) {
    std::array<const Alias*, N> aliases{};
    for (int i = 0; i < count; ++i) {
        aliases[static_cast<std::size_t>(i)] = table[static_cast<std::size_t>(i)].alias.get();
    }
    return isFileAliasInList(alias, std::span<const Alias* const>(aliases.data(), static_cast<std::size_t>(count)));
}

}  // namespace

void World::takeAudibleAndPending(SoundID id, bool& audible, double& pendingStart) const {
    audible = false;
    pendingStart = -1.0;
    if (!isPlaying()) {
        return;
    }
    for (int i = 0; i < numMovies; ++i) {
        const MovieEntry& entry = movies[static_cast<std::size_t>(i)];
        if (entry.soundID != id) {
            continue;
        }
        const bool sounding = entry.movie && entry.movie->rate() != 0.0;
        if (sounding) {
            audible = true;
        } else if (entry.startTime > 0.0 && pendingStart <= 0.0) {
            pendingStart = entry.startTime;
        }
    }
}

void World::removeLoopSoundRecord(int index) {
    for (int i = index; i + 1 < numLoopSounds; ++i) {
        loopSounds[static_cast<std::size_t>(i)] = std::move(loopSounds[static_cast<std::size_t>(i + 1)]);
    }
    loopSounds[static_cast<std::size_t>(numLoopSounds - 1)] = LoopSound{};
    --numLoopSounds;
    modified = true;
    watchUnreadableLoopSounds();
}

void World::removeEnvironmentSoundRecord(int index) {
    for (int i = index; i + 1 < numEnvironmentSounds; ++i) {
        environmentSounds[static_cast<std::size_t>(i)] =
            std::move(environmentSounds[static_cast<std::size_t>(i + 1)]);
    }
    environmentSounds[static_cast<std::size_t>(numEnvironmentSounds - 1)] = EnvironmentSound{};
    --numEnvironmentSounds;
    modified = true;
}

void World::scheduleEnvironmentPlay(int movieIndex, SoundID sound, double pendingStart) {
    // The interval is drawn before the volume, as the timer does.
    const double startTime =
        pendingStart > 0.0 ? pendingStart : eventLoop.currentEventTime() + drawInterval(sound);
    const double playVolume = drawVolume(sound);
    scheduleMovie(movieIndex, startTime, playVolume);
}

SoundID World::addLoopSound(const Alias& alias) {
    if (numLoopSounds >= MAX_LOOP_SOUNDS || isFileInTable(alias, loopSounds, numLoopSounds)) {
        return 0;
    }
    const SoundID id = nextID++;
    LoopSound& record = loopSounds[static_cast<std::size_t>(numLoopSounds)];
    record = LoopSound{};
    record.alias = alias.copy();
    record.filename = QString();
    record.volume = 1.0;
    record.id = id;
    ++numLoopSounds;

    if (loadSoundFileIntoMovieList(true, id) != noErr) {
        removeLoopSound(id);  // the identifier stays used up
        return 0;
    }
    modified = true;

    // A playing world that had no loop sound has no chain to join: start one with this sound, the
    // first instance at once and at full volume, the second a crossfade before its end.
    if (isPlaying() && numLoopSounds == 1) {
        const double now = eventLoop.currentEventTime();
        const double soundVolume = record.volume;
        double firstDuration = 0.0;
        const int first = getUnscheduledMovie(true, id);
        if (first >= 0) {
            scheduleMovie(first, now, soundVolume);
            movies[static_cast<std::size_t>(first)].skipFadeIn = true;
            firstDuration = movies[static_cast<std::size_t>(first)].duration;
        }
        const int second = getUnscheduledMovie(true, id);
        if (second >= 0) {
            scheduleMovie(second, now + firstDuration - loopSoundsCrossFadeDuration, soundVolume);
        }
    }
    return id;
}

SoundID World::addEnvironmentSound(const Alias& alias) {
    if (numEnvironmentSounds >= MAX_ENVIRONMENT_SOUNDS ||
        isFileInTable(alias, environmentSounds, numEnvironmentSounds)) {
        return 0;
    }
    const SoundID id = nextID++;
    EnvironmentSound& record = environmentSounds[static_cast<std::size_t>(numEnvironmentSounds)];
    record.alias = alias.copy();
    record.filename = QString();
    record.settings = EnvironmentSoundSettings{};
    record.id = id;
    ++numEnvironmentSounds;

    if (loadSoundFileIntoMovieList(false, id) != noErr) {
        removeEnvironmentSound(id);
        return 0;
    }
    modified = true;

    if (isPlaying()) {
        const int index = getUnscheduledMovie(false, id);
        if (index >= 0) {
            scheduleEnvironmentPlay(index, id, -1.0);
        }
    }
    return id;
}

void World::removeLoopSound(SoundID id) {
    bool audible = false;
    double pendingStart = -1.0;
    takeAudibleAndPending(id, audible, pendingStart);

    removeAllMoviesWithID(id);  // an audible instance falls silent here

    const int index = getLoopSoundIndex(id);
    if (index >= 0) {
        removeLoopSoundRecord(index);
    }
    if (!isPlaying() || numLoopSounds == 0) {
        return;
    }

    if (audible) {
        // The chain lost its sounding link: start a new one now. Instances still sounding, such as
        // the other half of a crossfade, are let go to play out at their last volume.
        for (int i = 0; i < numMovies; ++i) {
            MovieEntry& entry = movies[static_cast<std::size_t>(i)];
            if (entry.isLoopSound) {
                entry.startTime = -1.0;
                if (entry.movie->rate() == 0.0) {
                    entry.movie->stop();  // one cued on the removed sound must not start by itself
                }
            }
        }
        startLoopChain(eventLoop.currentEventTime());
    } else if (pendingStart > 0.0) {
        // The removed sound was next: another one takes its turn.
        const SoundID next = pickLoopSound();
        const int movieIndex = getUnscheduledMovie(true, next);
        if (movieIndex >= 0) {
            scheduleMovie(movieIndex, pendingStart, getLoopSoundVolume(next));
        }
    } else {
        return;
    }
    // Start the new instance now rather than on the next timer tick.
    moviesTaskTimer(nullptr, this);
}

void World::removeEnvironmentSound(SoundID id) {
    const GroupID groupID = getEnvironmentSoundGroupID(id);
    bool audible = false;
    double pendingStart = -1.0;
    takeAudibleAndPending(id, audible, pendingStart);

    removeAllMoviesWithID(id);

    const int index = getEnvironmentSoundIndex(id);
    if (index < 0) {
        return;
    }
    removeEnvironmentSoundRecord(index);

    // An ungrouped sound's schedule ends with it; a member that did not hold its group's turn
    // leaves the group's schedule as it is.
    if (groupID == 0 || (!audible && pendingStart <= 0.0) || getGroupIndex(groupID) < 0) {
        return;
    }
    const SoundID member = getRandomEnvironmentSoundInGroup(groupID);
    if (member == 0) {
        return;
    }
    const int movieIndex = getUnscheduledMovie(false, member);
    if (movieIndex < 0) {
        return;
    }
    scheduleEnvironmentPlay(movieIndex, member, pendingStart);
}

void World::setEnvironmentSoundGroupID(SoundID id, GroupID groupID) {
    if (groupID != 0 && getGroupIndex(groupID) < 0) {
        return;
    }
    const GroupID oldGroupID = getEnvironmentSoundGroupID(id);
    if (oldGroupID == groupID) {
        return;
    }
    wakeForNextTick();  // what the tick reports of the two groups changes

    bool audible = false;
    double pendingStart = -1.0;
    if (isPlaying()) {
        for (int i = 0; i < numMovies; ++i) {
            MovieEntry& entry = movies[static_cast<std::size_t>(i)];
            if (entry.soundID != id) {
                continue;
            }
            if (entry.movie && entry.movie->rate() != 0.0) {
                entry.movie->stop();
                entry.movie->goToBeginning();
                entry.startTime = -1.0;
                audible = true;
            } else if (entry.startTime > 0.0) {
                pendingStart = entry.startTime;
                entry.startTime = -1.0;
            }
        }
    }

    EnvironmentSound* sound = findEnvironmentSound(id);
    if (!sound) {
        return;
    }
    sound->settings.groupID = groupID;
    if (const EnvironmentSoundGroup* group = findGroup(groupID)) {
        sound->settings.minInterval = group->minInterval;
        sound->settings.maxInterval = group->maxInterval;
    }
    modified = true;

    if (!isPlaying()) {
        return;
    }

    // If the sound held its old group's turn, another member takes it.
    if (oldGroupID != 0 && (audible || pendingStart > 0.0) && getGroupIndex(oldGroupID) >= 0) {
        const SoundID member = getRandomEnvironmentSoundInGroup(oldGroupID);
        if (member != 0) {
            const int movieIndex = getUnscheduledMovie(false, member);
            if (movieIndex >= 0) {
                scheduleEnvironmentPlay(movieIndex, member, pendingStart);
            }
        }
    }

    if (groupID == 0) {
        // On its own now, whatever its past: a fresh interval from its own bounds.
        const int movieIndex = getUnscheduledMovie(false, id);
        if (movieIndex >= 0) {
            scheduleEnvironmentPlay(movieIndex, id, -1.0);
        }
        return;
    }

    // A group that already had members keeps its scheduled play; only a group that was empty needs
    // one, and the newcomer brings its own turn when it had one.
    int members = 0;
    for (int i = 0; i < numEnvironmentSounds; ++i) {
        if (environmentSounds[static_cast<std::size_t>(i)].settings.groupID == groupID) {
            ++members;
        }
    }
    if (members != 1) {
        return;
    }
    const int movieIndex = getUnscheduledMovie(false, id);
    if (movieIndex >= 0) {
        scheduleEnvironmentPlay(movieIndex, id, pendingStart);
    }
}

}  // namespace sylvora
