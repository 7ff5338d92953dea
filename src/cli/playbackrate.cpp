#include "cli/playbackrate.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "audio/decoders/decoder.h"
#include "audio/engine/engine.h"
#include "core/files/utils.h"
#include "core/package/plist.h"
#include "core/world/world.h"

namespace sylvora::cli {

int choosePlaybackRate(const QString& packagePath) {
    constexpr int usual = audio::Engine::DEFAULT_SAMPLE_RATE;
    const QDir package(QFileInfo(packagePath).absoluteFilePath());
    QFile data(package.filePath(QLatin1String(World::DATA_FILE_NAME)));
    if (!data.open(QIODevice::ReadOnly)) {
        return usual;
    }
    const PlistPtr rootOwner = plistParse(data.readAll());
    const plist_t loops = plistGetArray(static_cast<plist_t>(rootOwner.get()), World::LOOP_SOUNDS_ARRAY_KEY);
    FSRef folder;
    if (!loops || FSMakeFSRefCFString(FSRef{package.absolutePath()}, QLatin1String(World::LOOP_SOUNDS_SUBDIRECTORY_NAME),
                                      kTextEncodingUnknown, folder) != noErr) {
        return usual;
    }
    int shared = 0;
    int probed = 0;
    for (std::uint32_t i = 0; i < plistArraySize(loops) && probed < World::MAX_LOOP_SOUNDS; ++i) {
        const std::optional<QString> name = plistGetString(plistArrayItem(loops, i), World::SOUND_FILENAME_KEY);
        FSRef file;
        if (!name || FSMakeFSRefCFString(folder, *name, kTextEncodingUnknown, file) != noErr) {
            continue;
        }
        const int rate = audio::probeSampleRate(QFile::encodeName(file.path).toStdString());
        if (rate <= 0) {
            continue;
        }
        ++probed;
        if (shared != 0 && rate != shared) {
            return usual;
        }
        shared = rate;
    }
    if (shared < LOWEST_NATIVE_RATE || shared > HIGHEST_NATIVE_RATE) {
        return usual;
    }
    return shared;
}

}  // namespace sylvora::cli
