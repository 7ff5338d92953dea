#pragma once

// Aliases: persistent references to a file or directory that survive moves and renames. They can be
// copied, stored as bytes, resolved back to a file reference and compared by what they resolve to.
//
// An alias records where its object was last found (the absolute path), what makes the object itself
// (device, inode and, where the file system keeps one, birth time; see fileidentity.h), and the file
// system it lives on: an identity of that file system, its mount point and the object's path inside
// it. Resolving tries, in order:
//   1. the recorded path, when it holds the recorded object;
//   2. the object an alias follows (follow()), wherever it has been renamed or moved since;
//   3. the same path inside the file system wherever that is mounted now (a drive mounted elsewhere);
//   4. a bounded search for the object on that file system, starting from the deepest folder of the
//      old path that still exists (identitysearch.h);
//   5. the recorded path even though it holds another object: a file an editor saved by writing a
//      new copy and renaming it over the old one is still the file the user means.
// A file system that is not mounted at all gives nsvErr, so that callers can tell an unplugged drive
// from a deleted file. Where an alias finds its object somewhere else, or settles for the object now
// at its path, it remembers that, so the next resolution is as quick as the first one was not.
//
// Lifecycle: made by FSNewAlias from an existing object or by fromBytes from stored bytes; resolved on
// the main thread any number of times; follow() is for the aliases of the world that is open.

#include <QByteArray>
#include <QString>
#include <chrono>
#include <memory>
#include <optional>

#include "core/files/fileidentity.h"
#include "core/files/fsref.h"
#include "core/files/uniquefd.h"

namespace sylvora {

// Which file system an object lives on and where on it, as an alias records it.
struct VolumeRecord {
    QByteArray volumeId;      // see mounttable.h
    QByteArray mountPoint;    // where it was mounted when the object was last found
    QByteArray pathOnVolume;  // the object's path inside the file system
    friend bool operator==(const VolumeRecord&, const VolumeRecord&) = default;
};

class Alias {
  public:
    // No birth time: the file system did not report one, and device plus inode are all there is.
    // No volume: an alias from before volumes were recorded, found again by its device number.
    Alias(QString path, quint64 device, quint64 inode, std::optional<BirthTime> birthTime = std::nullopt,
          std::optional<VolumeRecord> volume = std::nullopt);
    Alias(const Alias&) = delete;
    Alias& operator=(const Alias&) = delete;

    // HandToHand: an independent copy of what the alias knows now. It does not follow the object.
    std::unique_ptr<Alias> copy() const;

    // The serialized form carries a magic value, a format version and its own length; fromBytes
    // returns null for bytes that do not match (the alias record's size check). Bytes of the previous
    // version, without a volume, are still read.
    QByteArray toBytes() const;
    static std::unique_ptr<Alias> fromBytes(const QByteArray& bytes);

    const QString& recordedPath() const { return path_; }
    quint64 device() const { return device_; }
    quint64 inode() const { return inode_; }
    const std::optional<BirthTime>& birthTime() const { return birthTime_; }
    const std::optional<VolumeRecord>& volume() const { return volume_; }

    // [main] Keeps hold of the object the alias resolves to now (an O_PATH descriptor, whose link in
    // /proc/self/fd names the object's current path), so that renames and moves made while the alias
    // lives are followed at once. Holding it keeps the file system busy, so only the aliases of the
    // world that is open do. Does nothing when the alias does not resolve or already follows.
    void follow();
    bool isFollowing() const { return followed_.valid(); }

  private:
    friend OSStatus FSResolveAlias(const Alias& alias, FSRef& out);
// Resolution that never walks the disk: steps 1 to 3 of the order above, then whatever stands at
// the recorded path, without the alias settling for it. A few stats at most, so a list of aliases
// can be resolved while a person waits; fnfErr here only means "not where it was", and a full
// resolution (with its search) may still find the object.
OSStatus FSResolveAliasWithoutSearch(const Alias& alias, FSRef& out);
    friend class AliasResolver;

    // Resolution remembers where the object was found; the alias still means the same object.
    void relocate(const QString& path, const FileIdentity& identity) const;
    void refreshFromFollowed() const;

    mutable QString path_;
    mutable quint64 device_;
    mutable quint64 inode_;
    mutable std::optional<BirthTime> birthTime_;
    mutable std::optional<VolumeRecord> volume_;
    UniqueFd followed_;
    // A search that found nothing is not repeated for a while: the pool may ask again on a playback
    // tick, which must not wait for a search each time.
    mutable std::chrono::steady_clock::time_point fruitlessSearchAt_{};
};

// An owned alias or none, as the model stores them.
using AliasHandle = std::unique_ptr<Alias>;

OSStatus FSNewAlias(const FSRef& target, AliasHandle& out);
OSStatus FSResolveAlias(const Alias& alias, FSRef& out);
// Resolution that never walks the disk: steps 1 to 3 of the order above, then whatever stands at
// the recorded path, without the alias settling for it. A few stats at most, so a list of aliases
// can be resolved while a person waits; fnfErr here only means "not where it was", and a full
// resolution (with its search) may still find the object.
OSStatus FSResolveAliasWithoutSearch(const Alias& alias, FSRef& out);

}  // namespace sylvora
