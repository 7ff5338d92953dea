#include "core/files/identitysearch.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <deque>

#include "core/files/uniquefd.h"

namespace sylvora {

namespace {

QByteArray parentOf(const QByteArray& path) {
    const qsizetype slash = path.lastIndexOf('/');
    return slash <= 0 ? QByteArray("/") : path.left(slash);
}

QByteArray join(const QByteArray& folder, const char* name) {
    return folder.endsWith('/') ? folder + name : folder + '/' + name;
}

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

}  // namespace

IdentitySearch::IdentitySearch(const MountEntry& mount, quint64 inode, std::optional<BirthTime> birthTime)
    : mount_(mount),
      inode_(inode),
      birthTime_(birthTime),
      direntInodesAreReal_(mount.direntInodesAreReal()) {}

bool IdentitySearch::outOfBudget() {
    // The clock is read every 64 entries: often enough to keep within a millisecond of the bound.
    if (++visited_ > MAX_ENTRIES || (visited_ % 64 == 0 && std::chrono::steady_clock::now() > deadline_))
        exhausted_ = true;
    return exhausted_;
}

std::optional<QByteArray> IdentitySearch::find(const QByteArray& lastSeenPath) {
    deadline_ = std::chrono::steady_clock::now() + MAX_TIME;
    struct stat top {};
    if (::stat(mount_.mountPoint.constData(), &top) != 0)
        return std::nullopt;
    device_ = top.st_dev;

    // The deepest folder of the old path that still exists on this file system.
    QByteArray folder = parentOf(lastSeenPath);
    while (folder != mount_.mountPoint && folder != "/") {
        struct stat info {};
        if (::stat(folder.constData(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_dev == device_ &&
            mount_.pathOnVolume(folder))
            break;
        folder = parentOf(folder);
    }
    if (!mount_.pathOnVolume(folder))
        folder = mount_.mountPoint;

    QByteArray searched;  // the name of the subtree already searched, inside `folder`
    for (;;) {
        if (std::optional<QByteArray> found = searchBelow(folder, searched))
            return found;
        if (exhausted_ || folder == mount_.mountPoint || folder == "/")
            return std::nullopt;
        searched = folder.mid(folder.lastIndexOf('/') + 1);
        folder = parentOf(folder);
    }
}

std::optional<QByteArray> IdentitySearch::searchBelow(const QByteArray& start, const QByteArray& skipName) {
    std::deque<QByteArray> folders{start};
    bool atStart = true;
    while (!folders.empty()) {
        const QByteArray folder = std::move(folders.front());
        folders.pop_front();
        const bool skipping = atStart && !skipName.isEmpty();
        atStart = false;

        UniqueFd fd(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        struct stat info {};
        if (!fd.valid() || ::fstat(fd.get(), &info) != 0 || info.st_dev != device_)
            continue;  // unreadable, or another file system mounted here
        DIR* dir = ::fdopendir(fd.get());
        if (!dir)
            continue;
        fd.release();  // now owned by `dir`

        std::optional<QByteArray> found;
        while (const dirent* entry = ::readdir(dir)) {
            const char* name = entry->d_name;
            if (isDotOrDotDot(name) || (skipping && skipName == name))
                continue;
            if (outOfBudget())
                break;
            bool isDirectory = entry->d_type == DT_DIR;
            // Where directory entries carry the real inode number, only a candidate needs a stat.
            if (!direntInodesAreReal_ || entry->d_ino == inode_ || entry->d_type == DT_UNKNOWN) {
                FileIdentity identity;
                if (!readFileIdentity(::dirfd(dir), name, identity, false))
                    continue;
                isDirectory = identity.isDirectory;
                if (identity.device == device_ && identity.inode == inode_ &&
                    (!birthTime_ || identity.birthTime == birthTime_)) {
                    found = join(folder, name);
                    break;
                }
            }
            if (isDirectory)
                folders.push_back(join(folder, name));
        }
        ::closedir(dir);
        if (found || exhausted_)
            return found;
    }
    return std::nullopt;
}

}  // namespace sylvora
