#include "cli/worldloading.h"

#include <QDir>
#include <QFileInfo>

#include "core/strings/stringresources.h"
#include "core/world/world.h"

namespace sylvora::cli {

namespace {

QString statusSuffix(OSStatus status) { return QStringLiteral(": ") + copyStatusDescription(status); }

}  // namespace

OSStatus loadWorldFromPath(World& world, const QString& path) {
    FSRef package;
    const OSStatus status = FSPathMakeRef(QDir::cleanPath(QFileInfo(path).absoluteFilePath()), package);
    if (status != noErr) {
        return status;
    }
    return world.loadFromPackage(package);
}

QString describeLoadFailure(const QString& path, OSStatus status) {
    const QFileInfo package(path);
    const QDir folder(package.absoluteFilePath());
    const QString suffix = statusSuffix(status);
    if (!package.exists()) {
        return QStringLiteral("no world package at '%1'%2").arg(path, suffix);
    }
    if (!package.isDir()) {
        return QStringLiteral("'%1' is not a world package (a .sylvora folder)%2").arg(path, suffix);
    }
    const QString dataFile = folder.filePath(QLatin1String(World::DATA_FILE_NAME));
    const QFileInfo data(dataFile);
    if (!data.exists()) {
        return QStringLiteral("the world description '%1' is missing%2").arg(dataFile, suffix);
    }
    if (status == unreadablePropertyListErr) {
        return QStringLiteral("the world description '%1' is not a readable property list%2").arg(dataFile, suffix);
    }
    // The loader reports the environment sounds' folder before the loop sounds' one.
    for (const char* subfolder : {World::ENVIRONMENT_SOUNDS_SUBDIRECTORY_NAME, World::LOOP_SOUNDS_SUBDIRECTORY_NAME}) {
        const QString sounds = folder.filePath(QLatin1String(subfolder));
        if (!QFileInfo(sounds).isDir()) {
            return QStringLiteral("the sound folder '%1' is missing%2").arg(sounds, suffix);
        }
    }
    if (!data.isReadable() || data.isDir()) {
        return QStringLiteral("cannot read the world description '%1'%2").arg(dataFile, suffix);
    }
    return QStringLiteral("cannot open the world '%1'%2").arg(path, suffix);
}

}  // namespace sylvora::cli
