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
    // A resolver without the search (step 4 of alias.h) only looks where the object was: see
    // FSResolveAliasWithoutSearch.
    enum class Search { allowed, skipped };
    explicit AliasResolver(const Alias& alias, Search search = Search::allowed) : alias_(alias), search_(search) {}

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
    const Search search_;
    std::shared_ptr<const MountTable> mounts_;
};

}  // namespace sylvora
