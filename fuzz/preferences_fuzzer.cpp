// The preferences store: an INI settings file made from the input, loaded by Preferences, listed in
// a known-worlds menu and saved back. Aliases in it that name the fixture packages resolve, so the
// known-worlds list is really filled, searched, pruned and sorted.

#include <QCoreApplication>
#include <QString>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "core/prefs/knownworldsmenu.h"
#include "core/prefs/preferences.h"
#include "support/scratch.h"

using namespace sylvora;

namespace {

// Counts what is filled in and checks the command IDs are consecutive.
class CheckingMenu final : public KnownWorldsMenu {
public:
    void clear() override { items = 0; }
    void appendItem(const QString&, quint32 commandID, bool) override {
        if (commandID != Preferences::KNOWN_WORLD_COMMAND_BASE + items) {
            std::fprintf(stderr, "menu item %u has command ID %u\n", items, commandID);
            std::abort();
        }
        ++items;
    }
    quint32 items = 0;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    static QCoreApplication app(*argc, *argv);
    fuzz::Scratch::makeFixtures();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Scratch::clear();
    const std::string file = fuzz::Scratch::work() + "/Sylvora.ini";
    if (!fuzz::Scratch::writeFile(file, data, size)) return 0;

    Preferences prefs(QString::fromStdString(file));
    prefs.loadPreferences();
    const int loaded = prefs.getNumKnownWorlds();
    if (loaded < 0 || loaded > Preferences::MAX_KNOWN_WORLDS) std::abort();
    for (int i = 0; i < loaded; ++i)
        if (!prefs.getIndKnownWorldAlias(i)) std::abort();

    CheckingMenu menu;
    prefs.fillMenuWithKnownWorlds(menu, prefs.getLastWorldAlias());
    if (menu.items != static_cast<quint32>(prefs.getNumKnownWorlds())) std::abort();
    prefs.savePreferences();

    // What was saved loads back as the same list.
    Preferences reloaded(QString::fromStdString(file));
    reloaded.loadPreferences();
    if (reloaded.getNumKnownWorlds() != prefs.getNumKnownWorlds()) {
        std::fprintf(stderr, "saved %d known worlds, loaded %d\n", prefs.getNumKnownWorlds(),
                     reloaded.getNumKnownWorlds());
        std::abort();
    }
    return 0;
}
