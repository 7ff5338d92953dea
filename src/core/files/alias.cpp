#include "core/files/alias.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <QStringDecoder>
#include <QtEndian>
#include <cerrno>
#include <cstring>

#include "core/files/nativepath.h"
#include "core/files/uniquefd.h"

namespace sylvora {

namespace {

// Serialized layout, all numbers big-endian:
//   magic "SYLA" (4) | version (2) | flags (2) | total length (4) | device (8) | inode (8) |
//   birth seconds (8, signed) | birth nanoseconds (4) | path length (4) | path as UTF-8
// Flag bit 0 says a birth time was recorded; without it both birth fields are zero, so every alias has
// exactly one byte form. Version 1 had no birth time; its bytes are refused rather than read as
// device-and-inode-only aliases, which costs at most a known-worlds entry or the last played world
// (the user opens the package again) and never lets an old record land on a recycled inode.
constexpr quint32 kMagic = 0x53594C41;  // "SYLA"
constexpr quint16 kFormatVersion = 2;
constexpr quint16 kFlagBirthTime = 0x0001;
constexpr qsizetype kHeaderSize = 4 + 2 + 2 + 4 + 8 + 8 + 8 + 4 + 4;
// Far above any real path; keeps a corrupt length from asking for gigabytes.
constexpr qsizetype kMaxPathBytes = 64 * 1024;
constexpr quint32 kNanosecondsPerSecond = 1000000000;

template <typename T>
void append(QByteArray& bytes, T value) {
    const T bigEndian = qToBigEndian(value);
    bytes.append(reinterpret_cast<const char*>(&bigEndian), sizeof bigEndian);
}

template <typename T>
T readAt(const QByteArray& bytes, qsizetype offset) {
    return qFromBigEndian<T>(bytes.constData() + offset);
}

struct Identity {
    quint64 device = 0;
    quint64 inode = 0;
    std::optional<BirthTime> birthTime;
};

// The identity of `name` relative to `dirFd`, following symbolic links as stat does. False with errno
// set when it cannot be read. Where the kernel has no statx (or a sandbox filters it) the identity
// comes from stat and carries no birth time.
bool identityOf(int dirFd, const char* name, Identity& out) {
    struct statx info {};
    if (::statx(dirFd, name, AT_STATX_SYNC_AS_STAT, STATX_INO | STATX_BTIME, &info) != 0) {
        if (errno != ENOSYS)
            return false;
        struct stat plain {};
        if (::fstatat(dirFd, name, &plain, 0) != 0)
            return false;
        out = Identity{plain.st_dev, plain.st_ino, std::nullopt};
        return true;
    }
    // Composed the way stat composes st_dev, so an identity never depends on which call read it.
    out.device = makedev(info.stx_dev_major, info.stx_dev_minor);
    out.inode = info.stx_ino;
    out.birthTime.reset();
    if (info.stx_mask & STATX_BTIME)
        out.birthTime = BirthTime{info.stx_btime.tv_sec, info.stx_btime.tv_nsec};
    return true;
}

// Device and inode name a live object; the birth time tells it apart from a later object that was
// given the same inode number after the recorded one was deleted. An alias made where the file system
// reports no birth time has only device and inode to go on, and so can still be taken in by a recycled
// number there. A recorded birth time with none reported now is not a match: the same device and inode
// on a file system that keeps no birth times is not where the alias was made.
bool isRecordedObject(const Alias& alias, const Identity& found) {
    if (found.device != alias.device() || found.inode != alias.inode())
        return false;
    return !alias.birthTime() || found.birthTime == alias.birthTime();
}

// The entry of `directory` that is the recorded object, if any. Only one folder is searched: a rename
// inside the folder is followed, a move elsewhere is not (that would mean walking the whole volume, and
// an alias that silently jumps across the disk is worse than one that fails).
bool findByIdentity(const QString& directory, const Alias& alias, QString& found) {
    UniqueFd dirFd(::open(nativepath::encode(directory).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!dirFd.valid())
        return false;
    DIR* dir = ::fdopendir(dirFd.get());
    if (!dir)
        return false;
    dirFd.release();  // now owned by `dir`
    bool matched = false;
    while (const dirent* entry = ::readdir(dir)) {
        // d_ino is not trusted as a shortcut: overlay file systems report other numbers there than stat.
        const char* name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        Identity identity;
        if (!identityOf(::dirfd(dir), name, identity))
            continue;
        if (isRecordedObject(alias, identity)) {
            found = nativepath::join(directory, nativepath::decode(name));
            matched = true;
            break;
        }
    }
    ::closedir(dir);
    return matched;
}

}  // namespace

Alias::Alias(QString path, quint64 device, quint64 inode, std::optional<BirthTime> birthTime)
    : path_(std::move(path)), device_(device), inode_(inode), birthTime_(birthTime) {}

std::unique_ptr<Alias> Alias::copy() const {
    return std::make_unique<Alias>(path_, device_, inode_, birthTime_);
}

QByteArray Alias::toBytes() const {
    const QByteArray path = path_.toUtf8();
    const BirthTime birth = birthTime_.value_or(BirthTime{});
    QByteArray bytes;
    bytes.reserve(kHeaderSize + path.size());
    append<quint32>(bytes, kMagic);
    append<quint16>(bytes, kFormatVersion);
    append<quint16>(bytes, birthTime_ ? kFlagBirthTime : 0);
    append<quint32>(bytes, static_cast<quint32>(kHeaderSize + path.size()));
    append<quint64>(bytes, device_);
    append<quint64>(bytes, inode_);
    append<qint64>(bytes, birth.seconds);
    append<quint32>(bytes, birth.nanoseconds);
    append<quint32>(bytes, static_cast<quint32>(path.size()));
    bytes.append(path);
    return bytes;
}

std::unique_ptr<Alias> Alias::fromBytes(const QByteArray& bytes) {
    if (bytes.size() < kHeaderSize)
        return nullptr;
    if (readAt<quint32>(bytes, 0) != kMagic)
        return nullptr;
    if (readAt<quint16>(bytes, 4) != kFormatVersion)
        return nullptr;
    const quint16 flags = readAt<quint16>(bytes, 6);
    if ((flags & ~kFlagBirthTime) != 0)
        return nullptr;
    if (readAt<quint32>(bytes, 8) != static_cast<quint64>(bytes.size()))
        return nullptr;
    const quint64 device = readAt<quint64>(bytes, 12);
    const quint64 inode = readAt<quint64>(bytes, 20);
    const BirthTime birth{readAt<qint64>(bytes, 28), readAt<quint32>(bytes, 36)};
    if (birth.nanoseconds >= kNanosecondsPerSecond)
        return nullptr;
    if (!(flags & kFlagBirthTime) && birth != BirthTime{})
        return nullptr;
    const quint32 pathLength = readAt<quint32>(bytes, 40);
    if (pathLength == 0 || pathLength > kMaxPathBytes || kHeaderSize + pathLength != bytes.size())
        return nullptr;

    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString path = decoder(QByteArrayView(bytes).sliced(kHeaderSize));
    if (decoder.hasError() || !path.startsWith(QLatin1Char('/')) || path.contains(QChar(0)))
        return nullptr;
    return std::make_unique<Alias>(path, device, inode,
                                   (flags & kFlagBirthTime) ? std::optional<BirthTime>(birth) : std::nullopt);
}

OSStatus FSNewAlias(const FSRef& target, AliasHandle& out) {
    if (target.path.isEmpty() || !target.path.startsWith(QLatin1Char('/')))
        return paramErr;
    Identity identity;
    if (!identityOf(AT_FDCWD, nativepath::encode(target.path).constData(), identity))
        return statusFromErrno(errno);
    out = std::make_unique<Alias>(target.path, identity.device, identity.inode, identity.birthTime);
    return noErr;
}

// The recorded path wins when it still holds the recorded object. When something else now stands at
// that path, the recorded object is looked for in the same folder first (it was renamed and another
// file took its name); failing that, the object at the path is accepted, because a file or package
// replaced in place (saved through a temporary copy and swapped in) is what the user still means.
// "The recorded object" always includes its birth time when one was recorded, so a newer object that
// was given a deleted object's inode number is never taken for it, at the path or in the folder.
OSStatus FSResolveAlias(const Alias& alias, FSRef& out) {
    const QString& path = alias.recordedPath();
    if (path.isEmpty() || !path.startsWith(QLatin1Char('/')))
        return paramErr;
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    const QString directory = slash == 0 ? QStringLiteral("/") : path.left(slash);

    Identity atPath;
    if (identityOf(AT_FDCWD, nativepath::encode(path).constData(), atPath)) {
        if (isRecordedObject(alias, atPath)) {
            out.path = path;
            return noErr;
        }
        QString renamed;
        out.path = findByIdentity(directory, alias, renamed) ? renamed : path;
        return noErr;
    }
    const int error = errno;
    QString renamed;
    if (findByIdentity(directory, alias, renamed)) {
        out.path = renamed;
        return noErr;
    }
    return statusFromErrno(error);
}

}  // namespace sylvora
