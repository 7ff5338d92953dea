// Reading and writing the preferences store, and the stored form of the known worlds list.

#include <QFile>
#include <QSettings>
#include <QStandardPaths>
#include <QVariantMap>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "core/prefs/preferences.h"
#include "core/prefs/serializedvalues.h"

namespace sylvora {

namespace {

constexpr const char* ORGANIZATION_NAME = "Sylvora";
constexpr const char* APPLICATION_NAME = "Sylvora";

// QDataStream believes the lengths it reads, so one damaged "@Variant(" value can make QSettings
// ask for gigabytes as it opens the file. This store never writes such values: a file holding one
// was not written by it, and it is set aside whole (".damaged" added to its name) so that the
// preferences start afresh and nothing in it is lost. Null when it had to be set aside and could
// not be.
std::unique_ptr<QSettings> openStore(const QString& settingsFilePath) {
    const QString path = settingsFilePath.isEmpty() ? Preferences::defaultSettingsFilePath() : settingsFilePath;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly) && holdsSerializedValues(file.readAll())) {
        file.close();
        const QString aside = path + QLatin1String(".damaged");
        QFile::remove(aside);
        if (!QFile::rename(path, aside))
            return nullptr;
        std::fprintf(stderr, "Sylvora: %s was not written by Sylvora; it is kept as %s\n", qPrintable(path),
                     qPrintable(aside));
    }
    return std::make_unique<QSettings>(path, QSettings::IniFormat);
}

bool holds(const QVariant& value, QMetaType::Type type) { return value.typeId() == type; }

// In the order of Preferences::DialogFolder.
constexpr const char* DIALOG_FOLDER_KEYS[] = {"Dialog Folders/Open", "Dialog Folders/Save As",
                                              "Dialog Folders/Sounds", "Dialog Folders/Picture"};

// The list is stored as an INI array group; reading turns it back into the same QVariantList of
// maps that createCFArrayOfKnownWorlds makes, so both directions go through one stored form.
// Only the elements the file really holds are visited, in index order: a damaged "size" of two
// billion would otherwise keep start-up busy for hours looking for elements that are not there.
QVariantList readKnownWorldsArray(QSettings& store) {
    const QString group = QLatin1String(Preferences::PREF_KEY_KNOWN_WORLDS_ARRAY);
    const int size = store.beginReadArray(group);
    store.endArray();
    store.beginGroup(group);
    std::vector<std::pair<int, QString>> elements;  // INI array elements are numbered from 1
    for (const QString& child : store.childGroups()) {
        bool isNumber = false;
        const int number = child.toInt(&isNumber);
        if (isNumber && number >= 1 && number <= size) elements.emplace_back(number, child);
    }
    std::sort(elements.begin(), elements.end());
    QVariantList array;
    for (const auto& [number, child] : elements) {
        store.beginGroup(child);
        QVariantMap element;
        for (const QString& key : store.childKeys()) element.insert(key, store.value(key));
        store.endGroup();
        array.append(element);
    }
    store.endGroup();
    return array;
}

void writeKnownWorldsArray(QSettings& store, const QVariantList& array) {
    const QString group = QLatin1String(Preferences::PREF_KEY_KNOWN_WORLDS_ARRAY);
    store.remove(group);
    store.beginWriteArray(group, static_cast<int>(array.size()));
    for (qsizetype i = 0; i < array.size(); ++i) {
        store.setArrayIndex(static_cast<int>(i));
        const QVariantMap element = array[i].toMap();
        for (auto it = element.cbegin(); it != element.cend(); ++it) store.setValue(it.key(), it.value());
    }
    store.endArray();
}

}  // namespace

QVariantList Preferences::createCFArrayOfKnownWorlds() const {
    QVariantList array;
    for (int i = 0; i < numKnownWorlds; ++i) {
        const KnownWorld& record = knownWorlds[static_cast<std::size_t>(i)];
        QVariantMap element;
        if (!record.name.isEmpty()) element.insert(QLatin1String(PREF_KEY_KNOWN_WORLD_NAME), record.name);
        element.insert(QLatin1String(PREF_KEY_KNOWN_WORLD_ALIAS), record.alias->toBytes());
        array.append(element);
    }
    return array;
}

void Preferences::extractKnownWorldsFromCFArray(const QVariantList& array) {
    clearKnownWorlds();
    // Each package found is looked up here rather than by updateKnownWorlds, which would look at
    // every record before it: reading a long list would take a time that grows with its square.
    std::map<std::pair<quint64, quint64>, int> recordOfPackage;  // device and inode
    for (const QVariant& item : array) {
        if (!holds(item, QMetaType::QVariantMap)) continue;
        const QVariantMap element = item.toMap();
        const QVariant name = element.value(QLatin1String(PREF_KEY_KNOWN_WORLD_NAME));
        const QVariant aliasData = element.value(QLatin1String(PREF_KEY_KNOWN_WORLD_ALIAS));
        if (!holds(aliasData, QMetaType::QByteArray)) continue;
        const AliasHandle alias = Alias::fromBytes(aliasData.toByteArray());
        if (!alias) continue;
        const QString storedName = holds(name, QMetaType::QString) ? name.toString() : QString();
        // Start-up never searches the disk: a world that is not where it was stays known, under its
        // stored name, until a search in the background tells a moved package from a deleted one
        // (fillMenuWithKnownWorlds); so does one on a drive that is not plugged in, until the drive
        // comes back. The same world stored twice (as lists written before duplicates were merged
        // may hold it) stays once.
        FSRef resolved;
        if (FSResolveAliasWithoutSearch(*alias, resolved) != noErr && numKnownWorlds < MAX_KNOWN_WORLDS) {
            const auto sameObject = [&alias](const KnownWorld& record) {
                return record.alias && record.alias->device() == alias->device() && record.alias->inode() == alias->inode() &&
                       record.alias->volume() == alias->volume();
            };
            if (std::any_of(knownWorlds.begin(), knownWorlds.begin() + numKnownWorlds, sameObject)) continue;
            knownWorlds[static_cast<std::size_t>(numKnownWorlds++)] = KnownWorld{alias->copy(), storedName};
            knownWorldsNeedSorting = true;
            continue;
        }
        FileIdentity identity;
        if (!FSGetObjectIdentity(resolved, identity)) continue;
        const auto known = recordOfPackage.find({identity.device, identity.inode});
        if (known != recordOfPackage.end()) {
            recordKnownWorld(known->second, *alias, resolved, storedName);
        } else if (numKnownWorlds < MAX_KNOWN_WORLDS) {
            recordOfPackage.emplace(std::pair{identity.device, identity.inode}, numKnownWorlds);
            recordKnownWorld(-1, *alias, resolved, storedName);
        }
    }
}

QString Preferences::defaultSettingsFilePath() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QLatin1Char('/') +
           QLatin1String(ORGANIZATION_NAME) + QLatin1Char('/') + QLatin1String(APPLICATION_NAME) + QLatin1String(".ini");
}

void Preferences::loadPreferences() {
    const std::unique_ptr<QSettings> store = openStore(settingsFilePath);
    if (!store)
        return;

    // INI stores numbers as text, so any value that reads as a finite number is taken as it is;
    // the world clamps it when it is applied.
    const QVariant volumeValue = store->value(QLatin1String(PREF_KEY_MASTER_VOLUME));
    if (volumeValue.isValid()) {
        bool ok = false;
        const double value = volumeValue.toDouble(&ok);
        if (ok && std::isfinite(value)) masterVolume = value;
    }

    const QVariant lastPlayed = store->value(QLatin1String(PREF_KEY_LAST_PLAYED_ALIAS));
    if (holds(lastPlayed, QMetaType::QByteArray)) {
        const AliasHandle alias = Alias::fromBytes(lastPlayed.toByteArray());
        FSRef resolved;
        if (alias && FSResolveAlias(*alias, resolved) == noErr) setLastWorldAlias(alias.get());
    }

    if (store->childGroups().contains(QLatin1String(PREF_KEY_KNOWN_WORLDS_ARRAY)))
        extractKnownWorldsFromCFArray(readKnownWorldsArray(*store));

    for (std::size_t i = 0; i < dialogFolders.size(); ++i) {
        const QVariant folder = store->value(QLatin1String(DIALOG_FOLDER_KEYS[i]));
        if (holds(folder, QMetaType::QString)) dialogFolders[i] = folder.toString();
    }
}

void Preferences::savePreferences() {
    const std::unique_ptr<QSettings> store = openStore(settingsFilePath);
    if (!store)
        return;
    store->setValue(QLatin1String(PREF_KEY_MASTER_VOLUME), masterVolume);
    if (lastWorldAlias)
        store->setValue(QLatin1String(PREF_KEY_LAST_PLAYED_ALIAS), lastWorldAlias->toBytes());
    else
        store->remove(QLatin1String(PREF_KEY_LAST_PLAYED_ALIAS));
    // What the background searches found by now is kept; the store never waits for the rest.
    takeSearchFindings();
    closeGapsInKnownWorlds();
    writeKnownWorldsArray(*store, createCFArrayOfKnownWorlds());
    for (std::size_t i = 0; i < dialogFolders.size(); ++i) {
        if (dialogFolders[i].isEmpty()) store->remove(QLatin1String(DIALOG_FOLDER_KEYS[i]));
        else store->setValue(QLatin1String(DIALOG_FOLDER_KEYS[i]), dialogFolders[i]);
    }
    store->sync();
}

}  // namespace sylvora
