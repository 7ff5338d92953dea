#pragma once

// What the loader passed over without a word: entries of data.plist that did not make it into the
// world. The loader is forgiving by design, so the only way to know is to read the description
// again and compare it, entry by entry, with what was loaded.

#include <QString>
#include <QStringList>

namespace sylvora {
class World;
}

namespace sylvora::cli {

// One line per skipped or changed entry of the package at `packagePath`, after `world` was loaded
// from it. Empty when the description cannot be read (the load status says so already).
QStringList findSkippedEntries(const QString& packagePath, World& world);

}  // namespace sylvora::cli
