#pragma once

// What the application remembers between runs: the master volume, the world open at the last
// quit, and the known worlds (every package opened, saved or listed, with the name to show).
//
// Lifecycle: construct (reads nothing) -> loadPreferences() once at start-up -> the list changes
// in memory only while the application runs -> savePreferences() once at quit -> destroy.
// The store is a QSettings INI file, by default under the user's XDG config folder
// (Sylvora/Sylvora.ini); nothing is written except by savePreferences(). Main thread only.

#include <QString>
#include <QVariantList>
#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "core/files/alias.h"

namespace sylvora {

class KnownWorldsMenu;
class KnownWorldSearches;

struct KnownWorld {
    AliasHandle alias;  // never null in a stored record
    QString name;       // null when no name could be had
    // Non-zero once the record was handed to a search in this run: it is not searched for twice.
    std::uint64_t searchId = 0;
};

class Preferences {
public:
    static constexpr int MAX_KNOWN_WORLDS = 200;
    static constexpr quint32 KNOWN_WORLD_COMMAND_BASE = 0x5A5A5A5A;  // "ZZZZ"

    static constexpr const char* PREF_KEY_MASTER_VOLUME = "Master Volume";
    static constexpr const char* PREF_KEY_LAST_PLAYED_ALIAS = "Last Played";
    static constexpr const char* PREF_KEY_KNOWN_WORLDS_ARRAY = "Known Worlds";
    static constexpr const char* PREF_KEY_KNOWN_WORLD_NAME = "Known World Name";
    static constexpr const char* PREF_KEY_KNOWN_WORLD_ALIAS = "Known World Alias";

    // Stores in the user's XDG config folder, in defaultSettingsFilePath().
    Preferences();
    // $XDG_CONFIG_HOME/Sylvora/Sylvora.ini, where QSettings keeps the INI file of this
    // organization and application (found without opening it).
    static QString defaultSettingsFilePath();
    // Stores in the INI file at `settingsFilePath` instead (tests, portable setups).
    explicit Preferences(QString settingsFilePath);
    ~Preferences();
    Preferences(const Preferences&) = delete;
    Preferences& operator=(const Preferences&) = delete;

    void loadPreferences();
    void savePreferences();

    double getMasterVolume() const { return masterVolume; }
    void setMasterVolume(double value) { masterVolume = value; }  // unclamped, as given
    const Alias* getLastWorldAlias() const { return lastWorldAlias.get(); }
    void setLastWorldAlias(const Alias* alias);

    int getNumKnownWorlds() const { return numKnownWorlds; }
    const Alias* getIndKnownWorldAlias(int index) const;
    // The stored name of the record at `index`; a null string for a bad index or a null name.
    QString getIndKnownWorldName(int index) const;
    bool isAKnownWorld(const FSRef& package) const;
    void updateKnownWorlds(const Alias* alias, const QString& name);
    void removeFromKnownWorlds(int index);
    void clearKnownWorlds();

    // Drops the records of deleted packages, sorts when the list changed, and lists every record
    // as item i with command ID KNOWN_WORLD_COMMAND_BASE + i; the current world's item is checked.
    // A record without a name is shown under the display name of the package its alias recorded.
    // It never searches the disk: a package no longer at its recorded place stays listed while a
    // search runs in the background, and what that found is taken in at the next call.
    void fillMenuWithKnownWorlds(KnownWorldsMenu& menu, const Alias* currentWorld);
    // Waits for the background searches started by fillMenuWithKnownWorlds (benchmarks and tests).
    void waitForKnownWorldSearches();

    // The folder each file dialog showed last, kept apart per dialog; empty before the first.
    enum class DialogFolder { Open, SaveAs, Sounds, Picture };
    QString getDialogFolder(DialogFolder dialog) const { return dialogFolders[static_cast<std::size_t>(dialog)]; }
    void setDialogFolder(DialogFolder dialog, const QString& folder) {
        dialogFolders[static_cast<std::size_t>(dialog)] = folder;
    }

    // qsort order of two KnownWorld records: records without a name first, then names compared
    // without regard to case.
    static int sortWorldsQSortComparator(const void* a, const void* b);

    // The stored form of the list: one QVariantMap per record, in list order.
    QVariantList createCFArrayOfKnownWorlds() const;
    void extractKnownWorldsFromCFArray(const QVariantList& array);

private:
    // The position of `package` in the list by the search rule, or -1.
    int findKnownWorld(const FSRef& package) const;
    // Names the record at `index` (-1: adds one for `package`, if there is room), as updateKnownWorlds.
    void recordKnownWorld(int index, const Alias& alias, const FSRef& package, const QString& name);
    void sortKnownWorlds();
    // Takes in what the background searches found: moved packages are followed, gone ones dropped.
    void takeSearchFindings();
    bool isListedElsewhere(const Alias& alias, const KnownWorld* except) const;
    void searchForMissingRecords(const std::vector<int>& indexes);
    void closeGapsInKnownWorlds();

    double masterVolume = 1.0;
    AliasHandle lastWorldAlias;
    std::array<KnownWorld, MAX_KNOWN_WORLDS> knownWorlds;
    std::int32_t numKnownWorlds = 0;
    bool knownWorldsNeedSorting = false;
    std::array<QString, 4> dialogFolders;

    QString settingsFilePath;  // empty: the XDG location
    std::unique_ptr<KnownWorldSearches> searches;
    std::uint64_t lastSearchId = 0;
};

// The application's one Preferences; null until the application creates it.
extern Preferences* gPrefs;

}  // namespace sylvora
