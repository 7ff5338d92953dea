// Filling the world from a package on disk.
//
// Loading is forgiving: every key is optional, a value of the wrong type counts as missing, unknown
// keys are ignored, and a sound whose entry or file is unusable is skipped silently. Only a
// missing or unreadable description, or a missing sound folder, is reported.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <optional>

#include "core/files/uniquefd.h"
#include "core/files/utils.h"
#include "core/package/plist.h"
#include "core/platform/beep.h"
#include "core/prefs/preferences.h"
#include "core/world/packagecheck.h"
#include "core/world/world.h"

namespace sylvora {

namespace {

// A description larger than this is no world's: it is refused before a byte of it is read.
constexpr qint64 kMaxDescriptionBytes = 16 * 1024 * 1024;

// Refuses what a package must not hand the loader: anything but a regular file (a FIFO would block
// every reader, a device would be read without end) and anything whose real path leaves the package
// (a link to a file elsewhere). Refused entries count as missing; the reason goes to diagnostics.
OSStatus checkPackageEntry(const FSRef& package, const FSRef& file, UniqueFd* keepOpen = nullptr) {
    int fd = -1;
    OSStatus status = FSOpenRegularFile(file, fd);
    UniqueFd owner(fd);
    const char* reason = status == fnfErr ? "not a regular file" : nullptr;
    if (status == noErr && !FSIsInside(file, package)) {
        status = fnfErr;
        reason = "a link that leads out of the package";
    }
    if (reason) {
        SysBeep(0);
        SysBeep(0);
        std::fprintf(stderr, "*** '%s' refused: %s ***\n", qPrintable(file.path), reason);
    }
    if (status == noErr && keepOpen) *keepOpen = std::move(owner);
    return status;
}

// Reads the whole description; a read failure is the operating system's error as a status.
OSStatus readDescription(const FSRef& package, const FSRef& file, QByteArray& out) {
    UniqueFd fd;
    OSStatus status = checkPackageEntry(package, file, &fd);
    if (status != noErr) return status;
    struct stat info {};
    if (::fstat(fd.get(), &info) != 0) return statusFromErrno(errno);
    if (info.st_size > kMaxDescriptionBytes) return unreadablePropertyListErr;
    out.clear();
    char buffer[65536];
    for (;;) {
        const ssize_t count = ::read(fd.get(), buffer, sizeof buffer);
        if (count < 0) {
            if (errno == EINTR) continue;
            return statusFromErrno(errno);
        }
        if (count == 0) break;
        // A file that grows while it is read is held to the same bound.
        if (out.size() + count > kMaxDescriptionBytes) return unreadablePropertyListErr;
        out.append(buffer, static_cast<qsizetype>(count));
    }
    return status;
}

// The alias of the file `fileName` inside `directory`, or null. Names that would reach outside
// the directory ("..", "a/b", "") are refused by the lookup itself.
AliasHandle aliasOfEntry(const FSRef& package, const FSRef& directory, plist_t entry) {
    const std::optional<QString> fileName = plistGetString(entry, World::SOUND_FILENAME_KEY);
    if (!fileName) return nullptr;
    FSRef file;
    if (FSMakeFSRefCFString(directory, *fileName, kTextEncodingUnknown, file) != noErr) return nullptr;
    if (checkPackageEntry(package, file) != noErr) return nullptr;
    AliasHandle alias;
    if (FSNewAlias(file, alias) != noErr) return nullptr;
    return alias;
}

// The package's "data.plist" read and parsed; a package without one is missing a file.
OSStatus parseDescription(const FSRef& package, PlistPtr& out) {
    FSRef dataFile;
    OSStatus status = FSMakeFSRefCFString(package, QLatin1String(World::DATA_FILE_NAME), kTextEncodingUnknown, dataFile);
    if (status != noErr) return status;
    QByteArray bytes;
    status = readDescription(package, dataFile, bytes);
    if (status != noErr) return status;
    out = plistParse(bytes);
    return out ? noErr : unreadablePropertyListErr;
}

// Hands `add` an alias of every dictionary entry of `array` whose "File Name" names an existing file
// in the package's `subdirectory`; entries that do not are skipped without a word. The result is
// the status of finding the subdirectory itself.
template <typename AddEntry>
OSStatus forEachSoundEntry(const FSRef& package, const char* subdirectory, plist_t array, AddEntry add) {
    FSRef directory;
    const OSStatus status = FSMakeFSRefCFString(package, QLatin1String(subdirectory), kTextEncodingUnknown, directory);
    if (status != noErr) return status;
    for (std::uint32_t i = 0; i < plistArraySize(array); ++i) {
        const plist_t entry = plistArrayItem(array, i);
        if (!plistIsDict(entry)) continue;
        if (const AliasHandle alias = aliasOfEntry(package, directory, entry)) add(*alias, entry);
    }
    return noErr;
}

}  // namespace

void World::loadGroupsFromPlist(plist_t root) {
    const plist_t array = plistGetArray(root, GROUPS_ARRAY_KEY);
    for (std::uint32_t i = 0; i < plistArraySize(array); ++i) {
        const plist_t entry = plistArrayItem(array, i);
        if (!plistIsDict(entry)) continue;
        const GroupID id = addGroup(plistGetString(entry, GROUP_NAME_KEY).value_or(QString()));
        EnvironmentSoundGroup* group = findGroup(id);
        if (!group) continue;
        if (const auto minInterval = plistGetInt32(entry, ENVIRONMENT_SOUND_MIN_INTERVAL_KEY);
            minInterval && *minInterval != group->minInterval) {
            group->minInterval = *minInterval;
            for (int s = 0; s < numEnvironmentSounds; ++s) {
                EnvironmentSound& sound = environmentSounds[static_cast<std::size_t>(s)];
                if (sound.settings.groupID == id) sound.settings.minInterval = *minInterval;
            }
            modified = true;
        }
        if (const auto maxInterval = plistGetInt32(entry, ENVIRONMENT_SOUND_MAX_INTERVAL_KEY))
            setGroupMaxInterval(id, *maxInterval);
    }
}

OSStatus World::loadLoopSoundsFromPlist(const FSRef& package, plist_t array) {
    return forEachSoundEntry(package, LOOP_SOUNDS_SUBDIRECTORY_NAME, array, [this](const Alias& alias, plist_t entry) {
        const SoundID id = addLoopSound(alias);
        LoopSound* sound = findLoopSound(id);
        if (!sound) return;
        sound->filename = plistGetString(entry, SOUND_FILENAME_KEY).value_or(QString());
        if (const auto volumeValue = plistGetDouble(entry, LOOP_SOUND_VOLUME_KEY)) setLoopSoundVolume(id, *volumeValue);
    });
}

OSStatus World::loadEnvironmentSoundsFromPlist(const FSRef& package, plist_t array) {
    const auto addEntry = [this](const Alias& alias, plist_t entry) {
        const SoundID id = addEnvironmentSound(alias);
        if (!findEnvironmentSound(id)) return;
        findEnvironmentSound(id)->filename = plistGetString(entry, SOUND_FILENAME_KEY).value_or(QString());

        const auto storeVolume = [this](double& field, double value) {
            if (field == value) return;
            field = value;
            modified = true;
        };
        // The older single "Volume Adjust" comes first, so explicit bounds in the same entry win.
        if (const auto adjust = plistGetDouble(entry, ENVIRONMENT_SOUND_OLD_VOLUME_ADJUST_KEY)) {
            storeVolume(findEnvironmentSound(id)->settings.minVolume, *adjust);
            storeVolume(findEnvironmentSound(id)->settings.maxVolume, *adjust);
        }
        if (const auto minVolume = plistGetDouble(entry, ENVIRONMENT_SOUND_MIN_VOLUME_KEY))
            storeVolume(findEnvironmentSound(id)->settings.minVolume, *minVolume);
        if (const auto maxVolume = plistGetDouble(entry, ENVIRONMENT_SOUND_MAX_VOLUME_KEY))
            storeVolume(findEnvironmentSound(id)->settings.maxVolume, *maxVolume);
        if (const auto minInterval = plistGetInt32(entry, ENVIRONMENT_SOUND_MIN_INTERVAL_KEY)) {
            std::int32_t& field = findEnvironmentSound(id)->settings.minInterval;
            if (field != *minInterval) {
                field = *minInterval;
                modified = true;
            }
        }
        if (const auto maxInterval = plistGetInt32(entry, ENVIRONMENT_SOUND_MAX_INTERVAL_KEY))
            setEnvironmentSoundMaxInterval(id, *maxInterval);
        if (const auto groupIndex = plistGetInt32(entry, ENVIRONMENT_SOUND_GROUP_INDEX_KEY)) {
            const GroupID groupID = (*groupIndex >= 0 && *groupIndex < numGroups)
                                        ? groups[static_cast<std::size_t>(*groupIndex)].id
                                        : 0;
            setEnvironmentSoundGroupID(id, groupID);
        }
    };
    return forEachSoundEntry(package, ENVIRONMENT_SOUNDS_SUBDIRECTORY_NAME, array, addEntry);
}

OSStatus World::loadFromPackage(const FSRef& package) {
    if (packageAlias) {
        FSRef loaded;
        if (FSResolveAlias(*packageAlias, loaded) == noErr && FSCompareFSRefs(loaded, package)) return noErr;
    }

    // A save of this package that was interrupted may have left a copy beside it; the previous
    // version a failed save kept on purpose (and named to the person) stays until the next save.
    if (FSRef parent; keptPreviousVersion.isEmpty() && FSGetParentRef(package, parent) == noErr)
        recoverInterruptedSave(parent, FSGetName(package));

    resetToInitialState();
    const OSStatus result = loadDescription(package);
    modified = false;
    return result;
}

OSStatus World::loadDescription(const FSRef& package) {
    PlistPtr rootOwner;
    OSStatus status = parseDescription(package, rootOwner);
    if (status != noErr) return status;
    const auto root = static_cast<plist_t>(rootOwner.get());
    if (!plistIsDict(root)) return noErr;

    if (const auto value = plistGetString(root, NAME_KEY)) setName(*value);
    if (const auto value = plistGetString(root, AUTHOR_KEY)) setAuthor(*value);
    if (const auto value = plistGetString(root, DESCRIPTION_KEY)) setDescription(*value);

    loadGroupsFromPlist(root);

    if (const auto crossfade = plistGetInt32(root, LOOP_SOUNDS_CROSSFADE_DURATION_KEY);
        crossfade && *crossfade != loopSoundsCrossFadeDuration) {
        loopSoundsCrossFadeDuration = *crossfade;
        modified = true;
    }

    if (const auto pictureName = plistGetString(root, PICTURE_FILENAME_KEY)) {
        FSRef pictureFile;
        AliasHandle alias;
        if (FSMakeFSRefCFString(package, *pictureName, kTextEncodingUnknown, pictureFile) == noErr &&
            checkPackageEntry(package, pictureFile) == noErr && FSNewAlias(pictureFile, alias) == noErr)
            setPictureFileAlias(alias.get());
        if (pictureFileAlias) pictureFileAlias->follow();
    }

    // A missing sound folder is the result unless a later list was read after it.
    OSStatus pending = noErr;
    if (const plist_t loops = plistGetArray(root, LOOP_SOUNDS_ARRAY_KEY))
        pending = loadLoopSoundsFromPlist(package, loops);
    if (const plist_t environment = plistGetArray(root, ENVIRONMENT_SOUNDS_ARRAY_KEY))
        pending = loadEnvironmentSoundsFromPlist(package, environment);

    AliasHandle alias;
    if (FSNewAlias(package, alias) == noErr) {
        packageAlias = std::move(alias);
        // The open world follows its package: renamed or moved in a file manager, it is still saved to.
        packageAlias->follow();
        if (gPrefs) gPrefs->updateKnownWorlds(packageAlias.get(), name);
    }
    return pending;
}

OSStatus checkWorldPackage(const FSRef& package) {
    PlistPtr rootOwner;
    OSStatus status = parseDescription(package, rootOwner);
    if (status != noErr) return status;
    const auto root = static_cast<plist_t>(rootOwner.get());
    if (!plistIsDict(root)) return noErr;
    // A package has both sound folders (saving makes them); one gone means files are missing, and
    // the load's status for a missing folder is the answer, whichever list would have needed it.
    for (const char* name : {World::LOOP_SOUNDS_SUBDIRECTORY_NAME, World::ENVIRONMENT_SOUNDS_SUBDIRECTORY_NAME}) {
        FSRef folder;
        status = FSMakeFSRefCFString(package, QLatin1String(name), kTextEncodingUnknown, folder);
        if (status != noErr) return status;
    }
    return noErr;
}

}  // namespace sylvora
