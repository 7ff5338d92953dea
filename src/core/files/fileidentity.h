#pragma once

// What makes a file system object the same object over time: the device and inode numbers it has
// while it exists, and, where the file system keeps one, the moment it was created. The birth time
// tells a deleted object apart from a newer one the file system gave the same inode number (ext4
// hands a deleted folder's inode to the next folder made beside it).

#include <QtGlobal>
#include <optional>

namespace sylvora {

struct BirthTime {
    qint64 seconds = 0;
    quint32 nanoseconds = 0;
    friend bool operator==(const BirthTime&, const BirthTime&) = default;
};

struct FileIdentity {
    quint64 device = 0;
    quint64 inode = 0;
    std::optional<BirthTime> birthTime;
    quint64 mountId = 0;  // the kernel's number for the mount the object was reached through; 0 unknown
    bool isDirectory = false;
};

// The identity of `name` relative to `dirFd` (AT_FDCWD for an absolute path; an empty name for the
// object `dirFd` itself). Follows symbolic links
// unless `followLinks` is false. False with errno set when the object cannot be read. Where the kernel
// has no statx (or a sandbox filters it) the identity comes from stat and carries no birth time.
bool readFileIdentity(int dirFd, const char* name, FileIdentity& out, bool followLinks = true);

}  // namespace sylvora
