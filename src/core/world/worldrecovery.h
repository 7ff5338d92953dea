#pragma once

// Unsaved edits kept across an ending the person did not ask for (the session logged out, a kill
// from a task manager): the world's state is written to a recovery file in the user's state folder,
// and the next launch offers it back. The file holds what a save would write into the package's
// data file, with each sound and the picture named by its full path instead of being copied, and
// the package the world came from; the sounds themselves stay where they are.
//
// Main thread only: it reads the world's lists and resolves their aliases.

#include <QString>

#include "util/status.h"

namespace sylvora {

class World;

class WorldRecovery {
  public:
    // $XDG_STATE_HOME/sylvora/unsaved world.plist (~/.local/state when the variable is unset).
    static QString defaultFilePath();

    explicit WorldRecovery(QString filePath = defaultFilePath()) : filePath_(std::move(filePath)) {}

    bool exists() const;
    // The recovered world's name, for the question asked at launch; empty when it has none.
    QString worldName() const;

    // Written under a temporary name and renamed into place, so that a kill during the write leaves
    // the previous file or none, never half of one.
    OSStatus write(const World& world) const;
    // Makes `world` the recovered one: its package opened when it had one (or a new world), then every
    // value, group and sound of the file. Sounds whose files are gone are left out and counted in
    // `missingSounds`. The world counts as changed, so that it is saved or the person is asked.
    OSStatus restore(World& world, int* missingSounds = nullptr) const;
    void remove() const;

  private:
    QString filePath_;
};

}  // namespace sylvora
