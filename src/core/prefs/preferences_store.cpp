// Reading and writing the preferences store, and the stored form of the known worlds list.

#include <QFile>
#include <QSettings>
#include <QStandardPaths>
#include <QVariantMap>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/prefs/preferences.h"

namespace sylvora {

namespace {

constexpr const char* ORGANIZATION_NAME = "Sylvora";
constexpr const char* APPLICATION_NAME = "Sylvora";

// The file's text as QSettings reads its values: escapes decoded (\x and octal ones of any length,
// kept to 16 bits as Qt keeps them, the named ones), unknown escapes and line continuations dropped,
// quotes removed. Keys and section headers pass through it too, which can only find more.
std::u16string unescapedAsQSettingsReadsValues(const QByteArray& text) {
    std::u16string result;
    result.reserve(static_cast<std::size_t>(text.size()));
    const auto digit = [](char ch, int base) {
        const int value = ch >= '0' && ch <= '9'   ? ch - '0'
                          : ch >= 'a' && ch <= 'f' ? ch - 'a' + 10
                          : ch >= 'A' && ch <= 'F' ? ch - 'A' + 10
                                                   : 99;
        return value < base ? value : -1;
    };
    const qsizetype size = text.size();
    for (qsizetype at = 0; at < size;) {
        const char ch = text[at++];
        if (ch == '"')
            continue;
        if (ch != '\\') {
            result += static_cast<char16_t>(static_cast<unsigned char>(ch));
            continue;
        }
        if (at >= size)
            break;
        const char code = text[at++];
        static constexpr char NAMED[][2] = {{'a', '\a'}, {'b', '\b'}, {'f', '\f'}, {'n', '\n'}, {'r', '\r'}, {'t', '\t'},
                                            {'v', '\v'}, {'"', '"'},   {'?', '?'},   {'\'', '\''}, {'\\', '\\'}};
        const auto named = std::find_if(std::begin(NAMED), std::end(NAMED), [&](const char* pair) { return pair[0] == code; });
        if (named != std::end(NAMED)) {
            result += static_cast<char16_t>((*named)[1]);
            continue;
        }
        const int base = code == 'x' ? 16 : digit(code, 8) >= 0 ? 8 : 0;
        if (base == 0 || (base == 16 && (at >= size || digit(text[at], 16) < 0))) {
            if ((code == '\n' || code == '\r') && at < size && (text[at] == '\n' || text[at] == '\r') && text[at] != code)
                ++at;  // a continued line's \r\n or \n\r
            continue;
        }
        char16_t value = base == 8 ? static_cast<char16_t>(digit(code, 8)) : 0;
        for (int next = 0; at < size && (next = digit(text[at], base)) >= 0; ++at)
            value = static_cast<char16_t>(value * base + next);
        result += value;
    }
    return result;
}

// Whether QSettings would turn a value of `text` back into an object through QDataStream: a value
// (or an element of a list) that reads as "@Variant(" or "@DateTime(" once unescaped; this store
// writes a text's leading "@" as "@@".
bool holdsDecodedValues(const QByteArray& text) {
    const std::u16string unescaped = unescapedAsQSettingsReadsValues(text);
    for (const std::u16string_view form : {std::u16string_view(u"@Variant("), std::u16string_view(u"@DateTime(")}) {
        for (std::size_t at = unescaped.find(form); at != std::u16string::npos; at = unescaped.find(form, at + 1)) {
            if (at == 0 || unescaped[at - 1] != u'@')
                return true;
        }
    }
    return false;
}

// QDataStream believes the lengths it reads, so one damaged "@Variant(" value can make QSettings
// ask for gigabytes as it opens the file. This store never writes such values: a file holding one
// was not written by it, and it is set aside whole (".damaged" added to its name) so that the
// preferences start afresh and nothing in it is lost. Null when it had to be set aside and could
// not be.
std::unique_ptr<QSettings> openStore(const QString& settingsFilePath) {
    const QString path = settingsFilePath.isEmpty() ? Preferences::defaultSettingsFilePath() : settingsFilePath;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly) && holdsDecodedValues(file.readAll())) {
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
    for (const QVariant& item : array) {
        if (!holds(item, QMetaType::QVariantMap)) continue;
        const QVariantMap element = item.toMap();
        const QVariant name = element.value(QLatin1String(PREF_KEY_KNOWN_WORLD_NAME));
        const QVariant aliasData = element.value(QLatin1String(PREF_KEY_KNOWN_WORLD_ALIAS));
        if (!holds(aliasData, QMetaType::QByteArray)) continue;
        const AliasHandle alias = Alias::fromBytes(aliasData.toByteArray());
        if (!alias) continue;
        const QString storedName = holds(name, QMetaType::QString) ? name.toString() : QString();
        FSRef resolved;
        if (FSResolveAlias(*alias, resolved) == nsvErr && numKnownWorlds < MAX_KNOWN_WORLDS) {
            // A world on a drive that is not plugged in stays known, under its stored name, until
            // the drive comes back; only a package that is gone leaves the list.
            knownWorlds[static_cast<std::size_t>(numKnownWorlds++)] = KnownWorld{alias->copy(), storedName};
            knownWorldsNeedSorting = true;
            continue;
        }
        updateKnownWorlds(alias.get(), storedName);
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
    writeKnownWorldsArray(*store, createCFArrayOfKnownWorlds());
    store->sync();
}

}  // namespace sylvora
