// Loop sounds whose files can no longer be read while the world plays (deleted, cut short,
// overwritten with something else): each sits out after one failed play, and comes back only when
// the kernel reports its file changed, so a broken file costs one attempt and then nothing at all:
// no look at the disk and no wake-up until someone touches it.

#include <QFileInfo>
#include <QStringList>
#include <algorithm>

#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"
#include "core/files/filewatcher.h"
#include "core/files/nativepath.h"
#include "core/world/world.h"

namespace sylvora {

namespace {

// Where the file is now, or where it was last when the alias no longer finds it: something that
// appears there is what would mend the sound.
QString watchedFileOf(const LoopSound& sound) {
    FSRef file;
    if (sound.alias == nullptr) {
        return {};
    }
    return FSResolveAlias(*sound.alias, file) == noErr ? file.path : sound.alias->recordedPath();
}

}  // namespace

// [main]
void World::markLoopSoundUnreadable(SoundID id) {
    LoopSound* sound = findLoopSound(id);
    if (sound == nullptr || sound->unreadable) {
        return;
    }
    sound->unreadable = true;
    sound->unreadableFile = watchedFileOf(*sound);
    watchUnreadableLoopSounds();
    if (unreadableListener) {
        unreadableListener();
    }
}

// [main] The watch lives only while some sound is unreadable, so an intact world holds no watcher.
void World::watchUnreadableLoopSounds() {
    std::vector<QString> files;
    for (int i = 0; i < numLoopSounds; ++i) {
        const LoopSound& sound = loopSounds[static_cast<std::size_t>(i)];
        if (sound.unreadable && !sound.unreadableFile.isEmpty()) {
            files.push_back(sound.unreadableFile);
        }
    }
    if (files.empty()) {
        if (unreadableWatch != nullptr) {
            eventLoop.removeWatch(unreadableWatch);
            unreadableWatch = nullptr;
        }
        unreadableFiles.reset();
        return;
    }
    if (!unreadableFiles) {
        unreadableFiles = std::make_unique<FileWatcher>();
    }
    unreadableFiles->watch(files);
    if (unreadableWatch == nullptr && unreadableFiles->descriptor() >= 0) {
        unreadableWatch = eventLoop.installWatch(unreadableFiles->descriptor(), [this] { reviveChangedLoopSounds(); });
    }
}

// [main] The instances of a revived sound were measured from the old file: each one that waits
// unscheduled is opened again in its place (the pool is not reordered, as the timer may be walking
// it). A file that still does not open is watched again, where it is now. With no loop left
// playing, the first sound back starts the chain again at once.
void World::reviveChangedLoopSounds() {
    const std::vector<QString> changed = unreadableFiles->takeChanged();
    bool revived = false;
    for (int i = 0; i < numLoopSounds; ++i) {
        LoopSound& sound = loopSounds[static_cast<std::size_t>(i)];
        if (!sound.unreadable || std::find(changed.begin(), changed.end(), sound.unreadableFile) == changed.end()) {
            continue;
        }
        sound.unreadable = false;
        FSRef file;
        for (int m = 0; m < numMovies && !sound.unreadable; ++m) {
            MovieEntry& entry = movies[static_cast<std::size_t>(m)];
            if (entry.soundID != sound.id || entry.startTime > 0.0 || entry.movie->rate() != 0.0) {
                continue;
            }
            std::unique_ptr<audio::SoundInstance> fresh;
            if (FSResolveAlias(*sound.alias, file) != noErr ||
                engine.openInstance(nativepath::encode(file.path).toStdString(), fresh) != noErr || !fresh) {
                sound.unreadable = true;
                sound.unreadableFile = watchedFileOf(sound);
                break;
            }
            entry.movie = std::move(fresh);
            wakeForNextTick();  // the tick's service frees the old one
            entry.duration = secondsOf(*entry.movie, entry.movie->duration());
        }
        revived = revived || !sound.unreadable;
    }
    watchUnreadableLoopSounds();
    if (!revived) {
        return;
    }
    if (unreadableListener) {
        unreadableListener();
    }
    const bool chainRuns = std::any_of(movies.begin(), movies.begin() + numMovies, [](const MovieEntry& entry) {
        return entry.isLoopSound && entry.startTime > 0.0;
    });
    if (isPlaying() && !chainRuns) {
        scheduleNextLoopSound(eventLoop.currentEventTime());
    }
}

// [main] The instance due after one whose play failed was cued on an end that came early: it has
// started already (a cue fires when its predecessor ends), so its turn is now. One of a sound now
// unreadable is not played at all; the chain's next pick takes its place.
void World::releaseLoopSuccessors(double now) {
    for (int i = 0; i < numMovies; ++i) {
        MovieEntry& entry = movies[static_cast<std::size_t>(i)];
        if (!entry.isLoopSound || !(entry.startTime > now)) {
            continue;
        }
        const LoopSound* sound = findLoopSound(entry.soundID);
        if (sound != nullptr && sound->unreadable) {
            entry.movie->stop();
            entry.startTime = -1.0;
        } else {
            entry.startTime = now;
        }
    }
}

// [main] A sound that cannot even be loaded has failed its attempt as well. A full pool is not the
// sound's fault, and ends the search.
int World::getPlayableLoopMovie(SoundID& sound) {
    while (sound != 0) {
        const int index = getUnscheduledMovie(true, sound);
        if (index >= 0 || numMovies > MAX_MOVIES - 1) {
            return index;
        }
        markLoopSoundUnreadable(sound);
        sound = pickLoopSound();
    }
    return -1;
}

// [main]
QStringList World::getUnreadableLoopSounds() {
    QStringList names;
    for (int i = 0; i < numLoopSounds; ++i) {
        const LoopSound& sound = loopSounds[static_cast<std::size_t>(i)];
        if (sound.unreadable) {
            // A file that is gone no longer tells its name; the alias still knows where it was.
            const QString file = getLoopSoundFilename(sound.id);
            names << (file.isEmpty() && sound.alias ? QFileInfo(sound.alias->recordedPath()).fileName() : file);
        }
    }
    return names;
}

}  // namespace sylvora
