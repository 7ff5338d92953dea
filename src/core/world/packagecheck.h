#pragma once

// A look at a world package before any world is touched: its description must read as a property
// list and both its sound folders must be there. The statuses are those World::loadFromPackage
// gives for the same faults. A caller that gets anything but noErr keeps the world it has, playing.

#include "core/files/fsref.h"
#include "util/status.h"

namespace sylvora {

// [main]
OSStatus checkWorldPackage(const FSRef& package);

}  // namespace sylvora
