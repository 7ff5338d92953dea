#pragma once

// The resolution of one alias, in the order alias.h gives. Made for one call and thrown away; it
// reads the mount table at most once, and only when the recorded path does not hold the object.

#include <QByteArray>
#include <memory>
#include <optional>

#include "core/files/alias.h"
#include "core/files/mounttable.h"

namespace sylvora {

class AliasResolver {
  public:
    explicit AliasResolver(const Alias& alias) : alias_(alias) {}

    OSStatus resolve(FSRef& out);
    // True when the alias follows its object and the object is still there; the alias then records
    // where it is now.
    bool resolveFollowed();

    // The file system `path` (whose object has `identity`) lives on, and where on it; none when the
    // mount table cannot be read.
    static std::optional<VolumeRecord> describeVolume(const QByteArray& path, const FileIdentity& identity);

  private:
    bool isRecordedObject(const QByteArray& path, const FileIdentity& found);
    bool acceptAt(const QByteArray& path);
    const MountTable& mounts();
    std::vector<const MountEntry*> mountsOfRecordedVolume();

    const Alias& alias_;
    std::shared_ptr<const MountTable> mounts_;
};

}  // namespace sylvora
