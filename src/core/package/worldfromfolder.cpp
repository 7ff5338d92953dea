#include "core/package/worldfromfolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <cmath>
#include <memory>

#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"
#include "core/files/alias.h"
#include "core/files/fsref.h"
#include "core/files/nativepath.h"
#include "core/strings/stringresources.h"
#include "core/world/world.h"

namespace sylvora {

namespace {

using Role = FolderWorldItem::Role;

AliasHandle aliasOf(const QString& path) {
    FSRef ref;
    AliasHandle alias;
    if (FSPathMakeRef(path, ref) != noErr || FSNewAlias(ref, alias) != noErr) return nullptr;
    return alias;
}

// The length of a sound file, or a negative value when no decoder reads it.
double soundSeconds(audio::Engine& engine, const QString& path) {
    std::unique_ptr<audio::SoundInstance> instance;
    if (engine.openInstance(nativepath::encode(path).toStdString(), instance) != noErr || !instance) return -1.0;
    const std::int32_t scale = instance->timeScale();
    return scale > 0 ? static_cast<double>(instance->duration()) / scale : 0.0;
}

bool tryPicture(World& world, const QString& path, FolderWorldItem& item) {
    const AliasHandle alias = aliasOf(path);
    if (!alias) return false;
    world.setPictureFileAlias(alias.get());
    // getPicture forgets a picture that does not decode.
    if (world.getPicture().isNull()) {
        world.setPictureFileAlias(nullptr);
        return false;
    }
    item.role = Role::Picture;
    item.reason = QCoreApplication::translate("WorldFromFolder", "the world's picture");
    return true;
}

void addSound(World& world, const QString& path, FolderWorldItem& item) {
    const AliasHandle alias = aliasOf(path);
    if (!alias) {
        item.reason = QCoreApplication::translate("WorldFromFolder", "cannot be read");
        return;
    }
    if (item.seconds >= WorldFromFolder::LOOP_SOUND_MIN_SECONDS) {
        if (world.addLoopSound(*alias) == 0) {
            item.reason =
                world.getNumLoopSounds() >= World::MAX_LOOP_SOUNDS
                    ? QCoreApplication::translate("WorldFromFolder", "a world holds at most %1 loop sounds")
                          .arg(World::MAX_LOOP_SOUNDS)
                    : QCoreApplication::translate("WorldFromFolder", "cannot be played");
            return;
        }
        item.role = Role::LoopSound;
        item.reason = QCoreApplication::translate("WorldFromFolder", "%1 s or longer: plays without end")
                          .arg(WorldFromFolder::LOOP_SOUND_MIN_SECONDS);
        return;
    }
    const SoundID id = world.addEnvironmentSound(*alias);
    if (id == 0) {
        item.reason = world.getNumEnvironmentSounds() >= World::MAX_ENVIRONMENT_SOUNDS
                          ? QCoreApplication::translate("WorldFromFolder",
                                                        "a world holds at most %1 environment sounds")
                                .arg(World::MAX_ENVIRONMENT_SOUNDS)
                          : QCoreApplication::translate("WorldFromFolder", "cannot be played");
        return;
    }
    WorldFromFolder::intervalsForLength(item.seconds, item.minInterval, item.maxInterval);
    world.setEnvironmentSoundMinInterval(id, item.minInterval);
    world.setEnvironmentSoundMaxInterval(id, item.maxInterval);
    item.role = Role::EnvironmentSound;
    item.reason = QCoreApplication::translate("WorldFromFolder", "shorter than %1 s: heard every %2 to %3 s")
                      .arg(WorldFromFolder::LOOP_SOUND_MIN_SECONDS)
                      .arg(item.minInterval)
                      .arg(item.maxInterval);
}

}  // namespace

int FolderWorldReport::count(FolderWorldItem::Role role) const {
    int n = 0;
    for (const FolderWorldItem& item : items)
        n += item.role == role ? 1 : 0;
    return n;
}

// A one-shot should come back rarely enough that it stays an event and never crowds the loops: a
// bird call of a second is heard again after 13 to 26 s, a ten-second thunder roll after 40 to 80 s.
// So the shortest interval is 10 s plus three times the sound's length, rounded up to a whole second
// (intervals are whole seconds), and the longest twice that, which keeps the spread proportional.
void WorldFromFolder::intervalsForLength(double seconds, int& minInterval, int& maxInterval) {
    minInterval = 10 + static_cast<int>(std::ceil(3.0 * std::max(0.0, seconds)));
    maxInterval = 2 * minInterval;
}

OSStatus WorldFromFolder::fillWorld(World& world, const QString& folder, const QString& name,
                                    FolderWorldReport& report) {
    report = FolderWorldReport{};
    world.resetToInitialState();
    const QFileInfo folderInfo(folder);
    if (!folderInfo.isDir()) {
        report.error = QCoreApplication::translate("WorldFromFolder", "'%1' is not a folder").arg(folder);
        return dirNFErr;
    }
    report.name = name.isEmpty() ? folderInfo.fileName() : name;
    world.setName(report.name);

    const QDir dir(folderInfo.absoluteFilePath());
    bool havePicture = false;
    for (const QFileInfo& file :
         dir.entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::IgnoreCase)) {
        FolderWorldItem item;
        item.fileName = file.fileName();
        const QString path = file.absoluteFilePath();
        if (file.isDir()) {
            item.reason = QCoreApplication::translate("WorldFromFolder",
                                                      "a folder: only the files directly inside are used");
        } else if (!QImageReader::imageFormat(path).isEmpty()) {
            if (havePicture)
                item.reason =
                    QCoreApplication::translate("WorldFromFolder", "another picture: the world has one");
            else if (!tryPicture(world, path, item))
                item.reason =
                    QCoreApplication::translate("WorldFromFolder", "a picture that cannot be decoded");
            havePicture |= item.role == Role::Picture;
        } else {
            item.seconds = soundSeconds(world.getEngine(), path);
            if (item.seconds < 0.0)
                item.reason =
                    QCoreApplication::translate("WorldFromFolder", "not a sound file that can be decoded");
            else if (item.seconds <= 0.0)
                item.reason = QCoreApplication::translate("WorldFromFolder", "holds no sound");
            else
                addSound(world, path, item);
        }
        report.items << item;
    }
    if (world.getNumLoopSounds() == 0 && world.getNumEnvironmentSounds() == 0) {
        report.error =
            QCoreApplication::translate("WorldFromFolder", "no sound file in '%1' could be decoded")
                .arg(folder);
        world.resetToInitialState();
        return paramErr;
    }
    return noErr;
}

OSStatus WorldFromFolder::makePackage(World& world, const QString& folder, const QString& packagePath,
                                      const QString& name, FolderWorldReport& report) {
    const QFileInfo destination(packagePath);
    if (destination.suffix().compare(QLatin1String(World::PACKAGENAME_EXTENSION), Qt::CaseInsensitive) != 0) {
        report = FolderWorldReport{};
        report.error =
            QCoreApplication::translate("WorldFromFolder", "a world package's name ends in .%1: '%2'")
                .arg(QLatin1String(World::PACKAGENAME_EXTENSION), packagePath);
        return paramErr;
    }
    if (destination.exists() || destination.isSymLink()) {
        report = FolderWorldReport{};
        report.error = QCoreApplication::translate("WorldFromFolder", "'%1' already exists").arg(packagePath);
        return dupFNErr;
    }
    FSRef parent;
    if (FSPathMakeRef(destination.absolutePath(), parent) != noErr) {
        report = FolderWorldReport{};
        report.error = QCoreApplication::translate("WorldFromFolder", "the folder '%1' does not exist")
                           .arg(destination.absolutePath());
        return dirNFErr;
    }
    OSStatus status = fillWorld(world, folder, name, report);
    if (status != noErr)
        return status;
    status = world.doSaveAs(parent, destination.fileName());
    if (status != noErr)
        report.error =
            QCoreApplication::translate("WorldFromFolder", "the world could not be saved as '%1': %2")
                .arg(packagePath, copyStatusDescription(status));
    return status;
}

QString WorldFromFolder::freePackagePath(const QString& directory, const QString& name) {
    const QString extension = QStringLiteral(".") + QLatin1String(World::PACKAGENAME_EXTENSION);
    QString path = nativepath::join(directory, name + extension);
    for (int n = 2; QFileInfo::exists(path) || QFileInfo(path).isSymLink(); ++n) {
        path = nativepath::join(directory, QStringLiteral("%1 %2").arg(name).arg(n) + extension);
    }
    return path;
}

}  // namespace sylvora
