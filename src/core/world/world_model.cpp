// The model side of World: construction and reset, metadata, the three tables and their setters.

#include <array>
#include <cstdlib>
#include <ctime>
#include <span>

#include "audio/engine/soundinstance.h"
#include "core/files/filewatcher.h"
#include "core/files/utils.h"
#include "core/strings/stringresources.h"
#include "core/world/world.h"

namespace sylvora {

namespace {

// 1/60-second ticks since boot, the seed a world gets when nobody chooses one.
unsigned TickCount() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const auto ticks = static_cast<unsigned long long>(now.tv_sec) * 60ULL +
                       static_cast<unsigned long long>(now.tv_nsec) / (1000000000ULL / 60ULL);
    return static_cast<unsigned>(ticks);
}

// Null and empty are different values here: a world without a name is not one named "".
bool sameString(const QString& a, const QString& b) {
    return a.isNull() == b.isNull() && a == b;
}

template <typename Record, std::size_t N>
std::array<const Alias*, N> aliasesOf(const std::array<Record, N>& table, int count) {
    std::array<const Alias*, N> aliases{};
    for (int i = 0; i < count; ++i) {
        aliases[static_cast<std::size_t>(i)] = table[static_cast<std::size_t>(i)].alias.get();
    }
    return aliases;
}

// The cached-name rule: ask the file system once, and again next time if the file cannot be found.
QString cachedFilename(const AliasHandle& alias, QString& filename) {
    if (!filename.isNull() || !alias) {
        return filename;
    }
    FSRef ref;
    if (FSResolveAlias(*alias, ref) != noErr) {
        return filename;
    }
    filename = FSGetName(ref);
    return filename;
}

}  // namespace

World::World(audio::Engine& engineRef, EventLoop& eventLoopRef, std::optional<unsigned> seed)
    : engine(engineRef), eventLoop(eventLoopRef) {
    srandom(seed ? *seed : TickCount());
}

World::~World() {
    resetToInitialState();
}

void World::resetToInitialState() {
    disposeAllMovies();
    removeMoviesTaskTimer();
    packageAlias.reset();
    name = QString();
    author = QString();
    description = QString();
    numGroupsCreated = 0;
    clearGroupList();
    clearLoopSoundList();
    clearEnvironmentSoundList();
    loopSoundsCrossFadeDuration = DEFAULT_LOOP_SOUNDS_CROSS_FADE_DURATION;
    setPictureFileAlias(nullptr);
    modified = false;
}

// ---- Metadata

void World::setName(const QString& value) {
    if (sameString(name, value)) {
        return;
    }
    name = value;
    modified = true;
}

void World::setAuthor(const QString& value) {
    if (sameString(author, value)) {
        return;
    }
    author = value;
    modified = true;
}

void World::setDescription(const QString& value) {
    if (sameString(description, value)) {
        return;
    }
    description = value;
    modified = true;
}

void World::setLoopSoundsCrossFadeDuration(long seconds) {
    if (seconds == loopSoundsCrossFadeDuration) {
        return;
    }
    loopSoundsCrossFadeDuration = static_cast<std::int32_t>(seconds);
    modified = true;
    wakeForNextTick();  // every fading volume follows the new curve from the next tick
}

// ---- Lookups

LoopSound* World::findLoopSound(SoundID id) {
    const int index = getLoopSoundIndex(id);
    return index < 0 ? nullptr : &loopSounds[static_cast<std::size_t>(index)];
}

const LoopSound* World::findLoopSound(SoundID id) const {
    const int index = getLoopSoundIndex(id);
    return index < 0 ? nullptr : &loopSounds[static_cast<std::size_t>(index)];
}

EnvironmentSound* World::findEnvironmentSound(SoundID id) {
    const int index = getEnvironmentSoundIndex(id);
    return index < 0 ? nullptr : &environmentSounds[static_cast<std::size_t>(index)];
}

const EnvironmentSound* World::findEnvironmentSound(SoundID id) const {
    const int index = getEnvironmentSoundIndex(id);
    return index < 0 ? nullptr : &environmentSounds[static_cast<std::size_t>(index)];
}

EnvironmentSoundGroup* World::findGroup(GroupID id) {
    const int index = getGroupIndex(id);
    return index < 0 ? nullptr : &groups[static_cast<std::size_t>(index)];
}

const EnvironmentSoundGroup* World::findGroup(GroupID id) const {
    const int index = getGroupIndex(id);
    return index < 0 ? nullptr : &groups[static_cast<std::size_t>(index)];
}

// ---- Loop sounds

SoundID World::getIndLoopSoundID(int index) const {
    if (index < 0 || index >= numLoopSounds) {
        return 0;
    }
    return loopSounds[static_cast<std::size_t>(index)].id;
}

int World::getLoopSoundIndex(SoundID id) const {
    for (int i = 0; i < numLoopSounds; ++i) {
        if (loopSounds[static_cast<std::size_t>(i)].id == id) {
            return i;
        }
    }
    return -1;
}

const Alias* World::getLoopSound(SoundID id) const {
    const LoopSound* sound = findLoopSound(id);
    return sound ? sound->alias.get() : nullptr;
}

QString World::getLoopSoundFilename(SoundID id) {
    LoopSound* sound = findLoopSound(id);
    return sound ? cachedFilename(sound->alias, sound->filename) : QString();
}

double World::getLoopSoundVolume(SoundID id) const {
    const LoopSound* sound = findLoopSound(id);
    return sound ? sound->volume : -1.0;
}

void World::setLoopSoundVolume(SoundID id, double value) {
    LoopSound* sound = findLoopSound(id);
    if (!sound || sound->volume == value) {
        return;
    }
    sound->volume = value;
    modified = true;
    for (int i = 0; i < numMovies; ++i) {
        MovieEntry& entry = movies[static_cast<std::size_t>(i)];
        if (entry.soundID == id) {
            entry.volume = value;
        }
    }
    // A person dragging the slider hears it follow without waiting for the next tick.
    applyVolumes();
}

void World::clearLoopSoundList() {
    if (numLoopSounds == 0) {
        return;
    }
    for (int i = 0; i < numLoopSounds; ++i) {
        loopSounds[static_cast<std::size_t>(i)] = LoopSound{};
    }
    numLoopSounds = 0;
    modified = true;
    watchUnreadableLoopSounds();
}

// ---- Environment sounds

SoundID World::getIndEnvironmentSoundID(int index) const {
    if (index < 0 || index >= numEnvironmentSounds) {
        return 0;
    }
    return environmentSounds[static_cast<std::size_t>(index)].id;
}

int World::getEnvironmentSoundIndex(SoundID id) const {
    for (int i = 0; i < numEnvironmentSounds; ++i) {
        if (environmentSounds[static_cast<std::size_t>(i)].id == id) {
            return i;
        }
    }
    return -1;
}

const Alias* World::getEnvironmentSound(SoundID id) const {
    const EnvironmentSound* sound = findEnvironmentSound(id);
    return sound ? sound->alias.get() : nullptr;
}

QString World::getEnvironmentSoundFilename(SoundID id) {
    EnvironmentSound* sound = findEnvironmentSound(id);
    return sound ? cachedFilename(sound->alias, sound->filename) : QString();
}

SoundID World::getEnvironmentSoundIDWithAlias(const Alias& alias) const {
    const auto aliases = aliasesOf(environmentSounds, numEnvironmentSounds);
    const int index = findAliasInList(
        alias, std::span<const Alias* const>(aliases.data(), static_cast<std::size_t>(numEnvironmentSounds)));
    return index < 0 ? 0 : environmentSounds[static_cast<std::size_t>(index)].id;
}

GroupID World::getEnvironmentSoundGroupID(SoundID id) const {
    const EnvironmentSound* sound = findEnvironmentSound(id);
    return sound ? sound->settings.groupID : 0;
}

double World::getEnvironmentSoundMinVolume(SoundID id) const {
    const EnvironmentSound* sound = findEnvironmentSound(id);
    return sound ? sound->settings.minVolume : -1.0;
}

double World::getEnvironmentSoundMaxVolume(SoundID id) const {
    const EnvironmentSound* sound = findEnvironmentSound(id);
    return sound ? sound->settings.maxVolume : -1.0;
}

void World::setEnvironmentSoundMinVolume(SoundID id, double value) {
    EnvironmentSound* sound = findEnvironmentSound(id);
    if (!sound || sound->settings.minVolume == value) {
        return;
    }
    sound->settings.minVolume = value;
    modified = true;
}

void World::setEnvironmentSoundMaxVolume(SoundID id, double value) {
    EnvironmentSound* sound = findEnvironmentSound(id);
    if (!sound || sound->settings.maxVolume == value) {
        return;
    }
    sound->settings.maxVolume = value;
    modified = true;
}

std::int32_t World::getEnvironmentSoundMinInterval(SoundID id) const {
    const EnvironmentSound* sound = findEnvironmentSound(id);
    return sound ? sound->settings.minInterval : -1;
}

std::int32_t World::getEnvironmentSoundMaxInterval(SoundID id) const {
    const EnvironmentSound* sound = findEnvironmentSound(id);
    return sound ? sound->settings.maxInterval : -1;
}

void World::setEnvironmentSoundMinInterval(SoundID id, int value) {
    EnvironmentSound* sound = findEnvironmentSound(id);
    if (!sound || sound->settings.minInterval == value) {
        return;
    }
    sound->settings.minInterval = value;
    modified = true;
}

void World::setEnvironmentSoundMaxInterval(SoundID id, int value) {
    EnvironmentSound* sound = findEnvironmentSound(id);
    if (!sound || sound->settings.maxInterval == value) {
        return;
    }
    sound->settings.maxInterval = value;
    modified = true;

    // A lowered maximum holds at once: a play waiting longer than that is brought forward. A raised
    // one never pushes a play back.
    const double now = eventLoop.currentEventTime();
    for (int i = 0; i < numMovies; ++i) {
        MovieEntry& entry = movies[static_cast<std::size_t>(i)];
        if (entry.soundID == id && entry.startTime > 0.0 && entry.startTime - now > value) {
            entry.startTime = now + value;
            wakeForNextTick();
        }
    }
}

void World::removeEnvironmentSoundsWithGroupID(GroupID groupID) {
    int kept = 0;
    for (int read = 0; read < numEnvironmentSounds; ++read) {
        EnvironmentSound& sound = environmentSounds[static_cast<std::size_t>(read)];
        if (sound.settings.groupID == groupID) {
            sound = EnvironmentSound{};
            continue;
        }
        if (read != kept) {
            environmentSounds[static_cast<std::size_t>(kept)] = std::move(sound);
            sound = EnvironmentSound{};
        }
        ++kept;
    }
    if (kept != numEnvironmentSounds) {
        numEnvironmentSounds = kept;
        modified = true;
    }
}

void World::clearEnvironmentSoundList() {
    if (numEnvironmentSounds == 0) {
        return;
    }
    for (int i = 0; i < numEnvironmentSounds; ++i) {
        environmentSounds[static_cast<std::size_t>(i)] = EnvironmentSound{};
    }
    numEnvironmentSounds = 0;
    modified = true;
}

// ---- Groups

GroupID World::getIndGroupID(int index) const {
    if (index < 0 || index >= numGroups) {
        return 0;
    }
    return groups[static_cast<std::size_t>(index)].id;
}

int World::getGroupIndex(GroupID id) const {
    for (int i = 0; i < numGroups; ++i) {
        if (groups[static_cast<std::size_t>(i)].id == id) {
            return i;
        }
    }
    return -1;
}

GroupID World::addGroup(const QString& groupName) {
    if (numGroups > MAX_GROUPS - 1) {
        return 0;
    }
    EnvironmentSoundGroup& group = groups[static_cast<std::size_t>(numGroups)];
    // Default names keep counting within one world, so a new group never repeats a removed one's.
    group.name = groupName.isNull()
                     ? copyLocalizedString(DEFAULT_ENVIRONMENT_SOUND_GROUP_NAME_KEY, MISC_STRINGS_FILE)
                           .arg(numGroupsCreated + 1)
                     : groupName;
    group.minInterval = 20;
    group.maxInterval = 40;
    group.id = nextID++;
    ++numGroups;
    ++numGroupsCreated;
    modified = true;
    return group.id;
}

void World::removeGroup(GroupID id) {
    const int index = getGroupIndex(id);
    if (index < 0) {
        return;
    }
    removeEnvironmentSoundsWithGroupID(id);
    for (int i = index; i + 1 < numGroups; ++i) {
        groups[static_cast<std::size_t>(i)] = std::move(groups[static_cast<std::size_t>(i + 1)]);
    }
    groups[static_cast<std::size_t>(numGroups - 1)] = EnvironmentSoundGroup{};
    --numGroups;
    modified = true;
}

QString World::getGroupName(GroupID id) const {
    const EnvironmentSoundGroup* group = findGroup(id);
    return group ? group->name : QString();
}

void World::setGroupName(GroupID id, const QString& value) {
    EnvironmentSoundGroup* group = findGroup(id);
    if (!group || sameString(group->name, value)) {
        return;
    }
    group->name = value;
    modified = true;
}

std::int32_t World::getGroupMinInterval(GroupID id) const {
    const EnvironmentSoundGroup* group = findGroup(id);
    return group ? group->minInterval : -1;
}

std::int32_t World::getGroupMaxInterval(GroupID id) const {
    const EnvironmentSoundGroup* group = findGroup(id);
    return group ? group->maxInterval : -1;
}

void World::setGroupMinInterval(GroupID id, int value) {
    EnvironmentSoundGroup* group = findGroup(id);
    if (!group || group->minInterval == value) {
        return;
    }
    group->minInterval = value;
    // Stored directly: a new minimum counts only from the next scheduling.
    for (int i = 0; i < numEnvironmentSounds; ++i) {
        EnvironmentSound& sound = environmentSounds[static_cast<std::size_t>(i)];
        if (sound.settings.groupID == id) {
            sound.settings.minInterval = value;
        }
    }
    modified = true;
}

void World::setGroupMaxInterval(GroupID id, int value) {
    EnvironmentSoundGroup* group = findGroup(id);
    if (!group || group->maxInterval == value) {
        return;
    }
    group->maxInterval = value;
    // Through the sound's own setter, so the group's waiting play is brought forward too.
    for (int i = 0; i < numEnvironmentSounds; ++i) {
        const EnvironmentSound& sound = environmentSounds[static_cast<std::size_t>(i)];
        if (sound.settings.groupID == id) {
            setEnvironmentSoundMaxInterval(sound.id, value);
        }
    }
    modified = true;
}

void World::clearGroupList() {
    if (numGroups == 0) {
        return;
    }
    for (int i = 0; i < numGroups; ++i) {
        EnvironmentSoundGroup& group = groups[static_cast<std::size_t>(i)];
        removeEnvironmentSoundsWithGroupID(group.id);
        group = EnvironmentSoundGroup{};
    }
    numGroups = 0;
    modified = true;
}

}  // namespace sylvora
