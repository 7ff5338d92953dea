// The watcher of broken sound files: every way a file can be mended or lost shows as a change of
// that file alone, once; reading it, and changing its neighbours, shows nothing.

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <cstdio>
#include <functional>

#include "core/files/filewatcher.h"
#include "support/tempdir.h"

namespace sylvora {
namespace {

bool renameFile(const QString& from, const QString& to) {
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

TEST(FileWatcher, ReportsEachWayAFileIsMendedOrLostAndNothingElse) {
    struct Case {
        const char* what;
        bool startsGone;
        std::function<bool(const QString& file, const test::TempDir& dir)> change;
    };
    using Dir = const test::TempDir&;
    const Case cases[] = {
        {"written", false, [](const QString& f, Dir) { QFile file(f); return file.open(QIODevice::Append) && file.write("x") == 1; }},
        {"cut short by path", false, [](const QString& f, Dir) { return truncate(QFile::encodeName(f).constData(), 1) == 0; }},
        {"permissions set", false, [](const QString& f, Dir) { return chmod(QFile::encodeName(f).constData(), 0600) == 0; }},
        {"deleted", false, [](const QString& f, Dir) { return QFile::remove(f); }},
        {"moved out", false, [](const QString& f, Dir d) { return renameFile(f, d.filePath(QStringLiteral("away"))); }},
        {"replaced by a rename", false,
         [](const QString& f, Dir d) { return renameFile(d.writeFile(QStringLiteral("sounds/new.tmp"), "new"), f); }},
        {"created where it was gone", true, [](const QString&, Dir d) { return !d.writeFile(QStringLiteral("sounds/broken.wav"), "new").isEmpty(); }},
        {"moved in from another folder", true,
         [](const QString& f, Dir d) { return renameFile(d.writeFile(QStringLiteral("elsewhere.wav"), "new"), f); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const test::TempDir dir;
        const QString watched = dir.writeFile(QStringLiteral("sounds/broken.wav"), "garbage");
        const QString sibling = dir.writeFile(QStringLiteral("sounds/other.wav"), "fine");
        ASSERT_TRUE(!c.startsGone || QFile::remove(watched));
        FileWatcher watcher;
        ASSERT_GE(watcher.descriptor(), 0);
        watcher.watch({watched, dir.filePath(QStringLiteral("gone/too.wav"))});
        QFile reader(watched);
        if (reader.open(QIODevice::ReadOnly)) reader.readAll();
        reader.close();
        ASSERT_TRUE(renameFile(sibling, sibling + QStringLiteral(".old")));
        EXPECT_TRUE(watcher.takeChanged().empty());
        ASSERT_TRUE(c.change(watched, dir));
        EXPECT_EQ(watcher.takeChanged(), std::vector<QString>{watched});
        EXPECT_TRUE(watcher.takeChanged().empty()) << "each change is taken once";
    }
}

// A folder speaks for a watched file in it, or for all of them when it goes itself (deleted, its
// drive unmounted), but its own attributes say nothing; and a file left out of the set wakes no one.
TEST(FileWatcher, AFolderSpeaksOnlyForTheFilesWatchedInIt) {
    const test::TempDir dir;
    const QString gone = dir.makeDir(QStringLiteral("one")) + QStringLiteral("/gone.wav");
    const QString left = dir.writeFile(QStringLiteral("two/left.wav"), "garbage");
    FileWatcher watcher;
    watcher.watch({gone, left});
    watcher.watch({gone});
    watcher.takeChanged();
    ASSERT_TRUE(QFile::remove(left));
    pollfd readable{watcher.descriptor(), POLLIN, 0};
    EXPECT_EQ(poll(&readable, 1, 0), 0);
    ASSERT_EQ(chmod(QFile::encodeName(dir.filePath(QStringLiteral("one"))).constData(), 0700), 0);
    EXPECT_TRUE(watcher.takeChanged().empty());
    ASSERT_TRUE(QDir(dir.filePath(QStringLiteral("one"))).removeRecursively());
    EXPECT_EQ(watcher.takeChanged(), std::vector<QString>{gone});
}

}  // namespace
}  // namespace sylvora
