#pragma once

// Aliases: persistent references to a file or directory that can be copied, stored as bytes,
// resolved back to a file reference and compared by the identity of what they resolve to.
//
// An alias records the absolute path, the device and inode numbers and, where the file system keeps
// one, the birth time of its target. Resolving tries the path first; when the path is gone it looks
// in the same folder for an entry with the recorded identity, so a rename inside a folder still
// resolves. A move to another folder is not tracked: the alias then no longer resolves.
//
// The birth time is what keeps an alias from following a recycled inode number: ext4, for one, hands
// a deleted folder's inode to the next folder made in the same parent, and device plus inode alone
// would then name the newcomer.

#include <QByteArray>
#include <QString>
#include <memory>
#include <optional>

#include "core/files/fsref.h"

namespace sylvora {

// When a file system object was created, as statx reports it.
struct BirthTime {
    qint64 seconds = 0;
    quint32 nanoseconds = 0;
    friend bool operator==(const BirthTime&, const BirthTime&) = default;
};

class Alias {
public:
    // No birth time: the file system did not report one, and device plus inode are all there is.
    Alias(QString path, quint64 device, quint64 inode, std::optional<BirthTime> birthTime = std::nullopt);

    // HandToHand: an independent copy.
    std::unique_ptr<Alias> copy() const;

    // The serialized form carries a magic value, a format version and its own length;
    // fromBytes returns null for bytes that do not match (the alias record's size check).
    QByteArray toBytes() const;
    static std::unique_ptr<Alias> fromBytes(const QByteArray& bytes);

    const QString& recordedPath() const { return path_; }
    quint64 device() const { return device_; }
    quint64 inode() const { return inode_; }
    const std::optional<BirthTime>& birthTime() const { return birthTime_; }

private:
    QString path_;
    quint64 device_;
    quint64 inode_;
    std::optional<BirthTime> birthTime_;
};

// An owned alias or none, as the model stores them.
using AliasHandle = std::unique_ptr<Alias>;

OSStatus FSNewAlias(const FSRef& target, AliasHandle& out);
OSStatus FSResolveAlias(const Alias& alias, FSRef& out);

}  // namespace sylvora
