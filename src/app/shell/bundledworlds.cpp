#include "app/shell/bundledworlds.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include "core/world/world.h"

namespace sylvora::app {

namespace {
constexpr const char* FIRST_WORLD_NAME = "Evening Forest";
}  // namespace

QString bundledWorldsFolder() {
    // Installed first: a build tree's folder named at compile time may be gone since.
    const QDir installed(QCoreApplication::applicationDirPath() + QLatin1Char('/') +
                         QStringLiteral(SYLVORA_WORLDS_FROM_BINDIR));
    if (installed.exists()) return installed.canonicalPath();
    const QDir built(QStringLiteral(SYLVORA_BUILD_WORLDS_DIR));
    if (built.exists()) return built.canonicalPath();
    return {};
}

QString bundledFirstWorld() {
    const QString folder = bundledWorldsFolder();
    if (folder.isEmpty()) return {};
    const QDir worlds(folder);
    const QString extension = QLatin1Char('.') + QLatin1String(World::PACKAGENAME_EXTENSION);
    const QString preferred = worlds.filePath(QLatin1String(FIRST_WORLD_NAME) + extension);
    if (QFileInfo(preferred).isDir()) return preferred;
    const QStringList packages = worlds.entryList({QLatin1Char('*') + extension}, QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    return packages.isEmpty() ? QString() : worlds.filePath(packages.front());
}

QString userWorldsFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/sylvora/worlds");
}

}  // namespace sylvora::app
