#include "cli/worldsummary.h"

#include "core/files/alias.h"
#include "core/world/world.h"

namespace sylvora::cli {

namespace {

std::optional<double> loadedDuration(const World& world, SoundID id, bool isLoopSound) {
    for (int i = 0; i < world.getNumMovies(); ++i) {
        const MovieEntry& entry = world.getMovieEntry(i);
        if (entry.soundID == id && entry.isLoopSound == isLoopSound) {
            return entry.duration;
        }
    }
    return std::nullopt;
}

}  // namespace

WorldSummary summarizeWorld(World& world, OSStatus status) {
    WorldSummary summary;
    summary.status = status;
    summary.name = world.getName();
    summary.author = world.getAuthor();
    summary.description = world.getDescription();
    summary.crossfade = world.getLoopSoundsCrossFadeDuration();
    if (const Alias* picture = world.getPictureFileAlias()) {
        FSRef ref;
        if (FSResolveAlias(*picture, ref) == noErr) {
            summary.picture = FSGetName(ref);
        }
    }
    for (int i = 0; i < world.getNumGroups(); ++i) {
        const GroupID id = world.getIndGroupID(i);
        summary.groups.push_back({world.getGroupName(id), world.getGroupMinInterval(id), world.getGroupMaxInterval(id)});
    }
    for (int i = 0; i < world.getNumLoopSounds(); ++i) {
        const SoundID id = world.getIndLoopSoundID(i);
        summary.loops.push_back({world.getLoopSoundFilename(id), world.getLoopSoundVolume(id), loadedDuration(world, id, true)});
    }
    for (int i = 0; i < world.getNumEnvironmentSounds(); ++i) {
        const SoundID id = world.getIndEnvironmentSoundID(i);
        WorldSummary::Environment sound;
        sound.file = world.getEnvironmentSoundFilename(id);
        sound.minVolume = world.getEnvironmentSoundMinVolume(id);
        sound.maxVolume = world.getEnvironmentSoundMaxVolume(id);
        sound.minInterval = world.getEnvironmentSoundMinInterval(id);
        sound.maxInterval = world.getEnvironmentSoundMaxInterval(id);
        if (const GroupID group = world.getEnvironmentSoundGroupID(id); group != 0) {
            if (const int index = world.getGroupIndex(group); index >= 0) {
                sound.group = index;
            }
        }
        sound.duration = loadedDuration(world, id, false);
        summary.environment.push_back(sound);
    }
    return summary;
}

}  // namespace sylvora::cli
