#include "core/files/alias.h"

#include <fcntl.h>
#include <QStringDecoder>
#include <QtEndian>
#include <cerrno>

#include "core/files/aliasresolver.h"
#include "core/files/nativepath.h"

namespace sylvora {

namespace {

// Serialized layout, all numbers big-endian:
//   magic "SYLA" (4) | version (2) | flags (2) | total length (4) | device (8) | inode (8) |
//   birth seconds (8, signed) | birth nanoseconds (4) | path length (4) | path as UTF-8 |
//   with the volume flag: three times a length (4) and its bytes: volume identity, mount point,
//   path on the volume.
// Flag bit 0 says a birth time was recorded; without it both birth fields are zero, so every alias has
// exactly one byte form. Version 2 had no volume and is still read; version 1 had no birth time and is
// refused rather than read as device-and-inode-only, which costs at most a known-worlds entry (the user
// opens the package again) and never lets an old record land on a recycled inode.
constexpr quint32 kMagic = 0x53594C41;  // "SYLA"
constexpr quint16 kFormatVersion = 3;
constexpr quint16 kVersionWithoutVolume = 2;
constexpr quint16 kFlagBirthTime = 0x0001;
constexpr quint16 kFlagVolume = 0x0002;
constexpr qsizetype kHeaderSize = 4 + 2 + 2 + 4 + 8 + 8 + 8 + 4 + 4;
// Far above any real path; keeps a corrupt length from asking for gigabytes.
constexpr quint32 kMaxPathBytes = 64 * 1024;
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

void appendField(QByteArray& bytes, const QByteArray& field) {
    append<quint32>(bytes, static_cast<quint32>(field.size()));
    bytes.append(field);
}

// Reads one length-prefixed field at `offset` and moves past it; false when it does not fit.
bool readField(const QByteArray& bytes, qsizetype& offset, QByteArray& field) {
    if (bytes.size() - offset < 4)
        return false;
    const quint32 length = readAt<quint32>(bytes, offset);
    if (length > kMaxPathBytes || bytes.size() - offset - 4 < static_cast<qsizetype>(length))
        return false;
    field = bytes.mid(offset + 4, length);
    offset += 4 + length;
    return true;
}

bool isAbsolutePath(const QByteArray& path) {
    return path.startsWith('/') && !path.contains('\0');
}

}  // namespace

Alias::Alias(QString path, quint64 device, quint64 inode, std::optional<BirthTime> birthTime,
             std::optional<VolumeRecord> volume)
    : path_(std::move(path)),
      device_(device),
      inode_(inode),
      birthTime_(birthTime),
      volume_(std::move(volume)) {}

std::unique_ptr<Alias> Alias::copy() const {
    refreshFromFollowed();
    return std::make_unique<Alias>(path_, device_, inode_, birthTime_, volume_);
}

void Alias::relocate(const QString& path, const FileIdentity& identity) const {
    path_ = path;
    device_ = identity.device;
    inode_ = identity.inode;
    birthTime_ = identity.birthTime;
    if (std::optional<VolumeRecord> volume =
            AliasResolver::describeVolume(nativepath::encode(path), identity))
        volume_ = std::move(volume);
}

void Alias::refreshFromFollowed() const {
    if (followed_.valid())
        AliasResolver(*this).resolveFollowed();
}

void Alias::follow() {
    if (followed_.valid())
        return;
    FSRef target;
    if (FSResolveAlias(*this, target) != noErr)
        return;
    UniqueFd fd(::open(nativepath::encode(target.path).constData(), O_PATH | O_CLOEXEC));
    FileIdentity identity;
    if (!fd.valid() || !readFileIdentity(fd.get(), "", identity) || identity.inode != inode_ ||
        identity.device != device_)
        return;  // replaced between the two calls: there is nothing certain to follow
    followed_ = std::move(fd);
}

QByteArray Alias::toBytes() const {
    refreshFromFollowed();
    const QByteArray path = path_.toUtf8();
    const BirthTime birth = birthTime_.value_or(BirthTime{});
    QByteArray bytes;
    bytes.reserve(kHeaderSize + path.size() + 256);
    append<quint32>(bytes, kMagic);
    append<quint16>(bytes, kFormatVersion);
    append<quint16>(bytes, (birthTime_ ? kFlagBirthTime : 0) | (volume_ ? kFlagVolume : 0));
    append<quint32>(bytes, 0);  // the total length, filled in below
    append<quint64>(bytes, device_);
    append<quint64>(bytes, inode_);
    append<qint64>(bytes, birth.seconds);
    append<quint32>(bytes, birth.nanoseconds);
    appendField(bytes, path);
    if (volume_) {
        appendField(bytes, volume_->volumeId);
        appendField(bytes, volume_->mountPoint);
        appendField(bytes, volume_->pathOnVolume);
    }
    qToBigEndian<quint32>(static_cast<quint32>(bytes.size()), bytes.data() + 8);
    return bytes;
}

std::unique_ptr<Alias> Alias::fromBytes(const QByteArray& bytes) {
    if (bytes.size() < kHeaderSize || readAt<quint32>(bytes, 0) != kMagic)
        return nullptr;
    const quint16 version = readAt<quint16>(bytes, 4);
    if (version != kFormatVersion && version != kVersionWithoutVolume)
        return nullptr;
    const quint16 flags = readAt<quint16>(bytes, 6);
    const quint16 knownFlags = version == kFormatVersion ? (kFlagBirthTime | kFlagVolume) : kFlagBirthTime;
    if ((flags & ~knownFlags) != 0)
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

    qsizetype offset = kHeaderSize - 4;
    QByteArray pathBytes;
    if (!readField(bytes, offset, pathBytes) || pathBytes.isEmpty())
        return nullptr;
    std::optional<VolumeRecord> volume;
    if (flags & kFlagVolume) {
        VolumeRecord record;
        if (!readField(bytes, offset, record.volumeId) || !readField(bytes, offset, record.mountPoint) ||
            !readField(bytes, offset, record.pathOnVolume))
            return nullptr;
        if (record.volumeId.isEmpty() || !isAbsolutePath(record.mountPoint) ||
            !isAbsolutePath(record.pathOnVolume))
            return nullptr;
        volume = std::move(record);
    }
    if (offset != bytes.size())
        return nullptr;

    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString path = decoder(pathBytes);
    if (decoder.hasError() || !path.startsWith(QLatin1Char('/')) || path.contains(QChar(0)))
        return nullptr;
    return std::make_unique<Alias>(path, device, inode,
                                   (flags & kFlagBirthTime) ? std::optional<BirthTime>(birth) : std::nullopt,
                                   std::move(volume));
}

OSStatus FSNewAlias(const FSRef& target, AliasHandle& out) {
    if (target.path.isEmpty() || !target.path.startsWith(QLatin1Char('/')))
        return paramErr;
    const QByteArray path = nativepath::encode(target.path);
    FileIdentity identity;
    if (!readFileIdentity(AT_FDCWD, path.constData(), identity))
        return statusFromErrno(errno);
    out = std::make_unique<Alias>(target.path, identity.device, identity.inode, identity.birthTime,
                                  AliasResolver::describeVolume(path, identity));
    return noErr;
}

OSStatus FSResolveAlias(const Alias& alias, FSRef& out) {
    return AliasResolver(alias).resolve(out);
}

OSStatus FSResolveAliasWithoutSearch(const Alias& alias, FSRef& out) {
    return AliasResolver(alias, AliasResolver::Search::skipped).resolve(out);
}

}  // namespace sylvora
