#pragma once

// How a world package is named to the user: its folder name with the ".sylvora" extension hidden,
// as the file browser shows packages.

#include <QString>

#include "core/files/fsref.h"

namespace sylvora {

// "Rain.sylvora" gives "Rain"; a name without the extension is shown as it stands, and so is a
// name that would be empty without it.
QString packageDisplayNameForFileName(const QString& fileName);

// The display name of the object `package` refers to.
QString copyPackageDisplayName(const FSRef& package);

}  // namespace sylvora
