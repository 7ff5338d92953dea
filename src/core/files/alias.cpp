#include "core/files/alias.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <QStringDecoder>
#include <QtEndian>
#include <cerrno>
#include <cstring>

#include "core/files/nativepath.h"
#include "core/files/uniquefd.h"

namespace sylvora {

namespace {

// Serialized layout, all numbers big-endian:
//   magic "SYLA" (4) | version (2) | reserved, 0 (2) | total length (4) |
//   device (8) | inode (8) | path length (4) | path as UTF-8
constexpr quint32 kMagic = 0x53594C41;  // "SYLA"
constexpr quint16 kFormatVersion = 1;
constexpr qsizetype kHeaderSize = 4 + 2 + 2 + 4 + 8 + 8 + 4;
// Far above any real path; keeps a corrupt length from asking for gigabytes.
constexpr qsizetype kMaxPathBytes = 64 * 1024;

template <typename T>
void append(QByteArray& bytes, T value) {
    const T bigEndian = qToBigEndian(value);
    bytes.append(reinterpret_cast<const char*>(&bigEndian), sizeof bigEndian);
}

template <typename T>
T readAt(const QByteArray& bytes, qsizetype offset) {
    return qFromBigEndian<T>(bytes.constData() + offset);
}

// The entry of `directory` that is the object with the recorded identity, if any. Only one folder is
// searched: a rename inside the folder is followed, a move elsewhere is not (that would mean walking
// the whole volume, and an alias that silently jumps across the disk is worse than one that fails).
bool findByIdentity(const QString& directory, quint64 device, quint64 inode, QString& found) {
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
        struct stat info {};
        if (::fstatat(::dirfd(dir), entry->d_name, &info, 0) != 0)
            continue;
        if (info.st_dev == device && info.st_ino == inode) {
            found = nativepath::join(directory, nativepath::decode(entry->d_name));
            matched = true;
            break;
        }
    }
    ::closedir(dir);
    return matched;
}

}  // namespace

Alias::Alias(QString path, quint64 device, quint64 inode)
    : path_(std::move(path)), device_(device), inode_(inode) {}

std::unique_ptr<Alias> Alias::copy() const {
    return std::make_unique<Alias>(path_, device_, inode_);
}

QByteArray Alias::toBytes() const {
    const QByteArray path = path_.toUtf8();
    QByteArray bytes;
    bytes.reserve(kHeaderSize + path.size());
    append<quint32>(bytes, kMagic);
    append<quint16>(bytes, kFormatVersion);
    append<quint16>(bytes, 0);
    append<quint32>(bytes, static_cast<quint32>(kHeaderSize + path.size()));
    append<quint64>(bytes, device_);
    append<quint64>(bytes, inode_);
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
    if (readAt<quint16>(bytes, 6) != 0)
        return nullptr;
    if (readAt<quint32>(bytes, 8) != static_cast<quint64>(bytes.size()))
        return nullptr;
    const quint64 device = readAt<quint64>(bytes, 12);
    const quint64 inode = readAt<quint64>(bytes, 20);
    const quint32 pathLength = readAt<quint32>(bytes, 28);
    if (pathLength == 0 || pathLength > kMaxPathBytes || kHeaderSize + pathLength != bytes.size())
        return nullptr;

    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString path = decoder(QByteArrayView(bytes).sliced(kHeaderSize));
    if (decoder.hasError() || !path.startsWith(QLatin1Char('/')) || path.contains(QChar(0)))
        return nullptr;
    return std::make_unique<Alias>(path, device, inode);
}

OSStatus FSNewAlias(const FSRef& target, AliasHandle& out) {
    if (target.path.isEmpty() || !target.path.startsWith(QLatin1Char('/')))
        return paramErr;
    struct stat info {};
    if (::stat(nativepath::encode(target.path).constData(), &info) != 0)
        return statusFromErrno(errno);
    out = std::make_unique<Alias>(target.path, info.st_dev, info.st_ino);
    return noErr;
}

// The recorded path wins when it still holds the recorded object. When something else now stands at
// that path, the recorded object is looked for in the same folder first (it was renamed and another
// file took its name); failing that, the object at the path is accepted, because a file or package
// replaced in place (saved through a temporary copy and swapped in) is what the user still means.
// Inode numbers can be reused once a file is deleted, so an alias to a deleted file may find a newer
// file of the same folder that got its number: the same trade-off every inode-keyed reference makes.
OSStatus FSResolveAlias(const Alias& alias, FSRef& out) {
    const QString& path = alias.recordedPath();
    if (path.isEmpty() || !path.startsWith(QLatin1Char('/')))
        return paramErr;
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    const QString directory = slash == 0 ? QStringLiteral("/") : path.left(slash);

    struct stat info {};
    if (::stat(nativepath::encode(path).constData(), &info) == 0) {
        if (info.st_dev == alias.device() && info.st_ino == alias.inode()) {
            out.path = path;
            return noErr;
        }
        QString renamed;
        out.path = findByIdentity(directory, alias.device(), alias.inode(), renamed) ? renamed : path;
        return noErr;
    }
    const int error = errno;
    QString renamed;
    if (findByIdentity(directory, alias.device(), alias.inode(), renamed)) {
        out.path = renamed;
        return noErr;
    }
    return statusFromErrno(error);
}

}  // namespace sylvora
