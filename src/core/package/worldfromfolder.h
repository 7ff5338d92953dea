#pragma once

// Makes a world from a folder of a person's own sound files, through the same World operations the
// editor uses, and saves it as a package. Long sounds become loop sounds, short ones environment
// sounds whose intervals grow with their length, the first picture that decodes becomes the
// world's picture, and the folder's name its name. What went where, and why, comes back as a
// report, so the command-line tool and the desktop app tell it in their own ways.
//
// Main thread only: it loads every sound into the world's instance pool as the editor does.

#include <QList>
#include <QString>

#include "util/status.h"

namespace sylvora {

class World;

struct FolderWorldItem {
    enum class Role { LoopSound, EnvironmentSound, Picture, Skipped };
    QString fileName;
    Role role = Role::Skipped;
    double seconds = 0.0;                      // sounds: the length
    int minInterval = 0, maxInterval = 0;      // environment sounds
    QString reason;                            // why it went there
};

struct FolderWorldReport {
    QString name;
    QList<FolderWorldItem> items;  // in the folder's order, by file name
    QString error;                 // set when no world could be made
    int count(FolderWorldItem::Role role) const;
};

class WorldFromFolder {
public:
    static constexpr double LOOP_SOUND_MIN_SECONDS = 20.0;

    // The interval an environment sound of `seconds` is heard again after (see the .cpp for the
    // rule).
    static void intervalsForLength(double seconds, int& minInterval, int& maxInterval);

    // Empties `world` and fills it from the files directly inside `folder` (hidden files and
    // subfolders are passed over). A folder without one decodable sound gives paramErr and an error
    // text; the world is then empty.
    static OSStatus fillWorld(World& world, const QString& folder, const QString& name, FolderWorldReport& report);

    // fillWorld, then World::doSaveAs into `packagePath`, which must end in ".sylvora" and must not
    // exist yet (dupFNErr), so nothing a person has is ever replaced.
    static OSStatus makePackage(World& world, const QString& folder, const QString& packagePath,
                                const QString& name, FolderWorldReport& report);

    // `name` + ".sylvora" in `directory`, or "name 2.sylvora" and onwards when that is taken.
    static QString freePackagePath(const QString& directory, const QString& name);
};

}  // namespace sylvora
