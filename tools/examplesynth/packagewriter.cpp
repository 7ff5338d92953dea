#include "packagewriter.h"

#include <QDir>
#include <QFileInfo>

#include "audio/engine/engine.h"
#include "core/files/alias.h"
#include "core/time/virtualeventloop.h"
#include "core/world/world.h"

namespace sylvora::synth {

namespace {

QString aliasOf(const QString& path, AliasHandle& alias) {
    FSRef ref;
    if (const OSStatus status = FSPathMakeRef(path, ref); status != noErr) {
        return QStringLiteral("cannot find %1 (status %2)").arg(path).arg(status);
    }
    if (const OSStatus status = FSNewAlias(ref, alias); status != noErr) {
        return QStringLiteral("cannot refer to %1 (status %2)").arg(path).arg(status);
    }
    return {};
}

// Bounds are set in the order that never leaves the minimum above the maximum on the way.
template <typename SetMin, typename SetMax>
void setRange(int currentMax, int minimum, int maximum, SetMin setMin, SetMax setMax) {
    if (minimum > currentMax) {
        setMax(maximum);
        setMin(minimum);
    } else {
        setMin(minimum);
        setMax(maximum);
    }
}

}  // namespace

QString writeWorldPackage(const WorldRecipe& recipe, const QString& packagePath) {
    const QFileInfo target(packagePath);
    if (!QDir().mkpath(target.absolutePath())) {
        return QStringLiteral("cannot create the folder %1").arg(target.absolutePath());
    }
    audio::Engine engine;
    VirtualEventLoop loop;
    World world(engine, loop, 1u);

    world.setName(recipe.name);
    world.setAuthor(recipe.author);
    world.setDescription(recipe.description);
    world.setLoopSoundsCrossFadeDuration(recipe.crossfade);

    std::vector<GroupID> groupIDs;
    for (const GroupRecipe& group : recipe.groups) {
        const GroupID id = world.addGroup(group.name);
        if (id == 0) return QStringLiteral("cannot add the group %1").arg(group.name);
        setRange(world.getGroupMaxInterval(id), group.minInterval, group.maxInterval,
                 [&](int v) { world.setGroupMinInterval(id, v); }, [&](int v) { world.setGroupMaxInterval(id, v); });
        groupIDs.push_back(id);
    }
    for (const LoopRecipe& loopSound : recipe.loops) {
        AliasHandle alias;
        if (QString error = aliasOf(loopSound.file, alias); !error.isEmpty()) return error;
        const SoundID id = world.addLoopSound(*alias);
        if (id == 0) return QStringLiteral("the world refused the loop sound %1").arg(loopSound.file);
        world.setLoopSoundVolume(id, loopSound.volume);
    }
    for (const EnvironmentRecipe& sound : recipe.environment) {
        AliasHandle alias;
        if (QString error = aliasOf(sound.file, alias); !error.isEmpty()) return error;
        const SoundID id = world.addEnvironmentSound(*alias);
        if (id == 0) return QStringLiteral("the world refused the environment sound %1").arg(sound.file);
        world.setEnvironmentSoundMinVolume(id, sound.minVolume);
        world.setEnvironmentSoundMaxVolume(id, sound.maxVolume);
        if (sound.group >= 0 && static_cast<std::size_t>(sound.group) < groupIDs.size()) {
            world.setEnvironmentSoundGroupID(id, groupIDs[static_cast<std::size_t>(sound.group)]);
        } else {
            setRange(world.getEnvironmentSoundMaxInterval(id), sound.minInterval, sound.maxInterval,
                     [&](int v) { world.setEnvironmentSoundMinInterval(id, v); },
                     [&](int v) { world.setEnvironmentSoundMaxInterval(id, v); });
        }
    }
    if (!recipe.picture.isEmpty()) {
        AliasHandle alias;
        if (QString error = aliasOf(recipe.picture, alias); !error.isEmpty()) return error;
        world.setPictureFileAlias(alias.get());
    }

    FSRef parent;
    if (const OSStatus status = FSPathMakeRef(target.absolutePath(), parent); status != noErr) {
        return QStringLiteral("cannot find the folder %1 (status %2)").arg(target.absolutePath()).arg(status);
    }
    if (const OSStatus status = world.doSaveAs(parent, target.fileName()); status != noErr) {
        return QStringLiteral("saving %1 failed (status %2)").arg(packagePath).arg(status);
    }
    return {};
}

QString writeSoundInto(const QString& folder, const QString& fileName, const StereoBuffer& sound, QString& error) {
    const QString path = QDir(folder).filePath(fileName);
    std::string why;
    if (error.isEmpty() && !writeSound(path.toStdString(), sound, why)) {
        error = QStringLiteral("cannot write %1: %2").arg(path, QString::fromStdString(why));
    }
    return path;
}

QString savePictureInto(const QString& folder, const QString& fileName, const QImage& picture, QString& error) {
    const QString path = QDir(folder).filePath(fileName);
    if (error.isEmpty() && !picture.save(path, "PNG")) {
        error = QStringLiteral("cannot write %1").arg(path);
    }
    return path;
}

}  // namespace sylvora::synth
