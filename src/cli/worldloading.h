#pragma once

// Opening a world package from a path given on the command line, exactly as the application opens
// one (World::loadFromPackage), and saying in one line what went wrong when it fails.

#include <QString>

#include "core/files/fsref.h"
#include "util/status.h"

namespace sylvora {
class World;
}

namespace sylvora::cli {

// Loads `path` into `world`. A path that names nothing gives fnfErr without touching the world.
OSStatus loadWorldFromPath(World& world, const QString& path);

// One line naming the file at fault and the status, for a failed load of `path`: the package
// itself, its data.plist, or the sound folder that is missing.
QString describeLoadFailure(const QString& path, OSStatus status);

}  // namespace sylvora::cli
