#pragma once

// Looks for one object by its identity on one mounted file system, for an alias whose object has
// moved: first under the deepest folder of its last known path that still exists, then under each
// folder above it in turn, up to the root of the mount, never entering another file system. Each
// folder is searched breadth first, so that places near the old one are looked at before deep ones.
//
// A search is bounded: it gives up after MAX_ENTRIES directory entries or MAX_TIME, whichever comes
// first, so that an alias to something deleted costs at most that once.

#include <QByteArray>
#include <chrono>
#include <cstddef>
#include <optional>

#include "core/files/fileidentity.h"
#include "core/files/mounttable.h"

namespace sylvora {

class IdentitySearch {
  public:
    static constexpr std::size_t MAX_ENTRIES = 100000;
    static constexpr std::chrono::milliseconds MAX_TIME{200};

    IdentitySearch(const MountEntry& mount, quint64 inode, std::optional<BirthTime> birthTime);

    // The current path of the object last seen at `lastSeenPath` (a path through the mount), or none.
    std::optional<QByteArray> find(const QByteArray& lastSeenPath);

    std::size_t entriesVisited() const { return visited_; }

  private:
    std::optional<QByteArray> searchBelow(const QByteArray& folder, const QByteArray& skipName);
    bool outOfBudget();

    const MountEntry& mount_;
    quint64 inode_;
    std::optional<BirthTime> birthTime_;
    quint64 device_ = 0;
    bool direntInodesAreReal_ = false;
    std::size_t visited_ = 0;
    bool exhausted_ = false;
    std::chrono::steady_clock::time_point deadline_;
};

}  // namespace sylvora
