#include "core/prefs/preferences.h"

#include <QFileInfo>
#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

#include "core/package/packagename.h"
#include "core/prefs/knownworldsearches.h"
#include "core/prefs/knownworldsmenu.h"
#include "core/strings/stringresources.h"

namespace sylvora {

Preferences* gPrefs = nullptr;

Preferences::Preferences() = default;

Preferences::Preferences(QString settingsFilePath_) : settingsFilePath(std::move(settingsFilePath_)) {}

// Out of line for the searches' complete type; the members release everything themselves.
Preferences::~Preferences() = default;

void Preferences::setLastWorldAlias(const Alias* alias) {
    lastWorldAlias = alias ? alias->copy() : nullptr;
}

const Alias* Preferences::getIndKnownWorldAlias(int index) const {
    if (index < 0 || index >= numKnownWorlds) return nullptr;
    return knownWorlds[static_cast<std::size_t>(index)].alias.get();
}

QString Preferences::getIndKnownWorldName(int index) const {
    if (index < 0 || index >= numKnownWorlds) return {};
    return knownWorlds[static_cast<std::size_t>(index)].name;
}

// A record that is not where it was ends the lookup, which never searches the disk for it: the
// searches run in the background (fillMenuWithKnownWorlds), and a gone record is dropped there. A
// record on a drive that is not plugged in is passed over instead: ending there would hide every
// world after it, which would then be added again at every lookup.
int Preferences::findKnownWorld(const FSRef& package) const {
    FileIdentity wanted;
    if (!FSGetObjectIdentity(package, wanted)) return -1;
    for (int i = 0; i < numKnownWorlds; ++i) {
        FSRef resolved;
        const OSStatus status =
            FSResolveAliasWithoutSearch(*knownWorlds[static_cast<std::size_t>(i)].alias, resolved);
        if (status == nsvErr) continue;
        if (status != noErr) return -1;
        FileIdentity identity;
        if (FSGetObjectIdentity(resolved, identity) && identity.device == wanted.device && identity.inode == wanted.inode)
            return i;
    }
    return -1;
}

bool Preferences::isAKnownWorld(const FSRef& package) const { return findKnownWorld(package) >= 0; }

void Preferences::updateKnownWorlds(const Alias* alias, const QString& name) {
    if (!alias) return;
    FSRef package;
    if (FSResolveAliasWithoutSearch(*alias, package) != noErr) return;
    recordKnownWorld(findKnownWorld(package), *alias, package, name);
}

void Preferences::recordKnownWorld(int index, const Alias& alias, const FSRef& package, const QString& name) {
    const auto chosenName = [&]() -> QString {
        if (!name.isEmpty()) return name;
        const QString displayName = copyPackageDisplayName(package);
        return displayName.isEmpty() ? QString() : displayName;
    };

    if (index >= 0) {
        KnownWorld& record = knownWorlds[static_cast<std::size_t>(index)];
        if (!record.name.isNull() && !name.isNull() && record.name == name) return;
        record.name = chosenName();
    } else {
        if (numKnownWorlds >= MAX_KNOWN_WORLDS) return;
        KnownWorld& record = knownWorlds[static_cast<std::size_t>(numKnownWorlds)];
        record.alias = alias.copy();
        record.name = chosenName();
        ++numKnownWorlds;
    }
    knownWorldsNeedSorting = true;
}

void Preferences::removeFromKnownWorlds(int index) {
    if (index < 0 || index >= numKnownWorlds) return;
    std::move(knownWorlds.begin() + index + 1, knownWorlds.begin() + numKnownWorlds, knownWorlds.begin() + index);
    --numKnownWorlds;
    knownWorlds[static_cast<std::size_t>(numKnownWorlds)] = KnownWorld{};
}

void Preferences::clearKnownWorlds() {
    for (KnownWorld& record : knownWorlds) record = KnownWorld{};
    numKnownWorlds = 0;
    knownWorldsNeedSorting = false;
}

int Preferences::sortWorldsQSortComparator(const void* a, const void* b) {
    const QString& first = static_cast<const KnownWorld*>(a)->name;
    const QString& second = static_cast<const KnownWorld*>(b)->name;
    if (first.isNull() && second.isNull()) return 0;
    if (first.isNull()) return -1;
    if (second.isNull()) return 1;
    const int order = QString::compare(first, second, Qt::CaseInsensitive);
    return (order > 0) - (order < 0);
}

// The records own a QString and an alias, which qsort's byte-wise swaps must not move, so qsort
// orders pointers to the records and the records are then moved into that order.
void Preferences::sortKnownWorlds() {
    const auto count = static_cast<std::size_t>(numKnownWorlds);
    std::vector<KnownWorld*> order(count);
    for (std::size_t i = 0; i < count; ++i) order[i] = &knownWorlds[i];
    std::qsort(order.data(), count, sizeof(KnownWorld*), [](const void* a, const void* b) {
        return sortWorldsQSortComparator(*static_cast<KnownWorld* const*>(a), *static_cast<KnownWorld* const*>(b));
    });
    std::vector<KnownWorld> sorted;
    sorted.reserve(count);
    for (KnownWorld* record : order) sorted.push_back(std::move(*record));
    for (std::size_t i = 0; i < count; ++i) knownWorlds[i] = std::move(sorted[i]);
}

namespace {

QString menuTextFor(const KnownWorld& record) {
    if (!record.name.isEmpty()) return record.name;
    const QString fromPath = packageDisplayNameForFileName(QFileInfo(record.alias->recordedPath()).fileName());
    if (!fromPath.isEmpty()) return fromPath;
    return copyLocalizedString(UNTITLED_SAVE_AS_FILENAME_KEY, MISC_STRINGS_FILE);
}

}  // namespace

void Preferences::fillMenuWithKnownWorlds(KnownWorldsMenu& menu, const Alias* currentWorld) {
    FSRef current;
    const bool currentResolved = currentWorld && FSResolveAlias(*currentWorld, current) == noErr;

    takeSearchFindings();
    closeGapsInKnownWorlds();

    // Only a package that is certainly gone is dropped, and only a search can tell that; one that
    // is not at its recorded place stays listed until its search is done, and one on an unmounted
    // volume (any other failure) keeps its record.
    const Alias* checkedAlias = nullptr;
    std::vector<int> missing;
    for (int i = 0; i < numKnownWorlds; ++i) {
        const KnownWorld& record = knownWorlds[static_cast<std::size_t>(i)];
        FSRef resolved;
        const OSStatus status = FSResolveAliasWithoutSearch(*record.alias, resolved);
        if (status == fnfErr) {
            missing.push_back(i);
        } else if (status == noErr && currentResolved && FSCompareFSRefs(resolved, current)) {
            checkedAlias = record.alias.get();
        }
    }
    searchForMissingRecords(missing);

    if (knownWorldsNeedSorting) {
        sortKnownWorlds();
        knownWorldsNeedSorting = false;
    }

    menu.clear();
    for (int i = 0; i < numKnownWorlds; ++i) {
        const KnownWorld& record = knownWorlds[static_cast<std::size_t>(i)];
        menu.appendItem(menuTextFor(record), KNOWN_WORLD_COMMAND_BASE + static_cast<quint32>(i),
                        checkedAlias != nullptr && record.alias.get() == checkedAlias);
    }
}

void Preferences::searchForMissingRecords(const std::vector<int>& indexes) {
    if (!searches) searches = std::make_unique<KnownWorldSearches>();
    if (searches->busy()) return;
    std::vector<KnownWorldSearches::Request> requests;
    for (const int i : indexes) {
        KnownWorld& record = knownWorlds[static_cast<std::size_t>(i)];
        if (record.searchId != 0) continue;
        record.searchId = ++lastSearchId;
        requests.push_back({record.searchId, record.alias->copy()});
    }
    searches->start(std::move(requests));
}

bool Preferences::isListedElsewhere(const Alias& alias, const KnownWorld* except) const {
    FSRef package;
    if (FSResolveAliasWithoutSearch(alias, package) != noErr) return false;
    for (int i = 0; i < numKnownWorlds; ++i) {
        const KnownWorld& record = knownWorlds[static_cast<std::size_t>(i)];
        FSRef resolved;
        if (&record != except && record.alias && FSResolveAliasWithoutSearch(*record.alias, resolved) == noErr &&
            FSCompareFSRefs(resolved, package))
            return true;
    }
    return false;
}

void Preferences::takeSearchFindings() {
    if (!searches) return;
    for (KnownWorldSearches::Finding& finding : searches->takeFindings()) {
        const auto record = std::find_if(knownWorlds.begin(), knownWorlds.begin() + numKnownWorlds,
                                         [&](const KnownWorld& r) { return r.searchId == finding.id; });
        if (record == knownWorlds.begin() + numKnownWorlds) continue;  // removed meanwhile
        switch (finding.outcome) {
        case KnownWorldSearches::Outcome::found: {
            // The package may have been listed again at its new place while it was searched for.
            if (isListedElsewhere(*finding.alias, &*record)) {
                record->alias.reset();
                record->name = QString();
            } else {
                record->alias = std::move(finding.alias);
            }
            break;
        }
        case KnownWorldSearches::Outcome::gone:
            record->alias.reset();
            record->name = QString();
            break;
        case KnownWorldSearches::Outcome::unresolved:
            break;
        case KnownWorldSearches::Outcome::notReached:
            record->searchId = 0;  // the next batch tries it
            break;
        }
    }
}

void Preferences::waitForKnownWorldSearches() {
    if (searches) searches->waitUntilFinished();
}

void Preferences::closeGapsInKnownWorlds() {
    int kept = 0;
    for (int i = 0; i < numKnownWorlds; ++i) {
        KnownWorld& record = knownWorlds[static_cast<std::size_t>(i)];
        if (!record.alias) continue;
        if (kept != i) knownWorlds[static_cast<std::size_t>(kept)] = std::move(record);
        ++kept;
    }
    for (int i = kept; i < numKnownWorlds; ++i) {
        knownWorlds[static_cast<std::size_t>(i)] = KnownWorld{};
    }
    numKnownWorlds = kept;
}

}  // namespace sylvora
