#include "core/files/mounttable.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <QList>
#include <array>
#include <cerrno>
#include <map>
#include <mutex>

#include "core/files/uniquefd.h"

namespace sylvora {

namespace {

QByteArray readProcFile(const char* path) {
    UniqueFd fd(::open(path, O_RDONLY | O_CLOEXEC));
    if (!fd.valid())
        return {};
    QByteArray text;
    std::array<char, 16384> buffer{};
    for (;;) {
        const ssize_t count = ::read(fd.get(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        text.append(buffer.data(), count);
    }
    return text;
}

// poll() reports POLLPRI once for each change of the mount namespace since the last poll.
bool mountsChanged(int watchFd) {
    pollfd request{watchFd, POLLPRI, 0};
    int ready = 0;
    do
        ready = ::poll(&request, 1, 0);
    while (ready < 0 && errno == EINTR);
    return ready < 0 || (request.revents & (POLLPRI | POLLERR | POLLNVAL)) != 0;
}

// mountinfo writes space, tab, newline and backslash in paths as three octal digits after a backslash.
QByteArray unescape(const QByteArray& field) {
    QByteArray out;
    out.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            const QByteArray digits = field.mid(i + 1, 3);
            bool ok = false;
            const int value = digits.toInt(&ok, 8);
            if (ok && digits.size() == 3) {
                out.append(static_cast<char>(value));
                i += 3;
                continue;
            }
        }
        out.append(field[i]);
    }
    return out;
}

// Block devices by the UUID udev links them under, read once per table.
std::map<dev_t, QByteArray> blockDeviceUuids() {
    std::map<dev_t, QByteArray> uuids;
    DIR* dir = ::opendir("/dev/disk/by-uuid");
    if (!dir)
        return uuids;
    while (const dirent* entry = ::readdir(dir)) {
        if (entry->d_name[0] == '.')
            continue;
        struct stat info {};
        if (::fstatat(::dirfd(dir), entry->d_name, &info, 0) == 0 && S_ISBLK(info.st_mode))
            uuids.emplace(info.st_rdev, QByteArray(entry->d_name));
    }
    ::closedir(dir);
    return uuids;
}

QByteArray volumeIdOf(const MountEntry& mount, std::optional<std::map<dev_t, QByteArray>>& uuids) {
    if (mount.source.startsWith('/')) {
        struct stat info {};
        if (::stat(mount.source.constData(), &info) == 0 && S_ISBLK(info.st_mode)) {
            if (!uuids)
                uuids = blockDeviceUuids();
            if (const auto found = uuids->find(info.st_rdev); found != uuids->end())
                return "uuid:" + found->second;
            return "dev:" + mount.source;
        }
    }
    // A server and its export ("host:/music", "//host/share") name a network file system wherever
    // it is mounted; a source like "tmpfs" or "overlay" names nothing, so the mount point does.
    if (mount.source.contains(':') || mount.source.startsWith("//"))
        return mount.fsType + ':' + mount.source;
    return mount.fsType + ':' + mount.source + '@' + mount.mountPoint;
}

std::optional<MountEntry> parseLine(const QByteArray& line) {
    const QList<QByteArray> fields = line.split(' ');
    const qsizetype separator = fields.indexOf(QByteArray("-"));
    if (fields.size() < 10 || separator < 6 || separator + 2 >= fields.size())
        return std::nullopt;
    MountEntry mount;
    bool ok = false;
    mount.id = fields[0].toULongLong(&ok);
    const QList<QByteArray> numbers = fields[2].split(':');
    if (!ok || numbers.size() != 2)
        return std::nullopt;
    mount.device = makedev(numbers[0].toUInt(), numbers[1].toUInt());
    mount.root = unescape(fields[3]);
    mount.mountPoint = unescape(fields[4]);
    mount.fsType = unescape(fields[separator + 1]);
    mount.source = unescape(fields[separator + 2]);
    return mount;
}

bool isPathPrefix(const QByteArray& prefix, const QByteArray& path) {
    if (prefix == "/")
        return path.startsWith('/');
    return path == prefix || (path.startsWith(prefix) && path[prefix.size()] == '/');
}

}  // namespace

std::optional<QByteArray> MountEntry::pathOnVolume(const QByteArray& canonicalPath) const {
    if (!isPathPrefix(mountPoint, canonicalPath))
        return std::nullopt;
    const QByteArray tail =
        mountPoint == "/" ? canonicalPath.mid(1) : canonicalPath.mid(mountPoint.size() + 1);
    if (tail.isEmpty())
        return root;
    return root == "/" ? '/' + tail : root + '/' + tail;
}

std::optional<QByteArray> MountEntry::pathThroughMount(const QByteArray& onVolume) const {
    if (!isPathPrefix(root, onVolume))
        return std::nullopt;
    const QByteArray tail = root == "/" ? onVolume.mid(1) : onVolume.mid(root.size() + 1);
    if (tail.isEmpty())
        return mountPoint;
    return mountPoint == "/" ? '/' + tail : mountPoint + '/' + tail;
}

bool MountEntry::direntInodesAreReal() const {
    // Overlay and FUSE file systems may report other numbers in directory entries than stat does.
    static constexpr std::array<const char*, 11> kLocal = {
        "ext2", "ext3", "ext4", "xfs", "btrfs", "tmpfs", "f2fs", "jfs", "reiserfs", "zfs", "bcachefs"};
    for (const char* type : kLocal)
        if (fsType == type)
            return true;
    return false;
}

std::shared_ptr<const MountTable> MountTable::fromMountInfo(const QByteArray& text) {
    auto table = std::make_shared<MountTable>();
    std::optional<std::map<dev_t, QByteArray>> uuids;
    for (const QByteArray& line : text.split('\n')) {
        if (std::optional<MountEntry> mount = parseLine(line)) {
            mount->volumeId = volumeIdOf(*mount, uuids);
            table->entries_.push_back(std::move(*mount));
        }
    }
    return table;
}

std::shared_ptr<const MountTable> MountTable::current() {
    // Every alias made or resolved asks for the table, a world's load once per sound; the kernel
    // flags an open mountinfo file when the mounts change, so the text is read again only then.
    static std::mutex mutex;
    static UniqueFd watch(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC));
    static std::shared_ptr<const MountTable> cached;
    const std::lock_guard lock(mutex);
    if (cached && watch.valid() && !mountsChanged(watch.get()))
        return cached;
    auto table = std::const_pointer_cast<MountTable>(fromMountInfo(readProcFile("/proc/self/mountinfo")));
    table->addRootWhenHidden();
    cached = std::move(table);
    return cached;
}

void MountTable::addRootWhenHidden() {
    // Inside a chroot the kernel leaves out every mount whose mount point lies outside the new
    // root, the one that holds "/" included; that file system is then the root of this view.
    for (const MountEntry& mount : entries_)
        if (mount.mountPoint == "/")
            return;
    struct stat info {};
    if (::stat("/", &info) != 0)
        return;
    MountEntry root;
    root.device = info.st_dev;
    root.root = "/";
    root.mountPoint = "/";
    root.fsType = "root";
    root.volumeId = "root:" + QByteArray::number(static_cast<quint64>(info.st_dev));
    entries_.push_back(std::move(root));
}

const MountEntry* MountTable::mountOf(const QByteArray& canonicalPath, const FileIdentity& identity) const {
    if (identity.mountId != 0) {
        for (const MountEntry& mount : entries_)
            if (mount.id == identity.mountId)
                return &mount;
    }
    // Without the mount's number: the deepest mount of that device whose mount point holds the path.
    const MountEntry* best = nullptr;
    for (const MountEntry& mount : entries_) {
        if (mount.device == identity.device && isPathPrefix(mount.mountPoint, canonicalPath) &&
            (!best || mount.mountPoint.size() > best->mountPoint.size()))
            best = &mount;
    }
    return best;
}

std::vector<const MountEntry*> MountTable::mountsOfVolume(const QByteArray& volumeId) const {
    std::vector<const MountEntry*> found;
    for (const MountEntry& mount : entries_)
        if (mount.volumeId == volumeId)
            found.push_back(&mount);
    return found;
}

std::vector<const MountEntry*> MountTable::mountsOfDevice(quint64 device) const {
    std::vector<const MountEntry*> found;
    for (const MountEntry& mount : entries_)
        if (mount.device == device)
            found.push_back(&mount);
    return found;
}

}  // namespace sylvora
