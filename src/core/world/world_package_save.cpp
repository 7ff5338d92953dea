// Writing the world as a package on disk.
//
// A world is a person's work, so a save never leaves the disk without one complete copy of it, and
// the package's own path never holds anything less than a whole world:
//
//   1. the complete new package T is written beside the destination D and flushed; sounds that D
//      already holds are hard-linked into T rather than copied, so a save over the world's own
//      package needs no room for them and takes no time for them;
//   2. T and D are exchanged in one step (renameat2 with RENAME_EXCHANGE): D's path now names the
//      new world, T's the old one;
//   3. the parent folder is flushed, and T, the old world, is deleted.
//
// T's name depends only on D's name, so whatever an interrupted save left beside D is found again by
// the next save or open of D: while D is whole the leftover is an unfinished or old copy and goes;
// were D ever not whole, a whole leftover takes its place. File systems that cannot exchange get
// the older way through an "aside" folder: D's items are moved aside and T's moved in, each step
// undone in reverse when one fails.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFileInfo>
#include <QStringList>
#include <cerrno>
#include <cstdlib>
#include <functional>
#include <vector>

#include "audio/engine/soundinstance.h"
#include "core/files/morefilesx.h"
#include "core/files/nativepath.h"
#include "core/files/utils.h"
#include "core/package/packagename.h"
#include "core/package/plist.h"
#include "core/strings/stringresources.h"
#include "core/world/world.h"

namespace sylvora {

namespace {

QString extensionSuffix() { return QLatin1Char('.') + QLatin1String(World::PACKAGENAME_EXTENSION); }

QString makeTempPackageName() {
    return QLatin1String(World::TEMP_PREFIX) + QString::number(random()) + extensionSuffix();
}

// A new, empty folder with a "temp <random>.sylvora" name that nothing in `parent` had.
OSStatus createTempDirectory(const FSRef& parent, FSRef& out) {
    for (;;) {
        const QString name = makeTempPackageName();
        FSRef existing;
        const OSStatus lookup = FSMakeFSRefCFString(parent, name, kTextEncodingUnknown, existing);
        if (lookup == noErr) continue;
        if (lookup != fnfErr) return lookup;
        const OSStatus status = FSCreateDirectoryUnicode(parent, name, &out);
        if (status != dupFNErr) return status;  // lost a race for the name: draw another
    }
}

}  // namespace

QString World::copyTempPackageName(const QString& destinationName) {
    std::uint32_t hash = 2166136261u;
    for (const QChar c : destinationName) {
        hash ^= c.unicode();
        hash *= 16777619u;
    }
    return QLatin1String(World::TEMP_PREFIX) + QString::number(hash & 0x7fffffffu) + extensionSuffix();
}

namespace {

// A package whose description is in place: the description is written after every sound, so a
// package that has it is whole.
bool isWholePackage(const FSRef& package) {
    struct stat info {};
    const QByteArray path = nativepath::encode(nativepath::join(package.path, QLatin1String(World::DATA_FILE_NAME)));
    return ::lstat(path.constData(), &info) == 0 && S_ISREG(info.st_mode);
}

// Puts `source` into `directory` and notes the new file, to be flushed with the others. A file of the
// package being replaced is hard-linked: that package goes once the new one is in place, so the link
// is soon the file's only name, and the save needs neither room nor time for it. Copying remains for
// files from elsewhere and across file systems.
OSStatus copyIntoPackage(const FSRef& source, const FSRef& directory, std::vector<FSRef>& copies,
                         const FSRef& replacedPackage, const std::function<bool()>& cancelled) {
    if (cancelled && cancelled()) return userCanceledErr;
    const FSRef target{nativepath::join(directory.path, FSGetName(source))};
    bool linked = false;
    if (!replacedPackage.path.isEmpty() && FSIsInside(source, replacedPackage)) {
        if (::link(nativepath::encode(source.path).constData(), nativepath::encode(target.path).constData()) == 0)
            linked = true;
        else if (errno == EEXIST)
            return dupFNErr;
    }
    if (!linked) {
        const OSStatus status = myCopyFileDataForkAndType(source, directory);
        if (status != noErr) return status;
    }
    copies.push_back(target);
    return noErr;
}

// Flushing every copy once all are written costs about one journal commit, where flushing each
// right after its copy would wait for one commit per file.
OSStatus syncAll(const std::vector<FSRef>& objects) {
    for (const FSRef& object : objects)
        if (const OSStatus status = FSSyncObject(object); status != noErr) return status;
    return noErr;
}

OSStatus writeAndSyncFile(const FSRef& file, const QByteArray& bytes) {
    const QByteArray path = nativepath::encode(file.path);
    const int fd = ::open(path.constData(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (fd < 0) return statusFromErrno(errno);
    OSStatus status = noErr;
    for (qsizetype written = 0; written < bytes.size();) {
        const ssize_t count = ::write(fd, bytes.constData() + written, static_cast<std::size_t>(bytes.size() - written));
        if (count < 0) {
            if (errno == EINTR) continue;
            status = statusFromErrno(errno);
            break;
        }
        written += count;
    }
    if (status == noErr && ::fsync(fd) != 0) status = statusFromErrno(errno);
    if (::close(fd) != 0 && status == noErr) status = statusFromErrno(errno);
    return status;
}

// Moves every item of `from` into `to`, stopping at the first failure; `moved` names the items
// that did move, so that a failure can be undone.
OSStatus moveAllItems(const FSRef& from, const FSRef& to, QStringList& moved) {
    std::vector<FSRef> items;
    OSStatus status = FSListDirectory(from, items);
    if (status != noErr) return status;
    for (const FSRef& item : items) {
        status = FSMoveObject(item, to, nullptr);
        if (status != noErr) return status;
        moved.append(FSGetName(item));
    }
    return noErr;
}

// Moves the named items of `from` back into `to`; false when any of them did not come back.
bool moveItemsBack(const FSRef& from, const QStringList& names, const FSRef& to) {
    bool allBack = true;
    for (const QString& name : names) {
        FSRef item;
        if (FSMakeFSRefCFString(from, name, kTextEncodingUnknown, item) != noErr ||
            FSMoveObject(item, to, nullptr) != noErr)
            allBack = false;
    }
    return allBack;
}

// Puts the complete package `temp` in the place of the existing folder `destination`, keeping the
// folder itself. Takes over `temp`: it is deleted unless it is still needed as a complete copy.
// `swapped` tells a failure that came after the new world was moved into `destination`.
OSStatus replaceDirectoryContents(const FSRef& parent, const FSRef& destination, const FSRef& temp, bool& swapped) {
    FSRef aside;
    OSStatus status = createTempDirectory(parent, aside);
    if (status != noErr) {
        FSDeleteContainer(temp);
        return status;
    }

    QStringList oldItems;
    status = moveAllItems(destination, aside, oldItems);
    if (status != noErr) {
        if (moveItemsBack(aside, oldItems, destination)) {
            FSDeleteContainer(aside);
            FSDeleteContainer(temp);
        }
        return status;
    }

    QStringList newItems;
    status = moveAllItems(temp, destination, newItems);
    if (status != noErr) {
        if (moveItemsBack(destination, newItems, temp) && moveItemsBack(aside, oldItems, destination)) {
            FSDeleteContainer(aside);
            FSDeleteContainer(temp);
        }
        return status;
    }

    // The new world is in place once this flush is done; what follows only tidies up, and a
    // leftover folder there loses nothing of the saved world. When the flush fails the new world is
    // in the destination but perhaps not yet on the disk: the aside copy of the old one stays until
    // the user has seen the failure, the emptied temporary folder goes.
    swapped = true;
    status = FSSyncObject(destination);
    if (status != noErr) {
        FSDeleteContainer(temp);
        FSSyncObject(parent);
        return status;
    }
    FSDeleteContainer(aside);
    FSDeleteContainer(temp);
    FSSyncObject(parent);
    return noErr;
}

// Puts the complete package `temp` in the place of the plain file `existing`, named `name`. The
// file is renamed aside first so that it can be put back if the package cannot take its name.
OSStatus replaceFileWithPackage(const FSRef& parent, const FSRef& existing, const FSRef& temp, const QString& name,
                                FSRef& out) {
    FSRef aside;
    OSStatus status = fnfErr;
    for (;;) {
        const QString asideName = makeTempPackageName();
        FSRef taken;
        status = FSMakeFSRefCFString(parent, asideName, kTextEncodingUnknown, taken);
        if (status == noErr) continue;
        if (status != fnfErr) break;
        status = FSRenameUnicode(existing, asideName, &aside);
        if (status != dupFNErr) break;
    }
    if (status != noErr) {
        FSDeleteContainer(temp);
        return status;
    }
    status = FSRenameUnicode(temp, name, &out);
    if (status != noErr) {
        FSRenameUnicode(aside, name, nullptr);
        FSDeleteContainer(temp);
        return status;
    }
    FSSyncObject(parent);
    FSDeleteObject(aside);
    return noErr;
}

}  // namespace

void World::noteMissingFile(const Alias& alias, OSStatus status) {
    if (status == fnfErr) missingFileOfLastSave = QFileInfo(alias.recordedPath()).fileName();
}

OSStatus World::savePackageContents(const FSRef& package) {
    const PlistPtr rootOwner = plistNewDict();
    const auto root = static_cast<plist_t>(rootOwner.get());

    if (!name.isEmpty()) plistSetString(root, NAME_KEY, name);
    if (!author.isEmpty()) plistSetString(root, AUTHOR_KEY, author);
    if (!description.isEmpty()) plistSetString(root, DESCRIPTION_KEY, description);

    PlistPtr groupArray = plistNewArray();
    for (int i = 0; i < numGroups; ++i) {
        const EnvironmentSoundGroup& group = groups[static_cast<std::size_t>(i)];
        PlistPtr entry = plistNewDict();
        const auto entryNode = static_cast<plist_t>(entry.get());
        if (!group.name.isNull()) plistSetString(entryNode, GROUP_NAME_KEY, group.name);
        plistSetInt32(entryNode, ENVIRONMENT_SOUND_MIN_INTERVAL_KEY, group.minInterval);
        plistSetInt32(entryNode, ENVIRONMENT_SOUND_MAX_INTERVAL_KEY, group.maxInterval);
        plistAppend(static_cast<plist_t>(groupArray.get()), std::move(entry));
    }
    plistSetNode(root, GROUPS_ARRAY_KEY, std::move(groupArray));
    plistSetInt32(root, LOOP_SOUNDS_CROSSFADE_DURATION_KEY, loopSoundsCrossFadeDuration);

    std::vector<FSRef> copies;
    OSStatus status = noErr;
    if (pictureFileAlias) {
        FSRef pictureFile;
        status = FSResolveAlias(*pictureFileAlias, pictureFile);
        noteMissingFile(*pictureFileAlias, status);
        if (status == noErr) {
            plistSetString(root, PICTURE_FILENAME_KEY, FSGetName(pictureFile));
            status = copyIntoPackage(pictureFile, package, copies, packageBeingReplaced, saveCanceller);
        }
    }

    FSRef loopDirectory;
    if (status == noErr) {
        PlistPtr loopArray = plistNewArray();
        status = FSCreateDirectoryUnicode(package, QLatin1String(LOOP_SOUNDS_SUBDIRECTORY_NAME), &loopDirectory);
        for (int i = 0; status == noErr && i < numLoopSounds; ++i) {
            const LoopSound& sound = loopSounds[static_cast<std::size_t>(i)];
            FSRef file;
            status = sound.alias ? FSResolveAlias(*sound.alias, file) : fnfErr;
            if (sound.alias) noteMissingFile(*sound.alias, status);
            if (status != noErr) break;
            PlistPtr entry = plistNewDict();
            plistSetString(static_cast<plist_t>(entry.get()), SOUND_FILENAME_KEY, FSGetName(file));
            plistSetDouble(static_cast<plist_t>(entry.get()), LOOP_SOUND_VOLUME_KEY, sound.volume);
            plistAppend(static_cast<plist_t>(loopArray.get()), std::move(entry));
            status = copyIntoPackage(file, loopDirectory, copies, packageBeingReplaced, saveCanceller);
        }
        plistSetNode(root, LOOP_SOUNDS_ARRAY_KEY, std::move(loopArray));
    }

    FSRef environmentDirectory;
    if (status == noErr) {
        PlistPtr environmentArray = plistNewArray();
        status = FSCreateDirectoryUnicode(package, QLatin1String(ENVIRONMENT_SOUNDS_SUBDIRECTORY_NAME),
                                          &environmentDirectory);
        for (int i = 0; status == noErr && i < numEnvironmentSounds; ++i) {
            const EnvironmentSound& sound = environmentSounds[static_cast<std::size_t>(i)];
            FSRef file;
            status = sound.alias ? FSResolveAlias(*sound.alias, file) : fnfErr;
            if (sound.alias) noteMissingFile(*sound.alias, status);
            if (status != noErr) break;
            int groupIndex = -1;
            for (int g = 0; g < numGroups; ++g)
                if (sound.settings.groupID != 0 && groups[static_cast<std::size_t>(g)].id == sound.settings.groupID)
                    groupIndex = g;
            PlistPtr entry = plistNewDict();
            const auto entryNode = static_cast<plist_t>(entry.get());
            plistSetString(entryNode, SOUND_FILENAME_KEY, FSGetName(file));
            plistSetDouble(entryNode, ENVIRONMENT_SOUND_MIN_VOLUME_KEY, sound.settings.minVolume);
            plistSetDouble(entryNode, ENVIRONMENT_SOUND_MAX_VOLUME_KEY, sound.settings.maxVolume);
            plistSetInt32(entryNode, ENVIRONMENT_SOUND_MIN_INTERVAL_KEY, sound.settings.minInterval);
            plistSetInt32(entryNode, ENVIRONMENT_SOUND_MAX_INTERVAL_KEY, sound.settings.maxInterval);
            plistSetInt32(entryNode, ENVIRONMENT_SOUND_GROUP_INDEX_KEY, groupIndex);
            plistAppend(static_cast<plist_t>(environmentArray.get()), std::move(entry));
            status = copyIntoPackage(file, environmentDirectory, copies, packageBeingReplaced, saveCanceller);
        }
        plistSetNode(root, ENVIRONMENT_SOUNDS_ARRAY_KEY, std::move(environmentArray));
    }

    if (status == noErr && saveCanceller && saveCanceller()) status = userCanceledErr;
    if (status == noErr) {
        FSRef dataFile;
        status = FSCreateFileUnicode(package, QLatin1String(DATA_FILE_NAME), &dataFile);
        if (status == noErr) {
            const QByteArray xml = plistToXml(root);
            // Without its description a package must never replace a saved world.
            status = xml.isEmpty() ? ioErr : writeAndSyncFile(dataFile, xml);
        }
    }

    // data.plist flushed itself; the copies and the folders that name them follow.
    if (status == noErr) status = syncAll(copies);
    if (status == noErr) status = syncAll({loopDirectory, environmentDirectory, package});
    return status;
}

OSStatus World::saveToTempUniqueNamePackage(const FSRef& parent, FSRef& out) {
    OSStatus status = createTempDirectory(parent, out);
    if (status == noErr) status = fillTempPackage(parent, out);
    return status;
}

OSStatus World::createTempPackageFor(const FSRef& parent, const QString& packageName, FSRef& temp) {
    const OSStatus status = FSCreateDirectoryUnicode(parent, copyTempPackageName(packageName), &temp);
    // A leftover that recovery kept (neither it nor the package is whole) is not ours to remove.
    return status == dupFNErr ? createTempDirectory(parent, temp) : status;
}

OSStatus World::fillTempPackage(const FSRef& parent, const FSRef& temp) {
    OSStatus status = savePackageContents(temp);
    if (status == noErr) status = FSSyncObject(parent);
    if (status != noErr) FSDeleteContainer(temp);
    return status;
}

void World::recoverInterruptedSave(const FSRef& parent, const QString& packageName) {
    FSRef leftover;
    if (FSMakeFSRefCFString(parent, copyTempPackageName(packageName), kTextEncodingUnknown, leftover) != noErr) return;
    const FSRef package{nativepath::join(parent.path, packageName)};
    bool isDirectory = false;
    if (FSIsDirectory(leftover, isDirectory) != noErr || !isDirectory) return;
    FSRef existing;
    const bool packageThere = FSPathMakeRef(package.path, existing) == noErr;
    if (isWholePackage(package) || (!packageThere && !isWholePackage(leftover))) {
        // An unfinished or an old copy: the package, or nothing, is what the person saved.
        FSDeleteContainer(leftover);
    } else if (isWholePackage(leftover)) {
        // The leftover is the only whole copy: it takes the package's place, and what stood there goes.
        if (!packageThere) {
            FSRenameUnicode(leftover, packageName, nullptr);
        } else if (FSExchangeObjects(leftover, existing) == noErr) {
            FSDeleteContainer(leftover);
        }
    }
    FSSyncObject(parent);
}

bool World::isLoadedPackage(const FSRef& package) const {
    FSRef loaded;
    return packageAlias && FSResolveAlias(*packageAlias, loaded) == noErr && FSCompareFSRefs(loaded, package);
}

void World::releasePackageFiles() {
    if (previewStopper) previewStopper();
    for (const auto& movie : takeSoundingMovies()) movie->fadeNextChange(RELOAD_FADE_SECONDS);
    closePictureFork();
}

void World::reloadFromSavedPackage(const FSRef& package, bool wasPlaying) {
    // The reload replaces every sound, the one being previewed with it. What sounds now goes on
    // sounding while the saved package loads (its open files outlive their names), then fades out
    // under the reloaded world as that fades in: a save is heard as a short crossfade, never as a
    // cut followed by the silence of the load.
    if (previewStopper) previewStopper();
    const auto outgoing = takeSoundingMovies();
    packageAlias.reset();
    loadFromPackage(package);
    if (wasPlaying) startFadingIn(RELOAD_FADE_SECONDS);
    for (const auto& movie : outgoing) movie->fadeNextChange(RELOAD_FADE_SECONDS);
}

OSStatus World::doSaveAs(const FSRef& parent, const QString& packageName) {
    const bool wasPlaying = isPlaying();
    keptPreviousVersion.clear();
    missingFileOfLastSave.clear();
    recoverInterruptedSave(parent, packageName);

    FSRef existing;
    OSStatus status = FSMakeFSRefCFString(parent, packageName, kTextEncodingUnknown, existing);
    if (status == fnfErr) {
        // Written under the temporary name and renamed into place whole, so that a save killed
        // half-way never leaves a package without its description under the chosen name.
        FSRef temp;
        status = createTempPackageFor(parent, packageName, temp);
        if (status == noErr) status = fillTempPackage(parent, temp);
        if (status != noErr) return status;
        FSRef created;
        status = FSRenameUnicode(temp, packageName, &created);
        if (status != noErr) {
            FSDeleteContainer(temp);
            return status;
        }
        status = FSSyncObject(parent);
        reloadFromSavedPackage(created, wasPlaying);
        if (status != noErr) modified = true;
        return status;
    }
    if (status != noErr) return status;

    if (isLoadedPackage(existing) && numMovies > 0) return doSave();
    return saveOverExisting(parent, packageName, existing, wasPlaying);
}

OSStatus World::saveOverExisting(const FSRef& parent, const QString& packageName, const FSRef& existing,
                                 bool wasPlaying) {
    bool isDirectory = false;
    OSStatus status = FSIsDirectory(existing, isDirectory);
    if (status != noErr) return status;
    if (!isDirectory) {
        FSRef temp;
        status = saveToTempUniqueNamePackage(parent, temp);
        if (status != noErr) return status;
        FSRef saved;
        status = replaceFileWithPackage(parent, existing, temp, packageName, saved);
        if (status == noErr) reloadFromSavedPackage(saved, wasPlaying);
        return status;
    }

    recoverInterruptedSave(parent, packageName);
    FSRef temp;
    status = createTempPackageFor(parent, packageName, temp);
    if (status != noErr) return status;
    packageBeingReplaced = existing;
    status = fillTempPackage(parent, temp);
    packageBeingReplaced = FSRef{};
    if (status != noErr) return status;

    status = FSExchangeObjects(temp, existing);
    if (status == unimpErr) {
        // Moving items out of the package: nothing of it may be held open on the way.
        if (isLoadedPackage(existing)) releasePackageFiles();
        bool swapped = false;
        status = replaceDirectoryContents(parent, existing, temp, swapped);
        // Once swapped, the destination holds the world as saved, even when the save then failed.
        if (status == noErr || swapped) reloadFromSavedPackage(existing, wasPlaying);
        if (status != noErr && swapped) modified = true;
        return status;
    }
    if (status != noErr) {
        FSDeleteContainer(temp);
        return status;
    }

    // The package's path now names the new world and `temp` the old one. Until the parent's flush
    // is done a crash of the machine could bring the old one back, so the old copy stays then, named
    // to the person, and the world counts as unsaved.
    const OSStatus flushed = FSSyncObject(parent);
    if (flushed != noErr) {
        keptPreviousVersion = temp.path;
        reloadFromSavedPackage(existing, wasPlaying);
        modified = true;
        return flushed;
    }
    FSDeleteContainer(temp);
    FSSyncObject(parent);
    reloadFromSavedPackage(existing, wasPlaying);
    return noErr;
}

OSStatus World::doSave() {
    if (!packageAlias) return fnfErr;
    FSRef package;
    OSStatus status = FSResolveAlias(*packageAlias, package);
    if (status != noErr) return status;
    FSRef parent;
    status = FSGetParentRef(package, parent);
    if (status != noErr) return status;
    keptPreviousVersion.clear();
    missingFileOfLastSave.clear();
    // An open file outlives its name being given to another, so the world keeps playing from the old
    // package while the new one is written and exchanged; only the reload stops it.
    return saveOverExisting(parent, FSGetName(package), package, isPlaying());
}

QString World::copyDefaultSaveAsFilename(bool withExtension) const {
    QString fileName;
    FSRef package;
    if (packageAlias && FSResolveAlias(*packageAlias, package) == noErr)
        fileName = withExtension ? FSGetName(package) : copyPackageDisplayName(package);
    if (fileName.isEmpty()) {
        fileName = !name.isEmpty() ? name : copyLocalizedString(UNTITLED_SAVE_AS_FILENAME_KEY, MISC_STRINGS_FILE);
        if (withExtension) fileName += extensionSuffix();
    }
    return fileName;
}

}  // namespace sylvora
