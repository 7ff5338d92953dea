#pragma once

// A world wired to a real audio engine and a virtual event loop, with helpers that write real
// sound files and render audio so that the loop's clock and the instances' positions move together.

#include <gtest/gtest.h>

#include <QString>
#include <vector>

#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"
#include "core/files/alias.h"
#include "core/render/offlinerenderer.h"
#include "core/time/virtualeventloop.h"
#include "core/world/world.h"
#include "support/tempdir.h"

namespace sylvora::test {

class WorldTest : public ::testing::Test {
protected:
    static constexpr int SAMPLE_RATE = 22050;
    static constexpr unsigned SEED = 7;

    explicit WorldTest(unsigned seed = SEED) : world(engine, eventLoop, seed) {}

    // Writes a sine tone of `seconds` into the test folder and returns its path.
    QString writeSound(const QString& name, double seconds = 0.25, double frequency = 440.0);
    static AliasHandle aliasOf(const QString& path);
    AliasHandle soundAlias(const QString& name, double seconds = 0.25, double frequency = 440.0);

    // A package folder with a data.plist whose top dictionary holds `plistEntries` (XML); loading it
    // gives a world that holds values and is not modified. Returns the package's path.
    QString makePackage(const QString& plistEntries);
    void loadPackage(const QString& packagePath);
    void loadUnmodifiedWorld(const QString& name);

    // Renders `seconds` of audio on the 1/15-s tick grid, the clock and the timers moving with it.
    // Returns the peak sample rendered.
    float play(double seconds);
    double now() const { return eventLoop.currentEventTime(); }

    // Pool views.
    std::vector<int> entriesOf(SoundID id) const;
    int scheduledCount(SoundID id) const;
    bool isAudible(SoundID id) const;
    double pendingStartOf(SoundID id) const;  // first scheduled, silent entry; -1 without one

    TempDir dir;
    audio::Engine engine{SAMPLE_RATE};
    VirtualEventLoop eventLoop;
    World world;
    OfflineRenderer renderer{engine, eventLoop};

private:
    int packages_ = 0;
};

}  // namespace sylvora::test
