#include "core/world/worldrecovery.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <utility>

#include "core/files/alias.h"
#include "core/package/plist.h"
#include "core/world/world.h"

namespace sylvora {

namespace {

// The data file's own keys are used for every value it has; these name what only a recovery holds.
constexpr const char* PACKAGE_PATH_KEY = "Package Path";
constexpr const char* PICTURE_PATH_KEY = "Picture Path";

QString resolvedPath(const Alias* alias) {
    FSRef ref;
    return alias && FSResolveAlias(*alias, ref) == noErr ? ref.path : QString();
}

void setStringUnlessEmpty(plist_t dict, const char* key, const QString& path) {
    if (!path.isEmpty()) plistSetString(dict, key, path);
}

PlistPtr describeGroups(const World& world) {
    PlistPtr groups = plistNewArray();
    for (int i = 0; i < world.getNumGroups(); ++i) {
        const GroupID id = world.getIndGroupID(i);
        PlistPtr entry = plistNewDict();
        const auto node = static_cast<plist_t>(entry.get());
        plistSetString(node, World::GROUP_NAME_KEY, world.getGroupName(id));
        plistSetInt32(node, World::ENVIRONMENT_SOUND_MIN_INTERVAL_KEY, world.getGroupMinInterval(id));
        plistSetInt32(node, World::ENVIRONMENT_SOUND_MAX_INTERVAL_KEY, world.getGroupMaxInterval(id));
        plistAppend(static_cast<plist_t>(groups.get()), std::move(entry));
    }
    return groups;
}

PlistPtr describeLoopSounds(const World& world) {
    PlistPtr sounds = plistNewArray();
    for (int i = 0; i < world.getNumLoopSounds(); ++i) {
        const SoundID id = world.getIndLoopSoundID(i);
        PlistPtr entry = plistNewDict();
        const auto node = static_cast<plist_t>(entry.get());
        setStringUnlessEmpty(node, World::SOUND_FILENAME_KEY, resolvedPath(world.getLoopSound(id)));
        plistSetDouble(node, World::LOOP_SOUND_VOLUME_KEY, world.getLoopSoundVolume(id));
        plistAppend(static_cast<plist_t>(sounds.get()), std::move(entry));
    }
    return sounds;
}

PlistPtr describeEnvironmentSounds(const World& world) {
    PlistPtr sounds = plistNewArray();
    for (int i = 0; i < world.getNumEnvironmentSounds(); ++i) {
        const SoundID id = world.getIndEnvironmentSoundID(i);
        PlistPtr entry = plistNewDict();
        const auto node = static_cast<plist_t>(entry.get());
        setStringUnlessEmpty(node, World::SOUND_FILENAME_KEY, resolvedPath(world.getEnvironmentSound(id)));
        plistSetDouble(node, World::ENVIRONMENT_SOUND_MIN_VOLUME_KEY, world.getEnvironmentSoundMinVolume(id));
        plistSetDouble(node, World::ENVIRONMENT_SOUND_MAX_VOLUME_KEY, world.getEnvironmentSoundMaxVolume(id));
        plistSetInt32(node, World::ENVIRONMENT_SOUND_MIN_INTERVAL_KEY, world.getEnvironmentSoundMinInterval(id));
        plistSetInt32(node, World::ENVIRONMENT_SOUND_MAX_INTERVAL_KEY, world.getEnvironmentSoundMaxInterval(id));
        const GroupID group = world.getEnvironmentSoundGroupID(id);
        plistSetInt32(node, World::ENVIRONMENT_SOUND_GROUP_INDEX_KEY, group != 0 ? world.getGroupIndex(group) : -1);
        plistAppend(static_cast<plist_t>(sounds.get()), std::move(entry));
    }
    return sounds;
}

// An alias of the file at `path`; null when there is none.
AliasHandle aliasOfPath(const std::optional<QString>& path) {
    FSRef ref;
    AliasHandle alias;
    if (!path || FSPathMakeRef(*path, ref) != noErr || FSNewAlias(ref, alias) != noErr) return nullptr;
    return alias;
}

PlistPtr readRecovery(const QString& filePath) {
    QFile file(filePath);
    if (!file.open(QIODevice::ReadOnly) || file.size() > 16 * 1024 * 1024) return nullptr;
    PlistPtr root = plistParse(file.readAll());
    return root && plistIsDict(static_cast<plist_t>(root.get())) ? std::move(root) : nullptr;
}

}  // namespace

QString WorldRecovery::defaultFilePath() {
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (state.isEmpty() || !QDir::isAbsolutePath(state)) state = QDir::homePath() + QStringLiteral("/.local/state");
    return state + QStringLiteral("/sylvora/unsaved world.plist");
}

bool WorldRecovery::exists() const { return QFileInfo(filePath_).isFile(); }

QString WorldRecovery::worldName() const {
    const PlistPtr root = readRecovery(filePath_);
    return root ? plistGetString(static_cast<plist_t>(root.get()), World::NAME_KEY).value_or(QString()) : QString();
}

OSStatus WorldRecovery::write(const World& world) const {
    const PlistPtr rootOwner = plistNewDict();
    const auto root = static_cast<plist_t>(rootOwner.get());
    setStringUnlessEmpty(root, PACKAGE_PATH_KEY, resolvedPath(world.getPackageAlias()));
    setStringUnlessEmpty(root, World::NAME_KEY, world.getName());
    setStringUnlessEmpty(root, World::AUTHOR_KEY, world.getAuthor());
    setStringUnlessEmpty(root, World::DESCRIPTION_KEY, world.getDescription());
    setStringUnlessEmpty(root, PICTURE_PATH_KEY, resolvedPath(world.getPictureFileAlias()));
    plistSetInt32(root, World::LOOP_SOUNDS_CROSSFADE_DURATION_KEY, world.getLoopSoundsCrossFadeDuration());
    plistSetNode(root, World::GROUPS_ARRAY_KEY, describeGroups(world));
    plistSetNode(root, World::LOOP_SOUNDS_ARRAY_KEY, describeLoopSounds(world));
    plistSetNode(root, World::ENVIRONMENT_SOUNDS_ARRAY_KEY, describeEnvironmentSounds(world));

    const QByteArray xml = plistToXml(root);
    if (xml.isEmpty()) return ioErr;
    if (!QDir().mkpath(QFileInfo(filePath_).absolutePath())) return permErr;
    QSaveFile file(filePath_);
    if (!file.open(QIODevice::WriteOnly) || file.write(xml) != xml.size() || !file.commit()) return ioErr;
    return noErr;
}

OSStatus WorldRecovery::restore(World& world, int* missingSounds) const {
    const PlistPtr rootOwner = readRecovery(filePath_);
    if (!rootOwner) return unreadablePropertyListErr;
    const auto root = static_cast<plist_t>(rootOwner.get());

    FSRef package;
    const std::optional<QString> packagePath = plistGetString(root, PACKAGE_PATH_KEY);
    if (!packagePath || FSPathMakeRef(*packagePath, package) != noErr || world.loadFromPackage(package) != noErr)
        world.resetToInitialState();
    world.clearEnvironmentSoundList();
    world.clearLoopSoundList();
    world.clearGroupList();

    world.setName(plistGetString(root, World::NAME_KEY).value_or(QString()));
    world.setAuthor(plistGetString(root, World::AUTHOR_KEY).value_or(QString()));
    world.setDescription(plistGetString(root, World::DESCRIPTION_KEY).value_or(QString()));
    world.setLoopSoundsCrossFadeDuration(
        plistGetInt32(root, World::LOOP_SOUNDS_CROSSFADE_DURATION_KEY).value_or(World::DEFAULT_LOOP_SOUNDS_CROSS_FADE_DURATION));
    const AliasHandle picture = aliasOfPath(plistGetString(root, PICTURE_PATH_KEY));
    world.setPictureFileAlias(picture.get());

    std::vector<GroupID> groups;
    const plist_t groupArray = plistGetArray(root, World::GROUPS_ARRAY_KEY);
    for (std::uint32_t i = 0; i < plistArraySize(groupArray); ++i) {
        const plist_t entry = plistArrayItem(groupArray, i);
        const GroupID id = world.addGroup(plistGetString(entry, World::GROUP_NAME_KEY).value_or(QString()));
        world.setGroupMinInterval(id, plistGetInt32(entry, World::ENVIRONMENT_SOUND_MIN_INTERVAL_KEY).value_or(0));
        world.setGroupMaxInterval(id, plistGetInt32(entry, World::ENVIRONMENT_SOUND_MAX_INTERVAL_KEY).value_or(0));
        groups.push_back(id);
    }

    int missing = 0;
    const plist_t loopArray = plistGetArray(root, World::LOOP_SOUNDS_ARRAY_KEY);
    for (std::uint32_t i = 0; i < plistArraySize(loopArray); ++i) {
        const plist_t entry = plistArrayItem(loopArray, i);
        const AliasHandle alias = aliasOfPath(plistGetString(entry, World::SOUND_FILENAME_KEY));
        if (!alias) {
            ++missing;
            continue;
        }
        const SoundID id = world.addLoopSound(*alias);
        world.setLoopSoundVolume(id, plistGetDouble(entry, World::LOOP_SOUND_VOLUME_KEY).value_or(1.0));
    }

    const plist_t environmentArray = plistGetArray(root, World::ENVIRONMENT_SOUNDS_ARRAY_KEY);
    for (std::uint32_t i = 0; i < plistArraySize(environmentArray); ++i) {
        const plist_t entry = plistArrayItem(environmentArray, i);
        const AliasHandle alias = aliasOfPath(plistGetString(entry, World::SOUND_FILENAME_KEY));
        if (!alias) {
            ++missing;
            continue;
        }
        const SoundID id = world.addEnvironmentSound(*alias);
        // Joining a group gives the sound the group's intervals, so the sound's own come after it.
        const int group = plistGetInt32(entry, World::ENVIRONMENT_SOUND_GROUP_INDEX_KEY).value_or(-1);
        if (group >= 0 && group < static_cast<int>(groups.size()))
            world.setEnvironmentSoundGroupID(id, groups[static_cast<std::size_t>(group)]);
        world.setEnvironmentSoundMinVolume(id, plistGetDouble(entry, World::ENVIRONMENT_SOUND_MIN_VOLUME_KEY).value_or(1.0));
        world.setEnvironmentSoundMaxVolume(id, plistGetDouble(entry, World::ENVIRONMENT_SOUND_MAX_VOLUME_KEY).value_or(1.0));
        world.setEnvironmentSoundMinInterval(id, plistGetInt32(entry, World::ENVIRONMENT_SOUND_MIN_INTERVAL_KEY).value_or(0));
        world.setEnvironmentSoundMaxInterval(id, plistGetInt32(entry, World::ENVIRONMENT_SOUND_MAX_INTERVAL_KEY).value_or(0));
    }
    if (missingSounds) *missingSounds = missing;
    return noErr;
}

void WorldRecovery::remove() const { QFile::remove(filePath_); }

}  // namespace sylvora
