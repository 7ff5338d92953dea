// Loop sounds whose files can no longer be read while the world plays (deleted, cut short,
// overwritten with something else): each sits out after one failed play, and comes back only when
// its file changes, so a broken file costs one attempt rather than one per timer tick.

#include <sys/stat.h>

#include <QFileInfo>
#include <QStringList>

#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"
#include "core/files/nativepath.h"
#include "core/world/world.h"

namespace sylvora {

// [main]
FileStamp World::stampLoopSoundFile(const LoopSound& sound) const {
    FileStamp stamp;
    FSRef file;
    struct stat info {};
    if (sound.alias == nullptr || FSResolveAlias(*sound.alias, file) != noErr ||
        ::stat(nativepath::encode(file.path).constData(), &info) != 0) {
        return stamp;
    }
    stamp.found = true;
    stamp.device = info.st_dev;
    stamp.inode = info.st_ino;
    stamp.size = info.st_size;
    stamp.changedNs = static_cast<std::int64_t>(info.st_ctim.tv_sec) * 1'000'000'000 + info.st_ctim.tv_nsec;
    return stamp;
}

// [main]
void World::markLoopSoundUnreadable(SoundID id) {
    LoopSound* sound = findLoopSound(id);
    if (sound == nullptr || sound->unreadable) {
        return;
    }
    sound->unreadable = true;
    sound->unreadableFile = stampLoopSoundFile(*sound);
    if (unreadableListener) {
        unreadableListener();
    }
}

// [main] The instances of a revived sound were measured from the old file: each one that waits
// unscheduled is opened again in its place (the pool is not reordered, as the timer may be walking
// it). A file that still does not open is the new mark.
bool World::reviveChangedLoopSounds() {
    bool revived = false;
    for (int i = 0; i < numLoopSounds; ++i) {
        LoopSound& sound = loopSounds[static_cast<std::size_t>(i)];
        if (!sound.unreadable) {
            continue;
        }
        const FileStamp now = stampLoopSoundFile(sound);
        if (now == sound.unreadableFile) {
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
                sound.unreadableFile = now;
                break;
            }
            entry.movie = std::move(fresh);
            const std::int32_t timeScale = entry.movie->timeScale();
            entry.duration = timeScale > 0 ? static_cast<double>(entry.movie->duration()) / timeScale : 0.0;
        }
        revived = revived || !sound.unreadable;
    }
    if (revived && unreadableListener) {
        unreadableListener();
    }
    return revived;
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

// [main] While loop sounds play, the chain's own picks look at the files; with none playing (every
// loop sound unreadable), the timer looks every UNREADABLE_RECHECK_SECONDS and starts the chain
// again with the first sound whose file changed.
void World::recheckUnreadableLoopSounds(double now) {
    if (numLoopSounds < 1 || now < nextUnreadableCheck) {
        return;
    }
    bool anyUnreadable = false;
    for (int i = 0; i < numLoopSounds && !anyUnreadable; ++i) {
        anyUnreadable = loopSounds[static_cast<std::size_t>(i)].unreadable;
    }
    if (!anyUnreadable) {
        return;
    }
    for (int i = 0; i < numMovies; ++i) {
        const MovieEntry& entry = movies[static_cast<std::size_t>(i)];
        if (entry.isLoopSound && entry.startTime > 0.0) {
            return;
        }
    }
    nextUnreadableCheck = now + UNREADABLE_RECHECK_SECONDS;
    if (reviveChangedLoopSounds()) {
        scheduleNextLoopSound(now);
    }
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
