#include "core/package/packagename.h"

#include "core/world/world.h"

namespace sylvora {

QString packageDisplayNameForFileName(const QString& fileName) {
    const QString suffix = QLatin1Char('.') + QLatin1String(World::PACKAGENAME_EXTENSION);
    if (fileName.size() > suffix.size() && fileName.endsWith(suffix, Qt::CaseInsensitive))
        return fileName.left(fileName.size() - suffix.size());
    return fileName;
}

QString copyPackageDisplayName(const FSRef& package) { return packageDisplayNameForFileName(FSGetName(package)); }

}  // namespace sylvora
