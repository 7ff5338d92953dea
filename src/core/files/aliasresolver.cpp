#include "core/files/aliasresolver.h"

#include <fcntl.h>
#include <unistd.h>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "core/files/identitysearch.h"
#include "core/files/nativepath.h"

namespace sylvora {

namespace {

constexpr std::chrono::seconds kFruitlessSearchMemory{60};

// The path with every symbolic link resolved, as the mount table writes mount points; the path itself
// when that cannot be had.
QByteArray canonicalPath(const QByteArray& path) {
    std::array<char, PATH_MAX> buffer{};
    return ::realpath(path.constData(), buffer.data()) ? QByteArray(buffer.data()) : path;
}

}  // namespace

std::optional<VolumeRecord> AliasResolver::describeVolume(const QByteArray& path,
                                                          const FileIdentity& identity) {
    const std::shared_ptr<const MountTable> table = MountTable::current();
    const QByteArray canonical = canonicalPath(path);
    const MountEntry* mount = table->mountOf(canonical, identity);
    if (!mount)
        return std::nullopt;
    const std::optional<QByteArray> onVolume = mount->pathOnVolume(canonical);
    if (!onVolume)
        return std::nullopt;
    return VolumeRecord{mount->volumeId, mount->mountPoint, *onVolume};
}

const MountTable& AliasResolver::mounts() {
    if (!mounts_)
        mounts_ = MountTable::current();
    return *mounts_;
}

// The same inode and birth time on the recorded device, or on another device number that the same
// file system has now (a drive plugged in again may be given another one).
bool AliasResolver::isRecordedObject(const QByteArray& path, const FileIdentity& found) {
    if (found.inode != alias_.inode_)
        return false;
    // A recorded birth time with none reported now is not a match: the same device and inode on a file
    // system that keeps no birth times is not where the alias was made.
    if (alias_.birthTime_ && found.birthTime != alias_.birthTime_)
        return false;
    if (found.device == alias_.device_)
        return true;
    if (!alias_.volume_)
        return false;
    const MountEntry* mount = mounts().mountOf(canonicalPath(path), found);
    return mount && mount->volumeId == alias_.volume_->volumeId;
}

// Whether `path` holds the recorded object; when it does and is not where the alias last saw it,
// the alias remembers the new place.
bool AliasResolver::acceptAt(const QByteArray& path) {
    FileIdentity found;
    if (!readFileIdentity(AT_FDCWD, path.constData(), found) || !isRecordedObject(path, found))
        return false;
    if (path != nativepath::encode(alias_.path_) || found.device != alias_.device_)
        alias_.relocate(nativepath::decode(path.constData()), found);
    return true;
}

bool AliasResolver::resolveFollowed() {
    const int fd = alias_.followed_.get();
    if (fd < 0)
        return false;
    std::array<char, 32> link{};
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", fd);
    std::array<char, PATH_MAX> target{};
    const ssize_t length = ::readlink(link.data(), target.data(), target.size() - 1);
    if (length <= 0)
        return false;
    // A deleted object's link ends in " (deleted)" and names nothing; one the link names by mistake
    // (a file really called that) is told apart by its identity.
    FileIdentity held;
    FileIdentity atPath;
    const QByteArray path(target.data(), length);
    if (!readFileIdentity(fd, "", held) || !readFileIdentity(AT_FDCWD, path.constData(), atPath) ||
        held.device != atPath.device || held.inode != atPath.inode)
        return false;
    if (path != nativepath::encode(alias_.path_))
        alias_.relocate(nativepath::decode(path.constData()), atPath);
    return true;
}

std::vector<const MountEntry*> AliasResolver::mountsOfRecordedVolume() {
    if (alias_.volume_)
        return mounts().mountsOfVolume(alias_.volume_->volumeId);
    // An alias from before volumes were recorded knows its device number only.
    return mounts().mountsOfDevice(alias_.device_);
}

OSStatus AliasResolver::resolve(FSRef& out) {
    const QString& recorded = alias_.path_;
    if (recorded.isEmpty() || !recorded.startsWith(QLatin1Char('/')))
        return paramErr;

    // The recorded path first: one stat settles the common case, followed or not.
    const QByteArray path = nativepath::encode(recorded);
    FileIdentity atPath;
    const bool somethingAtPath = readFileIdentity(AT_FDCWD, path.constData(), atPath);
    const int pathError = errno;
    if (somethingAtPath && isRecordedObject(path, atPath)) {
        if (atPath.device != alias_.device_)
            alias_.relocate(recorded, atPath);
        out.path = recorded;
        return noErr;
    }
    if (resolveFollowed()) {
        out.path = alias_.path_;
        return noErr;
    }

    const std::vector<const MountEntry*> volumeMounts = mountsOfRecordedVolume();
    if (alias_.volume_ && volumeMounts.empty() && !mounts().isEmpty())
        return nsvErr;

    // The same place inside the file system, wherever it is mounted now; the mount that shows most of
    // the file system is the one to search.
    const MountEntry* searchMount = nullptr;
    QByteArray lastSeen;
    for (const MountEntry* mount : volumeMounts) {
        const std::optional<QByteArray> through =
            alias_.volume_
                ? mount->pathThroughMount(alias_.volume_->pathOnVolume)
                : (mount->pathOnVolume(canonicalPath(path)) ? std::optional<QByteArray>(path) : std::nullopt);
        if (!through)
            continue;
        if (*through != path && acceptAt(*through)) {
            out.path = alias_.path_;
            return noErr;
        }
        if (!searchMount || mount->root.size() < searchMount->root.size()) {
            searchMount = mount;
            lastSeen = *through;
        }
    }

    // Without the search, what stands at the path is only given, not settled for: the recorded
    // object may still be found elsewhere by a search made later.
    if (search_ == Search::skipped) {
        if (!somethingAtPath)
            return statusFromErrno(pathError);
        out.path = recorded;
        return noErr;
    }

    const auto now = std::chrono::steady_clock::now();
    const bool searchedLately = alias_.fruitlessSearchAt_.time_since_epoch().count() != 0 &&
                                now - alias_.fruitlessSearchAt_ < kFruitlessSearchMemory;
    if (searchMount && !searchedLately) {
        IdentitySearch search(*searchMount, alias_.inode_, alias_.birthTime_);
        if (const std::optional<QByteArray> found = search.find(lastSeen); found && acceptAt(*found)) {
            out.path = alias_.path_;
            return noErr;
        }
        alias_.fruitlessSearchAt_ = now;
    }

    // What stands at the path now takes the recorded object's place, and the alias keeps to it.
    if (somethingAtPath) {
        alias_.relocate(recorded, atPath);
        out.path = recorded;
        return noErr;
    }
    return statusFromErrno(pathError);
}

}  // namespace sylvora
