#pragma once

// Tells which of a few files changed: written, cut short, its permissions or times set, deleted,
// or another file renamed, moved or created in its place. Each file is watched through itself and
// through its folder, so a file that is gone, or that a save replaced with a new one, is still
// seen when something appears under its name. Built on inotify: nothing is read from the disk
// until the kernel says something changed.
//
// Lifecycle: construct -> watch() the set of files, again whenever the set changes -> hand
// descriptor() to an event loop, and call takeChanged() when it is readable -> destroy. All on the
// main thread.

#include <QByteArray>
#include <QString>
#include <map>
#include <vector>

#include "core/files/uniquefd.h"

namespace sylvora {

class FileWatcher {
public:
    FileWatcher();

    // Readable while changes wait to be taken; -1 when the kernel gave no watcher (too many open).
    int descriptor() const { return fd_.get(); }

    // [main] These files from now on, in place of the previous set. A file or folder that cannot be
    // watched (its folder is gone too) is left out: the set is watched as far as it can be.
    void watch(const std::vector<QString>& files);

    // [main] The watched files that changed since the last call, each once. Never waits.
    std::vector<QString> takeChanged();

private:
    struct Target {
        QString file;     // the watched file
        QByteArray name;  // its name inside the folder
    };
    UniqueFd fd_;
    std::vector<Target> targets_;
    std::map<int, std::vector<std::size_t>> ownWatches_;     // a file's own watch -> targets
    std::map<int, std::vector<std::size_t>> folderWatches_;  // a folder's watch -> targets in it
};

}  // namespace sylvora
