#pragma once

// The file systems mounted in this process's view, read from /proc/self/mountinfo, each with an
// identity that outlives the mount: the UUID of its block device where udev names one, the device
// path otherwise, the server and export of a network file system, and for file systems that only
// live while mounted (tmpfs, overlay) their type, source and mount point. Aliases record the identity
// to find their file system again when it is mounted somewhere else, and to tell "this file system is
// not mounted" from "this file is gone".
//
// The parsed table is kept until the kernel reports a change of the mounts, so reading, parsing and
// the UUID lookups happen once per change of the mounts.

#include <QByteArray>
#include <memory>
#include <optional>
#include <vector>

#include "core/files/fileidentity.h"

namespace sylvora {

struct MountEntry {
    quint64 id = 0;
    quint64 device = 0;
    QByteArray root;        // the folder of the file system that the mount shows, "/" for all of it
    QByteArray mountPoint;  // where it shows
    QByteArray fsType;
    QByteArray source;
    QByteArray volumeId;

    // The path of `canonicalPath` inside the file system, when it lies under this mount.
    std::optional<QByteArray> pathOnVolume(const QByteArray& canonicalPath) const;
    // Where the file system's `pathOnVolume` shows through this mount, when this mount shows it.
    std::optional<QByteArray> pathThroughMount(const QByteArray& pathOnVolume) const;
    // Whether readdir's d_ino equals stat's st_ino here, so a search may skip stat for other entries.
    bool direntInodesAreReal() const;
};

class MountTable {
  public:
    // The current table; empty when /proc cannot be read.
    static std::shared_ptr<const MountTable> current();
    static std::shared_ptr<const MountTable> fromMountInfo(const QByteArray& text);

    bool isEmpty() const { return entries_.empty(); }
    // The mount `identity` (read at `canonicalPath`) was reached through.
    const MountEntry* mountOf(const QByteArray& canonicalPath, const FileIdentity& identity) const;
    std::vector<const MountEntry*> mountsOfVolume(const QByteArray& volumeId) const;
    std::vector<const MountEntry*> mountsOfDevice(quint64 device) const;

  private:
    void addRootWhenHidden();

    std::vector<MountEntry> entries_;
};

}  // namespace sylvora
