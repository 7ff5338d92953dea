#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QSettings>
#include <vector>

#include "core/prefs/knownworldsearches.h"
#include "core/prefs/knownworldsmenu.h"
#include "core/prefs/preferences.h"
#include "support/tempdir.h"

namespace sylvora {
namespace {

struct MenuItem {
    QString text;
    quint32 commandID;
    bool checked;
    bool operator==(const MenuItem&) const = default;
};

std::ostream& operator<<(std::ostream& out, const MenuItem& item) {
    return out << '{' << item.text.toStdString() << ", " << std::hex << item.commandID << std::dec << ", "
               << item.checked << '}';
}

class RecordingMenu : public KnownWorldsMenu {
public:
    void clear() override { items.clear(); }
    void appendItem(const QString& text, quint32 commandID, bool checked) override {
        items.push_back({text, commandID, checked});
    }
    std::vector<MenuItem> items{{QStringLiteral("stale item"), 1, true}};
};

constexpr quint32 ZZZZ = 0x5A5A5A5A;

class PreferencesTest : public ::testing::Test {
protected:
    QString settingsFile() const { return dir.filePath(QStringLiteral("Sylvora.ini")); }

    // A world package folder; returns its alias.
    AliasHandle package(const QString& name) {
        const QString path = dir.makeDir(name);
        AliasHandle alias;
        EXPECT_EQ(FSNewAlias(test::refOf(path), alias), noErr);
        return alias;
    }

    std::vector<QString> names(const Preferences& prefs) const {
        std::vector<QString> out;
        for (int i = 0; i < prefs.getNumKnownWorlds(); ++i) out.push_back(prefs.getIndKnownWorldName(i));
        return out;
    }

    test::TempDir dir;
};

TEST_F(PreferencesTest, EverythingSurvivesARoundTripThroughTheStore) {
    const AliasHandle rain = package(QStringLiteral("Rain.sylvora"));
    const AliasHandle alps = package(QStringLiteral("Alps.sylvora"));
    {
        Preferences prefs(settingsFile());
        prefs.loadPreferences();
        prefs.setMasterVolume(0.25);
        prefs.setLastWorldAlias(rain.get());
        prefs.updateKnownWorlds(rain.get(), QStringLiteral("Regen, am Abend"));
        prefs.updateKnownWorlds(alps.get(), QString());
        EXPECT_FALSE(QFile::exists(settingsFile())) << "nothing is written before the save";
        prefs.savePreferences();
    }
    Preferences loaded(settingsFile());
    EXPECT_EQ(loaded.getMasterVolume(), 1.0);  // nothing is read before loadPreferences
    loaded.loadPreferences();
    EXPECT_EQ(loaded.getMasterVolume(), 0.25);
    ASSERT_NE(loaded.getLastWorldAlias(), nullptr);
    FSRef resolved;
    ASSERT_EQ(FSResolveAlias(*loaded.getLastWorldAlias(), resolved), noErr);
    EXPECT_TRUE(FSCompareFSRefs(resolved, test::refOf(dir.filePath(QStringLiteral("Rain.sylvora")))));
    EXPECT_EQ(names(loaded), (std::vector<QString>{QStringLiteral("Regen, am Abend"), QStringLiteral("Alps")}));

    // The name is stored only when it is not empty; the alias always.
    QSettings raw(settingsFile(), QSettings::IniFormat);
    ASSERT_EQ(raw.beginReadArray(QStringLiteral("Known Worlds")), 2);
    raw.setArrayIndex(0);
    EXPECT_EQ(raw.value(QStringLiteral("Known World Name")).toString(), QStringLiteral("Regen, am Abend"));
    EXPECT_EQ(raw.value(QStringLiteral("Known World Alias")).toByteArray(), rain->toBytes());
}

TEST_F(PreferencesTest, StoredValuesAreTakenAsTheyAreOrDropped) {
    const AliasHandle rain = package(QStringLiteral("Rain.sylvora"));
    {
        QSettings raw(settingsFile(), QSettings::IniFormat);
        raw.setValue(QStringLiteral("Master Volume"), 1.5);
        raw.setValue(QStringLiteral("Last Played"), QByteArray("not an alias"));
        raw.beginWriteArray(QStringLiteral("Known Worlds"));
        raw.setArrayIndex(0);
        raw.setValue(QStringLiteral("Known World Name"), QStringLiteral("Broken"));
        raw.setValue(QStringLiteral("Known World Alias"), rain->toBytes().left(20));
        raw.setArrayIndex(1);
        raw.setValue(QStringLiteral("Known World Alias"), rain->toBytes() + QByteArray("x"));
        raw.setArrayIndex(2);
        raw.setValue(QStringLiteral("Known World Name"), QStringLiteral("No alias"));
        raw.setArrayIndex(3);
        raw.setValue(QStringLiteral("Known World Alias"), QStringLiteral("text, not data"));
        raw.setArrayIndex(4);
        raw.setValue(QStringLiteral("Known World Alias"), rain->toBytes());
        raw.endArray();
    }
    Preferences prefs(settingsFile());
    prefs.loadPreferences();
    EXPECT_EQ(prefs.getMasterVolume(), 1.5);  // clamping belongs to the world
    EXPECT_EQ(prefs.getLastWorldAlias(), nullptr);
    // Only the intact record stays, named after its package since it had no name stored.
    EXPECT_EQ(names(prefs), std::vector<QString>{QStringLiteral("Rain")});

    {
        QSettings raw(settingsFile(), QSettings::IniFormat);
        raw.setValue(QStringLiteral("Master Volume"), QStringLiteral("loud"));
    }
    Preferences garbled(settingsFile());
    garbled.loadPreferences();
    EXPECT_EQ(garbled.getMasterVolume(), 1.0);
}

TEST_F(PreferencesTest, LastPlayedIsRemovedWhenThereIsNoLastWorld) {
    const AliasHandle rain = package(QStringLiteral("Rain.sylvora"));
    Preferences prefs(settingsFile());
    prefs.setLastWorldAlias(rain.get());
    prefs.savePreferences();
    EXPECT_TRUE(QSettings(settingsFile(), QSettings::IniFormat).contains(QStringLiteral("Last Played")));

    prefs.setLastWorldAlias(nullptr);
    prefs.savePreferences();
    EXPECT_FALSE(QSettings(settingsFile(), QSettings::IniFormat).contains(QStringLiteral("Last Played")));

    // A last world whose package is gone is not reopened.
    prefs.setLastWorldAlias(rain.get());
    prefs.savePreferences();
    ASSERT_TRUE(QDir(dir.filePath(QStringLiteral("Rain.sylvora"))).removeRecursively());
    Preferences later(settingsFile());
    later.loadPreferences();
    EXPECT_EQ(later.getLastWorldAlias(), nullptr);
}

TEST_F(PreferencesTest, OnePackageIsOneRecordWhoseNameFollowsTheWorld) {
    const AliasHandle rain = package(QStringLiteral("Rain.sylvora"));
    const AliasHandle beach = package(QStringLiteral("Beach.sylvora"));
    Preferences prefs(settingsFile());
    prefs.updateKnownWorlds(rain.get(), QString());
    prefs.updateKnownWorlds(beach.get(), QStringLiteral("beach"));
    prefs.updateKnownWorlds(rain.get(), QString());
    ASSERT_EQ(prefs.getNumKnownWorlds(), 2);
    EXPECT_TRUE(prefs.isAKnownWorld(test::refOf(dir.filePath(QStringLiteral("Rain.sylvora")))));

    RecordingMenu menu;
    prefs.fillMenuWithKnownWorlds(menu, nullptr);
    EXPECT_EQ(menu.items, (std::vector<MenuItem>{{QStringLiteral("beach"), ZZZZ, false},
                                                 {QStringLiteral("Rain"), ZZZZ + 1, false}}));

    // Naming the world re-sorts the list the next time the menu opens, without regard to case.
    prefs.updateKnownWorlds(rain.get(), QStringLiteral("Alps"));
    prefs.fillMenuWithKnownWorlds(menu, beach.get());
    EXPECT_EQ(menu.items, (std::vector<MenuItem>{{QStringLiteral("Alps"), ZZZZ, false},
                                                 {QStringLiteral("beach"), ZZZZ + 1, true}}));
    ASSERT_NE(prefs.getIndKnownWorldAlias(1), nullptr);
    EXPECT_EQ(prefs.getIndKnownWorldAlias(1)->recordedPath(), beach->recordedPath());
    EXPECT_EQ(prefs.getIndKnownWorldAlias(2), nullptr);
    EXPECT_EQ(prefs.getIndKnownWorldAlias(-1), nullptr);
}

TEST_F(PreferencesTest, DeletedPackagesLeaveTheMenuAndIdsCloseUp) {
    Preferences prefs(settingsFile());
    const QStringList worlds{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C"), QStringLiteral("D")};
    std::vector<AliasHandle> aliases;
    for (const QString& name : worlds) {
        aliases.push_back(package(name + QStringLiteral(".sylvora")));
        prefs.updateKnownWorlds(aliases.back().get(), name);
    }
    RecordingMenu menu;
    prefs.fillMenuWithKnownWorlds(menu, aliases[3].get());
    ASSERT_EQ(menu.items.size(), 4u);

    // Made first: a folder made after a deletion could be given the deleted package's inode.
    dir.makeDir(QStringLiteral("holder"));
    ASSERT_TRUE(QDir(dir.filePath(QStringLiteral("B.sylvora"))).removeRecursively());

    // The menu never waits for the search that tells a deleted package from a moved one: the
    // package stays listed until the search in the background is done, and leaves the next time.
    prefs.fillMenuWithKnownWorlds(menu, aliases[3].get());
    ASSERT_EQ(menu.items.size(), 4u);
    EXPECT_EQ(menu.items[3], (MenuItem{QStringLiteral("D"), ZZZZ + 3, true}));
    prefs.waitForKnownWorldSearches();
    prefs.fillMenuWithKnownWorlds(menu, aliases[3].get());
    EXPECT_EQ(menu.items, (std::vector<MenuItem>{{QStringLiteral("A"), ZZZZ, false},
                                                 {QStringLiteral("C"), ZZZZ + 1, false},
                                                 {QStringLiteral("D"), ZZZZ + 2, true}}));
    EXPECT_EQ(prefs.getIndKnownWorldAlias(2)->recordedPath(), aliases[3]->recordedPath());

    // A record that cannot be resolved for another reason than "gone" stays listed.
    const QString blockedParent = dir.makeDir(QStringLiteral("blocked"));
    const AliasHandle blocked = package(QStringLiteral("blocked/E.sylvora"));
    prefs.updateKnownWorlds(blocked.get(), QStringLiteral("E"));
    ASSERT_TRUE(QDir(blockedParent).removeRecursively());
    dir.writeFile(QStringLiteral("blocked"), QByteArray("a file where a folder was"));
    prefs.fillMenuWithKnownWorlds(menu, nullptr);
    prefs.waitForKnownWorldSearches();
    prefs.fillMenuWithKnownWorlds(menu, nullptr);
    EXPECT_EQ(menu.items, (std::vector<MenuItem>{{QStringLiteral("A"), ZZZZ, false},
                                                 {QStringLiteral("C"), ZZZZ + 1, false},
                                                 {QStringLiteral("D"), ZZZZ + 2, false},
                                                 {QStringLiteral("E"), ZZZZ + 3, false}}));
}

TEST_F(PreferencesTest, MovedPackagesAreFoundInTheBackgroundAndWhatWasFoundIsSaved) {
    Preferences prefs(settingsFile());
    const AliasHandle moved = package(QStringLiteral("Moved.sylvora"));
    const AliasHandle gone = package(QStringLiteral("Gone.sylvora"));
    const AliasHandle kept = package(QStringLiteral("Kept.sylvora"));
    for (const AliasHandle* alias : {&moved, &gone, &kept}) prefs.updateKnownWorlds(alias->get(), QString());
    const QString archive = dir.makeDir(QStringLiteral("Archive"));
    ASSERT_TRUE(QDir().rename(dir.filePath(QStringLiteral("Moved.sylvora")), archive + QStringLiteral("/Moved.sylvora")));
    ASSERT_TRUE(QDir(dir.filePath(QStringLiteral("Gone.sylvora"))).removeRecursively());

    RecordingMenu menu;
    prefs.fillMenuWithKnownWorlds(menu, nullptr);
    EXPECT_EQ(menu.items.size(), 3u);
    // A lookup never searches: the first record not at its place ends it until the search is done.
    EXPECT_FALSE(prefs.isAKnownWorld(test::refOf(dir.filePath(QStringLiteral("Kept.sylvora")))));

    // The store takes what the search found without a menu being shown again.
    prefs.waitForKnownWorldSearches();
    prefs.savePreferences();
    Preferences loaded(settingsFile());
    loaded.loadPreferences();
    ASSERT_EQ(loaded.getNumKnownWorlds(), 2);
    EXPECT_EQ(names(loaded), (std::vector<QString>{QStringLiteral("Kept"), QStringLiteral("Moved")}));
    EXPECT_EQ(loaded.getIndKnownWorldAlias(1)->recordedPath(), archive + QStringLiteral("/Moved.sylvora"));
    EXPECT_TRUE(loaded.isAKnownWorld(test::refOf(dir.filePath(QStringLiteral("Kept.sylvora")))));
    EXPECT_TRUE(loaded.isAKnownWorld(test::refOf(archive + QStringLiteral("/Moved.sylvora"))));
}

// A batch is busy from its start until its findings are taken; a batch started meanwhile is
// ignored, so that a menu shown again never waits for the search before it.
TEST_F(PreferencesTest, ASearchIsBusyFromItsStartUntilWhatItFoundIsTaken) {
    KnownWorldSearches searches;
    std::vector<KnownWorldSearches::Request> first;
    first.push_back({1, package(QStringLiteral("Moved.sylvora"))});
    ASSERT_TRUE(QDir().rename(dir.filePath(QStringLiteral("Moved.sylvora")), dir.makeDir(QStringLiteral("Archive")) + "/Moved.sylvora"));
    std::vector<KnownWorldSearches::Request> second;
    second.push_back({2, package(QStringLiteral("Kept.sylvora"))});
    searches.start(std::move(first));
    EXPECT_TRUE(searches.busy());
    searches.start(std::move(second));
    searches.waitUntilFinished();
    EXPECT_TRUE(searches.busy());
    const auto findings = searches.takeFindings();
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].id, 1u);
    EXPECT_EQ(findings[0].outcome, KnownWorldSearches::Outcome::found);
    EXPECT_FALSE(searches.busy());
}

TEST_F(PreferencesTest, SearchStopsAtTheFirstRecordThatDoesNotResolve) {
    Preferences prefs(settingsFile());
    const AliasHandle gone = package(QStringLiteral("Gone.sylvora"));
    const AliasHandle kept = package(QStringLiteral("Kept.sylvora"));
    prefs.updateKnownWorlds(gone.get(), QStringLiteral("Gone"));
    prefs.updateKnownWorlds(kept.get(), QStringLiteral("Kept"));
    ASSERT_TRUE(QDir(dir.filePath(QStringLiteral("Gone.sylvora"))).removeRecursively());
    EXPECT_FALSE(prefs.isAKnownWorld(test::refOf(dir.filePath(QStringLiteral("Kept.sylvora")))));
}

TEST_F(PreferencesTest, TheListHoldsAtMostTwoHundredWorlds) {
    Preferences prefs(settingsFile());
    std::vector<AliasHandle> aliases;
    for (int i = 0; i <= Preferences::MAX_KNOWN_WORLDS; ++i) {
        aliases.push_back(package(QStringLiteral("World %1.sylvora").arg(i)));
        prefs.updateKnownWorlds(aliases.back().get(), QString());
    }
    EXPECT_EQ(prefs.getNumKnownWorlds(), Preferences::MAX_KNOWN_WORLDS);
    EXPECT_FALSE(prefs.isAKnownWorld(test::refOf(dir.filePath(QStringLiteral("World 200.sylvora")))));
    // A listed world is still renamed when the list is full.
    prefs.updateKnownWorlds(aliases[7].get(), QStringLiteral("Seven"));
    prefs.savePreferences();

    Preferences loaded(settingsFile());
    loaded.loadPreferences();
    EXPECT_EQ(loaded.getNumKnownWorlds(), Preferences::MAX_KNOWN_WORLDS);
    RecordingMenu menu;
    loaded.fillMenuWithKnownWorlds(menu, aliases[7].get());
    ASSERT_EQ(menu.items.size(), 200u);
    EXPECT_EQ(menu.items.back(), (MenuItem{QStringLiteral("World 99"), ZZZZ + 199, false}));
    int checked = 0;
    for (const MenuItem& item : menu.items) checked += item.checked ? 1 : 0;
    EXPECT_EQ(checked, 1);
}

TEST_F(PreferencesTest, ListConversionKeepsOrderAndSkipsMalformedElements) {
    const AliasHandle rain = package(QStringLiteral("Rain.sylvora"));
    const AliasHandle beach = package(QStringLiteral("Beach.sylvora"));
    Preferences prefs(settingsFile());
    prefs.updateKnownWorlds(rain.get(), QStringLiteral("Rain"));
    prefs.updateKnownWorlds(beach.get(), QStringLiteral("Beach"));
    QVariantList array = prefs.createCFArrayOfKnownWorlds();
    ASSERT_EQ(array.size(), 2);
    EXPECT_EQ(array[0].toMap().value(QStringLiteral("Known World Name")).toString(), QStringLiteral("Rain"));

    array.prepend(QStringLiteral("not a dictionary"));
    array.append(QVariantMap{{QStringLiteral("Known World Alias"), QStringLiteral("not data")}});
    array.append(array[1]);  // the same package twice is one record

    Preferences other(settingsFile());
    other.extractKnownWorldsFromCFArray(array);
    EXPECT_EQ(names(other), (std::vector<QString>{QStringLiteral("Rain"), QStringLiteral("Beach")}));
    other.clearKnownWorlds();
    EXPECT_EQ(other.getNumKnownWorlds(), 0);
    other.removeFromKnownWorlds(0);  // nothing to remove
    prefs.removeFromKnownWorlds(0);
    EXPECT_EQ(names(prefs), std::vector<QString>{QStringLiteral("Beach")});

    // A world stored twice behind one that is gone is still one record.
    ASSERT_TRUE(QDir(dir.filePath(QStringLiteral("Rain.sylvora"))).removeRecursively());
    Preferences partly(settingsFile());
    partly.extractKnownWorldsFromCFArray(QVariantList{array[1], array[2], array[2]});
    EXPECT_EQ(names(partly), (std::vector<QString>{QStringLiteral("Rain"), QStringLiteral("Beach")}));

    // Worlds that are not where they were are read without a search, kept, and still one each.
    ASSERT_TRUE(QDir(dir.filePath(QStringLiteral("Beach.sylvora"))).removeRecursively());
    Preferences gone(settingsFile());
    gone.extractKnownWorldsFromCFArray(array);
    EXPECT_EQ(names(gone), (std::vector<QString>{QStringLiteral("Rain"), QStringLiteral("Beach")}));
}

TEST_F(PreferencesTest, RecordsSortNamelessFirstThenByNameWithoutRegardToCase) {
    const auto order = [](const QString& a, const QString& b) {
        const KnownWorld first{nullptr, a};
        const KnownWorld second{nullptr, b};
        return Preferences::sortWorldsQSortComparator(&first, &second);
    };
    EXPECT_EQ(order(QStringLiteral("rain"), QStringLiteral("Rain")), 0);
    EXPECT_EQ(order(QString(), QString()), 0);
    EXPECT_EQ(order(QString(), QStringLiteral("Alps")), -1);
    EXPECT_EQ(order(QStringLiteral("Alps"), QString()), 1);
    EXPECT_EQ(order(QStringLiteral("beach"), QStringLiteral("Cove")), -1);
    EXPECT_EQ(order(QStringLiteral("Cove"), QStringLiteral("beach")), 1);
}

// QSettings decodes "@Variant(" values through QDataStream, which trusts the lengths it reads; a
// file holding one is not ours, and is kept whole beside its place while the preferences start
// afresh. World names that merely start that way, or hold it (Qt writes a name with a NUL in it as
// "@String(...)"), are text and stay.
TEST_F(PreferencesTest, AFileHoldingSerializedValuesIsSetAsideWhole) {
    const AliasHandle rain = package(QStringLiteral("Rain.sylvora"));
    const AliasHandle beach = package(QStringLiteral("Beach.sylvora"));
    const QString nulNamed = QStringLiteral("@Variant(Beach") + QChar(0) + QLatin1Char(')');
    {
        Preferences prefs(settingsFile());
        prefs.updateKnownWorlds(rain.get(), QStringLiteral("@Variant(Rain)"));
        prefs.updateKnownWorlds(beach.get(), nulNamed);
        prefs.savePreferences();
    }
    Preferences named(settingsFile());
    named.loadPreferences();
    EXPECT_EQ(names(named), (std::vector<QString>{QStringLiteral("@Variant(Rain)"), nulNamed}));
    EXPECT_FALSE(QFile::exists(settingsFile() + QStringLiteral(".damaged")));

    // A QString of four gigabytes announced, then nothing: with a plain "@", after blanks, an escaped
    // one, one whose escape runs on past its first digits, one split by an escape that reads as
    // nothing, in quotes, split by a closing quote and spaces, as a list's element, over a continued
    // line (with either line ending), and with a letter escaped in upper- or lower-case hexadecimal.
    const QByteArray announced = R"((\0\0\0\n\0\xff\xff\xff\xf0))";
    for (const QByteArray& value :
         {"@Variant" + announced, " \t@Variant" + announced, "\\x40Variant" + announced, "\\0000100Variant" + announced,
          "@\\qVariant" + announced, "\"@Variant" + announced + '"', "\"@\"  Variant" + announced, "x, @Variant" + announced,
          "@Vari\\\nant" + announced, "@Vari\\\n\rant" + announced, "@Vari\\\r\nant" + announced,
          "@Varia\\x6Et" + announced, "@Varia\\x6et" + announced}) {
        SCOPED_TRACE(value.toStdString());
        QFile file(settingsFile());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Append));
        const QByteArray damaged = "[General]\nMaster%20Volume=" + value + "\n";
        file.write(damaged);
        file.close();
        file.open(QIODevice::ReadOnly);
        const QByteArray before = file.readAll();
        file.close();

        Preferences prefs(settingsFile());
        prefs.loadPreferences();
        EXPECT_EQ(prefs.getNumKnownWorlds(), 0);
        EXPECT_EQ(prefs.getMasterVolume(), 1.0);
        EXPECT_FALSE(QFile::exists(settingsFile()));
        QFile aside(settingsFile() + QStringLiteral(".damaged"));
        ASSERT_TRUE(aside.open(QIODevice::ReadOnly));
        EXPECT_EQ(aside.readAll(), before);

        prefs.setMasterVolume(0.5);
        prefs.savePreferences();
        Preferences reloaded(settingsFile());
        reloaded.loadPreferences();
        EXPECT_EQ(reloaded.getMasterVolume(), 0.5);
    }
    // Under an empty key on the file's very first line, which QSettings reads all the same; but not
    // in a comment, which it does not read, nor with a blank inside, which makes it plain text.
    struct Case {
        QByteArray line;
        bool kept;
        double volume;
    };
    for (const Case& c : {Case{"=@Variant", false, 1.0}, Case{"Master%20Volume=0.25 ;@Variant", true, 0.25},
                          Case{"Master%20Volume=@ Variant", true, 1.0}}) {
        SCOPED_TRACE(c.line.toStdString());
        QFile file(settingsFile());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(c.line + announced + "\n");
        file.close();
        Preferences prefs(settingsFile());
        prefs.loadPreferences();
        EXPECT_EQ(QFile::exists(settingsFile()), c.kept);
        EXPECT_EQ(prefs.getMasterVolume(), c.volume);
    }
}

}  // namespace
}  // namespace sylvora
