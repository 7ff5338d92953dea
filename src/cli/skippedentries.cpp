#include "cli/skippedentries.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <vector>

#include "core/files/utils.h"
#include "core/package/plist.h"
#include "core/world/world.h"

namespace sylvora::cli {

namespace {

// The loaded sounds of one kind, in table order, with the names the loader cached from the file.
struct LoadedList {
    QStringList names;
    qsizetype next = 0;  // the first loaded sound not yet matched to an entry
};

struct SoundKind {
    const char* label;       // "loop sound", "environment sound"
    const char* folderName;  // the package's subfolder
    int capacity;
};

class EntryChecker {
public:
    EntryChecker(const QDir& package, const SoundKind& soundKind, LoadedList loadedSounds, QStringList& out)
        : kind(soundKind), loaded(std::move(loadedSounds)), warnings(out) {
        folderFound = FSMakeFSRefCFString(FSRef{package.absolutePath()}, QLatin1String(kind.folderName),
                                          kTextEncodingUnknown, folder) == noErr;
    }

    // Checks entry `index`; true when it became the next loaded sound.
    bool check(plist_t entry, std::uint32_t index) {
        const QString position = QStringLiteral("%1 entry %2").arg(QLatin1String(kind.label)).arg(index + 1);
        if (!plistIsDict(entry)) {
            warn(QStringLiteral("%1 skipped: not a dictionary").arg(position));
            return false;
        }
        const std::optional<QString> name = plistGetString(entry, World::SOUND_FILENAME_KEY);
        if (!name) {
            warn(QStringLiteral("%1 skipped: no \"File Name\"").arg(position));
            return false;
        }
        const QString what = QStringLiteral("%1 '%2'").arg(QLatin1String(kind.label), *name);
        if (!folderFound) {
            warn(QStringLiteral("%1 skipped: the folder '%2' is missing").arg(what, QLatin1String(kind.folderName)));
            return false;
        }
        FSRef file;
        const OSStatus status = FSMakeFSRefCFString(folder, *name, kTextEncodingUnknown, file);
        if (status == paramErr) {
            warn(QStringLiteral("%1 skipped: not a plain file name inside the package").arg(what));
            return false;
        }
        if (status != noErr) {
            warn(QStringLiteral("%1 skipped: no such file in '%2' (status %3)")
                     .arg(what, QLatin1String(kind.folderName)).arg(status));
            return false;
        }
        if (loaded.next < loaded.names.size() && loaded.names[loaded.next] == *name) {
            ++loaded.next;
            accepted.push_back(file);
            return true;
        }
        for (const FSRef& earlier : accepted) {
            if (FSCompareFSRefs(earlier, file)) {
                warn(QStringLiteral("%1 skipped: the same file as an earlier entry").arg(what));
                return false;
            }
        }
        if (static_cast<int>(accepted.size()) >= kind.capacity) {
            warn(QStringLiteral("%1 skipped: a world holds at most %2 %3s").arg(what).arg(kind.capacity).arg(QLatin1String(kind.label)));
            return false;
        }
        warn(QStringLiteral("%1 skipped: the file could not be loaded for playback").arg(what));
        return false;
    }

    void warn(const QString& text) { warnings << text; }

private:
    const SoundKind& kind;
    LoadedList loaded;
    QStringList& warnings;
    FSRef folder;
    bool folderFound = false;
    std::vector<FSRef> accepted;
};

void checkGroups(plist_t root, QStringList& warnings) {
    const plist_t groups = plistGetArray(root, World::GROUPS_ARRAY_KEY);
    int kept = 0;
    for (std::uint32_t i = 0; i < plistArraySize(groups); ++i) {
        const plist_t entry = plistArrayItem(groups, i);
        if (!plistIsDict(entry)) {
            warnings << QStringLiteral("group entry %1 skipped: not a dictionary").arg(i + 1);
        } else if (++kept > World::MAX_GROUPS) {
            warnings << QStringLiteral("group entry %1 skipped: a world holds at most %2 groups").arg(i + 1).arg(World::MAX_GROUPS);
        }
    }
}

void checkPicture(plist_t root, World& world, QStringList& warnings) {
    const std::optional<QString> picture = plistGetString(root, World::PICTURE_FILENAME_KEY);
    if (picture && !world.getPictureFileAlias()) {
        warnings << QStringLiteral("picture '%1' skipped: no such file in the package").arg(*picture);
    }
}

void checkGroupIndexes(plist_t environment, World& world, QStringList& warnings) {
    for (std::uint32_t i = 0; i < plistArraySize(environment); ++i) {
        const plist_t entry = plistArrayItem(environment, i);
        if (!plistIsDict(entry)) continue;
        const std::optional<std::int32_t> index = plistGetInt32(entry, World::ENVIRONMENT_SOUND_GROUP_INDEX_KEY);
        if (index && (*index < -1 || *index >= world.getNumGroups())) {
            warnings << QStringLiteral("environment sound entry %1: \"Group Index\" %2 names no group; it plays on its own")
                            .arg(i + 1).arg(*index);
        }
    }
}

}  // namespace

QStringList findSkippedEntries(const QString& packagePath, World& world) {
    QStringList warnings;
    const QDir package(QFileInfo(packagePath).absoluteFilePath());
    QFile data(package.filePath(QLatin1String(World::DATA_FILE_NAME)));
    if (!data.open(QIODevice::ReadOnly)) {
        return warnings;
    }
    const PlistPtr rootOwner = plistParse(data.readAll());
    const auto root = static_cast<plist_t>(rootOwner.get());
    if (!plistIsDict(root)) {
        return warnings;
    }
    checkGroups(root, warnings);
    checkPicture(root, world, warnings);

    static const SoundKind loopKind{"loop sound", World::LOOP_SOUNDS_SUBDIRECTORY_NAME, World::MAX_LOOP_SOUNDS};
    static const SoundKind environmentKind{"environment sound", World::ENVIRONMENT_SOUNDS_SUBDIRECTORY_NAME,
                                           World::MAX_ENVIRONMENT_SOUNDS};
    if (const plist_t loops = plistGetArray(root, World::LOOP_SOUNDS_ARRAY_KEY)) {
        LoadedList loaded;
        for (int i = 0; i < world.getNumLoopSounds(); ++i) {
            loaded.names << world.getLoopSoundFilename(world.getIndLoopSoundID(i));
        }
        EntryChecker checker(package, loopKind, loaded, warnings);
        for (std::uint32_t i = 0; i < plistArraySize(loops); ++i) checker.check(plistArrayItem(loops, i), i);
    }
    if (const plist_t environment = plistGetArray(root, World::ENVIRONMENT_SOUNDS_ARRAY_KEY)) {
        LoadedList loaded;
        for (int i = 0; i < world.getNumEnvironmentSounds(); ++i) {
            loaded.names << world.getEnvironmentSoundFilename(world.getIndEnvironmentSoundID(i));
        }
        EntryChecker checker(package, environmentKind, loaded, warnings);
        for (std::uint32_t i = 0; i < plistArraySize(environment); ++i) checker.check(plistArrayItem(environment, i), i);
        checkGroupIndexes(environment, world, warnings);
    }
    return warnings;
}

}  // namespace sylvora::cli
