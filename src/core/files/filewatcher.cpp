#include "core/files/filewatcher.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <QFileInfo>
#include <algorithm>
#include <set>

#include "core/files/nativepath.h"

namespace sylvora {

namespace {

// What makes a file new to its reader. Opens and reads are left out: the reader's own attempts
// must not count as changes.
constexpr std::uint32_t FILE_EVENTS = IN_MODIFY | IN_ATTRIB | IN_CLOSE_WRITE | IN_MOVE_SELF | IN_DELETE_SELF;
constexpr std::uint32_t FOLDER_EVENTS =
    IN_MODIFY | IN_ATTRIB | IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ONLYDIR;

}  // namespace

FileWatcher::FileWatcher() : fd_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

// [main] The new watches are added before the old ones go: the kernel hands back the same watch
// for an object already watched, so a file in both sets is never unwatched for a moment.
void FileWatcher::watch(const std::vector<QString>& files) {
    std::map<int, std::vector<std::size_t>> own;
    std::map<int, std::vector<std::size_t>> folders;
    std::vector<Target> targets;
    for (const QString& file : files) {
        const QFileInfo info(file);
        const std::size_t index = targets.size();
        targets.push_back({file, nativepath::encode(info.fileName())});
        if (!fd_.valid()) {
            continue;
        }
        if (const int wd = inotify_add_watch(fd_.get(), nativepath::encode(file).constData(), FILE_EVENTS); wd >= 0) {
            own[wd].push_back(index);
        }
        const QByteArray folder = nativepath::encode(info.absolutePath());
        if (const int wd = inotify_add_watch(fd_.get(), folder.constData(), FOLDER_EVENTS); wd >= 0) {
            folders[wd].push_back(index);
        }
    }
    for (const auto* old : {&ownWatches_, &folderWatches_}) {
        for (const auto& [wd, unused] : *old) {
            if (!own.contains(wd) && !folders.contains(wd)) {
                inotify_rm_watch(fd_.get(), wd);
            }
        }
    }
    targets_ = std::move(targets);
    ownWatches_ = std::move(own);
    folderWatches_ = std::move(folders);
}

// [main] A watch the kernel dropped (its file deleted, its file system unmounted) or a queue that
// overflowed has lost what would have come next: the files it stood for count as changed.
std::vector<QString> FileWatcher::takeChanged() {
    std::set<std::size_t> changed;
    const auto note = [&changed](const std::map<int, std::vector<std::size_t>>& watches, int wd) {
        if (const auto it = watches.find(wd); it != watches.end()) {
            changed.insert(it->second.begin(), it->second.end());
        }
    };
    alignas(inotify_event) char buffer[4096];
    for (ssize_t got; fd_.valid() && (got = read(fd_.get(), buffer, sizeof buffer)) > 0;) {
        for (const char* at = buffer; at < buffer + got;) {
            const auto* event = reinterpret_cast<const inotify_event*>(at);
            at += sizeof(inotify_event) + event->len;
            if ((event->mask & IN_Q_OVERFLOW) != 0) {
                for (std::size_t i = 0; i < targets_.size(); ++i) changed.insert(i);
                continue;
            }
            note(ownWatches_, event->wd);
            const auto folder = folderWatches_.find(event->wd);
            if (folder == folderWatches_.end()) {
                continue;
            }
            for (const std::size_t index : folder->second) {
                // The folder's own events (no name) matter only when its watch is gone.
                if (event->len == 0 ? (event->mask & IN_IGNORED) != 0 : targets_[index].name == event->name) {
                    changed.insert(index);
                }
            }
        }
    }
    std::vector<QString> files;
    for (const std::size_t index : changed) files.push_back(targets_[index].file);
    return files;
}

}  // namespace sylvora
