// Writing the world as a package on disk.
//
// A world is a person's work, so a save never leaves the disk without one complete copy of it:
// the new package is written in full and flushed (every file, its folder and the parent) before it
// replaces anything, and replacing an existing package goes through an "aside" folder so that each
// step can be undone:
//
//   1. the complete new package T is written beside the destination D and flushed;
//   2. D's items are moved into a fresh aside folder A (renames on one volume); D itself stays, so
//      aliases to it keep resolving;
//   3. T's items are moved into D, and D is flushed;
//   4. A and the now empty T are deleted.
//
// At every moment either D, A or T holds a complete world: during step 2 T is complete, during
// step 3 A holds the complete old world. When a move fails the moves already made are undone in
// reverse (T's items back out of D, then A's back into D); T is deleted only when D holds its old
// contents again. When undoing fails too, nothing at all is deleted and the save reports the
// failure: the user finds the new world in T and the old one in D and A.

#include <fcntl.h>
#include <unistd.h>

#include <QStringList>
#include <cerrno>
#include <cstdlib>
#include <vector>

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

// Copies `source` into `directory` and notes the copy, to be flushed with the others.
OSStatus copyIntoPackage(const FSRef& source, const FSRef& directory, std::vector<FSRef>& copies) {
    const OSStatus status = myCopyFileDataForkAndType(source, directory);
    if (status != noErr) return status;
    copies.push_back(FSRef{nativepath::join(directory.path, FSGetName(source))});
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
        if (status == noErr) {
            plistSetString(root, PICTURE_FILENAME_KEY, FSGetName(pictureFile));
            status = copyIntoPackage(pictureFile, package, copies);
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
            if (status != noErr) break;
            PlistPtr entry = plistNewDict();
            plistSetString(static_cast<plist_t>(entry.get()), SOUND_FILENAME_KEY, FSGetName(file));
            plistSetDouble(static_cast<plist_t>(entry.get()), LOOP_SOUND_VOLUME_KEY, sound.volume);
            plistAppend(static_cast<plist_t>(loopArray.get()), std::move(entry));
            status = copyIntoPackage(file, loopDirectory, copies);
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
            status = copyIntoPackage(file, environmentDirectory, copies);
        }
        plistSetNode(root, ENVIRONMENT_SOUNDS_ARRAY_KEY, std::move(environmentArray));
    }

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
    if (status != noErr) return status;
    status = savePackageContents(out);
    if (status == noErr) status = FSSyncObject(parent);
    if (status != noErr) {
        FSDeleteContainer(out);
        return status;
    }
    return noErr;
}

bool World::isLoadedPackage(const FSRef& package) const {
    FSRef loaded;
    return packageAlias && FSResolveAlias(*packageAlias, loaded) == noErr && FSCompareFSRefs(loaded, package);
}

void World::releasePackageFiles() {
    if (previewStopper) previewStopper();
    disposeAllMovies();
    closePictureFork();
}

void World::reloadFromSavedPackage(const FSRef& package, bool wasPlaying) {
    packageAlias.reset();
    loadFromPackage(package);
    if (wasPlaying) start();
}

OSStatus World::doSaveAs(const FSRef& parent, const QString& packageName) {
    const bool wasPlaying = isPlaying();

    FSRef existing;
    OSStatus status = FSMakeFSRefCFString(parent, packageName, kTextEncodingUnknown, existing);
    if (status == fnfErr) {
        FSRef created;
        status = FSCreateDirectoryUnicode(parent, packageName, &created);
        if (status != noErr) return status;
        status = savePackageContents(created);
        if (status == noErr) status = FSSyncObject(parent);
        if (status != noErr) {
            FSDeleteContainer(created);
            return status;
        }
        reloadFromSavedPackage(created, wasPlaying);
        return noErr;
    }
    if (status != noErr) return status;

    const bool overOwnPackage = isLoadedPackage(existing);
    if (overOwnPackage && numMovies > 0) return doSave();

    FSRef temp;
    status = saveToTempUniqueNamePackage(parent, temp);
    if (status != noErr) return status;

    bool isDirectory = false;
    status = FSIsDirectory(existing, isDirectory);
    if (status != noErr) {
        FSDeleteContainer(temp);
        return status;
    }

    FSRef saved = existing;
    bool swapped = false;
    if (isDirectory) {
        // Even with no sound loaded the picture file of the package is held open.
        if (overOwnPackage) releasePackageFiles();
        status = replaceDirectoryContents(parent, existing, temp, swapped);
    } else {
        status = replaceFileWithPackage(parent, existing, temp, packageName, saved);
    }
    if (status != noErr) {
        // Once swapped, the destination holds the world as saved: the world is loaded from there
        // even though the save reports its failure.
        if (swapped) reloadFromSavedPackage(saved, wasPlaying);
        return status;
    }

    reloadFromSavedPackage(saved, wasPlaying);
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

    const bool wasPlaying = isPlaying();
    stop();
    releasePackageFiles();

    // Loading a package clears `modified`, so a failed save finds it clear exactly when the world was
    // loaded again from the saved package (the failure came after the swap); it then plays as before.
    const bool wasModified = modified;
    modified = true;
    status = doSaveAs(parent, FSGetName(package));
    if (status != noErr) {
        if (!modified) {
            if (wasPlaying) start();
        } else {
            modified = wasModified;
        }
        return status;
    }
    start();
    if (!wasPlaying) stop();
    modified = false;
    return noErr;
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
