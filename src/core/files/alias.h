#pragma once

// Aliases: persistent references to a file or directory that can be copied, stored as bytes,
// resolved back to a file reference and compared by the identity of what they resolve to.
//
// An alias records the absolute path and the device and inode numbers of its target. Resolving
// tries the path first; when the path is gone it looks in the same folder for an entry with the
// recorded device and inode, so a rename inside a folder still resolves. A move to another folder
// is not tracked: the alias then no longer resolves.

#include <QByteArray>
#include <QString>
#include <memory>

#include "core/files/fsref.h"

namespace sylvora {

class Alias {
public:
    Alias(QString path, quint64 device, quint64 inode);

    // HandToHand: an independent copy.
    std::unique_ptr<Alias> copy() const;

    // The serialized form carries a magic value, a format version and its own length;
    // fromBytes returns null for bytes that do not match (the alias record's size check).
    QByteArray toBytes() const;
    static std::unique_ptr<Alias> fromBytes(const QByteArray& bytes);

    const QString& recordedPath() const { return path_; }
    quint64 device() const { return device_; }
    quint64 inode() const { return inode_; }

private:
    QString path_;
    quint64 device_;
    quint64 inode_;
};

// An owned alias or none, as the model stores them.
using AliasHandle = std::unique_ptr<Alias>;

OSStatus FSNewAlias(const FSRef& target, AliasHandle& out);
OSStatus FSResolveAlias(const Alias& alias, FSRef& out);

}  // namespace sylvora
