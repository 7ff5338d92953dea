// The package loader on a package folder made from the input (data.plist as XML or binary, sound
// files, a picture), then a few seconds of playback of whatever loaded, so that fuzzed volumes,
// intervals, groups and crossfades reach the scheduler as well.

#include <QCoreApplication>
#include <cstdint>
#include <cstdlib>

#include "audio/engine/engine.h"
#include "core/prefs/preferences.h"
#include "core/render/offlinerenderer.h"
#include "core/strings/stringresources.h"
#include "core/time/virtualeventloop.h"
#include "core/world/world.h"
#include "support/packagebundle.h"
#include "support/scratch.h"

using namespace sylvora;

namespace {

constexpr int RENDER_RATE = 8000;
constexpr double RENDER_SECONDS = 1.0;

void check(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "invariant broken: %s\n", what);
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    static QCoreApplication app(*argc, *argv);
    installStringTables();
    fuzz::Scratch::makeFixtures();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Scratch::clear();
    const std::string package = fuzz::Scratch::work() + "/World.sylvora";
    if (!fuzz::PackageBundle::write(package, fuzz::PackageBundle::unpack(data, size))) return 0;

    Preferences prefs(QString::fromStdString(fuzz::Scratch::work() + "/prefs.ini"));
    gPrefs = &prefs;
    {
        // One engine for the whole run, as the application has: what a world leaves in it is part
        // of what the next input meets.
        static audio::Engine engine(RENDER_RATE);
        VirtualEventLoop loop;
        World world(engine, loop, 1u);
        FSRef ref;
        check(FSPathMakeRef(QString::fromStdString(package), ref) == noErr, "package folder reachable");
        const OSStatus status = world.loadFromPackage(ref);
        check(!world.getModified(), "a loaded world is unmodified");
        check(world.getNumLoopSounds() <= World::MAX_LOOP_SOUNDS, "loop sound table bounded");
        check(world.getNumEnvironmentSounds() <= World::MAX_ENVIRONMENT_SOUNDS, "environment table bounded");
        check(world.getNumGroups() <= World::MAX_GROUPS, "group table bounded");
        if (status == noErr && (world.getNumLoopSounds() > 0 || world.getNumEnvironmentSounds() > 0)) {
            OfflineRenderer renderer(engine, loop);
            world.start();
            renderer.renderSeconds(RENDER_SECONDS, {});
            world.stop();
        }
        world.resetToInitialState();
    }
    gPrefs = nullptr;
    return 0;
}
