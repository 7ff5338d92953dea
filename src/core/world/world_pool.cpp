// The pool of loaded sound instances: loading on demand, reuse of free instances, disposal, and
// the schedule's self-check.

#include <iconv.h>

#include <array>
#include <cstdio>

#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"
#include "core/files/nativepath.h"
#include "core/platform/beep.h"
#include "core/world/world.h"

namespace sylvora {

namespace {

// The diagnostics print names as Mac Roman text in a fixed buffer of 255 bytes, as the alert tools
// developers read them with expect. A name that needs more than 254 bytes, or holds a character
// Mac Roman lacks, does not convert; it is printed as the empty string rather than cut or mangled,
// the same as a sound that has no cached name yet. Names are composed first, so that an accent kept
// as a separate combining mark (as some file systems store names) still finds its Mac Roman letter.
using NameBuffer = std::array<char, 255>;

void copyNameForDiagnostics(const QString& name, NameBuffer& buffer) {
    buffer.fill('\0');
    if (name.isEmpty()) {
        return;
    }
    QByteArray utf8 = name.normalized(QString::NormalizationForm_C).toUtf8();
    const iconv_t converter = ::iconv_open("MACINTOSH", "UTF-8");
    if (converter == reinterpret_cast<iconv_t>(-1)) {
        return;
    }
    char* in = utf8.data();
    std::size_t inLeft = static_cast<std::size_t>(utf8.size());
    char* out = buffer.data();
    std::size_t outLeft = buffer.size() - 1;
    const std::size_t converted = ::iconv(converter, &in, &inLeft, &out, &outLeft);
    ::iconv_close(converter);
    if (converted == static_cast<std::size_t>(-1) || inLeft != 0) {
        buffer.fill('\0');
    }
}

}  // namespace

// [main]
// A sound added or removed changes what the tick walks and what it reports, and a disposed
// instance waits for the tick's service: the timer runs at its next point.
OSStatus World::loadSoundFileIntoMovieList(bool isLoopSound, SoundID soundID) {
    wakeForNextTick();
    if (numMovies > MAX_MOVIES - 1) {
        return movieListFullErr;
    }
    Alias* alias = nullptr;
    if (isLoopSound) {
        if (LoopSound* sound = findLoopSound(soundID)) {
            alias = sound->alias.get();
        }
    } else if (EnvironmentSound* sound = findEnvironmentSound(soundID)) {
        alias = sound->alias.get();
    }
    if (alias == nullptr) {
        return fnfErr;
    }

    FSRef file;
    OSStatus status = FSResolveAlias(*alias, file);
    if (status != noErr) {
        return status;
    }
    std::unique_ptr<audio::SoundInstance> movie;
    status = engine.openInstance(nativepath::encode(file.path).toStdString(), movie);
    if (status != noErr) {
        return status;
    }
    if (!movie) {
        return paramErr;  // an engine that reports success must hand out an instance
    }
    // A sound that plays keeps following its file, so a rename or a move while the world is open
    // does not lose it.
    alias->follow();

    MovieEntry& entry = movies[static_cast<std::size_t>(numMovies)];
    entry.isLoopSound = isLoopSound;
    entry.skipFadeIn = false;
    entry.soundID = soundID;
    entry.duration = secondsOf(*movie, movie->duration());
    entry.movie = std::move(movie);
    entry.volume = 1.0;
    entry.startTime = -1.0;
    ++numMovies;
    return noErr;
}

// [main]
int World::getUnscheduledMovie(bool isLoopSound, SoundID soundID) {
    for (int i = 0; i < numMovies; ++i) {
        MovieEntry& entry = movies[static_cast<std::size_t>(i)];
        if (entry.soundID == soundID && !(entry.startTime > 0.0)) {
            entry.skipFadeIn = false;
            return i;
        }
    }
    if (loadSoundFileIntoMovieList(isLoopSound, soundID) != noErr) {
        return -1;
    }
    movies[static_cast<std::size_t>(numMovies - 1)].skipFadeIn = false;
    return numMovies - 1;
}

// [main]
int World::removeAllMoviesWithID(SoundID soundID) {
    wakeForNextTick();
    int kept = 0;
    for (int read = 0; read < numMovies; ++read) {
        MovieEntry& entry = movies[static_cast<std::size_t>(read)];
        if (entry.soundID == soundID) {
            entry.movie.reset();
            continue;
        }
        if (read != kept) {
            movies[static_cast<std::size_t>(kept)] = std::move(entry);
        }
        ++kept;
    }
    for (int i = kept; i < numMovies; ++i) {
        movies[static_cast<std::size_t>(i)] = MovieEntry{};
    }
    numMovies = kept;
    return numMovies;
}

// [main]
void World::disposeAllMovies() {
    for (int i = 0; i < numMovies; ++i) {
        movies[static_cast<std::size_t>(i)] = MovieEntry{};
    }
    numMovies = 0;
}

// [main]
std::vector<std::unique_ptr<audio::SoundInstance>> World::takeSoundingMovies() {
    std::vector<std::unique_ptr<audio::SoundInstance>> sounding;
    for (int i = 0; i < numMovies; ++i) {
        MovieEntry& entry = movies[static_cast<std::size_t>(i)];
        if (entry.movie->rate() != 0.0) {
            sounding.push_back(std::move(entry.movie));
        }
    }
    disposeAllMovies();
    return sounding;
}

// [main]
void World::validateScheduling() const {
    checkScheduling(true);
}

// [main]
bool World::checkScheduling(bool report) const {
    bool valid = true;
    const auto scheduledInstancesOf = [this](SoundID soundID) {
        int count = 0;
        for (int i = 0; i < numMovies; ++i) {
            const MovieEntry& entry = movies[static_cast<std::size_t>(i)];
            if (entry.soundID == soundID && entry.startTime > 0.0) {
                ++count;
            }
        }
        return count;
    };
    NameBuffer printedName{};

    for (int g = 0; g < numGroups; ++g) {
        const EnvironmentSoundGroup& group = groups[static_cast<std::size_t>(g)];
        int members = 0;
        int scheduled = 0;
        for (int s = 0; s < numEnvironmentSounds; ++s) {
            const EnvironmentSound& sound = environmentSounds[static_cast<std::size_t>(s)];
            if (sound.settings.groupID == group.id) {
                ++members;
                scheduled += scheduledInstancesOf(sound.id);
            }
        }
        if (members > 0 && scheduled != 1) {
            if (!report) {
                return false;
            }
            valid = false;
            SysBeep(0);
            SysBeep(0);
            copyNameForDiagnostics(group.name, printedName);
            std::fprintf(stderr, "*** GroupID %d '%s' has %d movies scheduled for it ***\n",
                         static_cast<int>(group.id), printedName.data(), scheduled);
        }
    }

    for (int s = 0; s < numEnvironmentSounds; ++s) {
        const EnvironmentSound& sound = environmentSounds[static_cast<std::size_t>(s)];
        if (sound.settings.groupID != 0) {
            continue;
        }
        const int scheduled = scheduledInstancesOf(sound.id);
        if (scheduled != 1) {
            if (!report) {
                return false;
            }
            valid = false;
            SysBeep(0);
            SysBeep(0);
            copyNameForDiagnostics(sound.filename, printedName);
            std::fprintf(stderr, "*** EnvironmentSoundID %d '%s' has %d movies scheduled for it ***\n",
                         static_cast<int>(sound.id), printedName.data(), scheduled);
        }
    }
    return valid;
}

}  // namespace sylvora
