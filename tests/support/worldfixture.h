#pragma once

// A world wired to a real audio engine and a virtual event loop, in a temporary folder, with
// helpers that write real sound files, pictures and packages, and that render whole ticks so the
// loop's clock and the instances' positions move together.

#include <gtest/gtest.h>

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>
#include <ostream>
#include <vector>

#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"
#include "core/files/alias.h"
#include "core/render/offlinerenderer.h"
#include "core/time/virtualeventloop.h"
#include "core/world/world.h"
#include "support/tempdir.h"

// Readable failure messages for Qt strings.
inline void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }

namespace sylvora::test {

// A complete XML property list around dictionary entries, or around any root element.
QByteArray xmlPlist(const QString& dictEntries);
QByteArray xmlPlistWithRoot(const QString& rootElement);

class WorldFixture;

// The world's timer period, and the equal-power curves a crossfade follows (x from 0 to 1).
constexpr double TICK = 1.0 / 15.0;
inline double fadeInGain(double x) { return 1.0 - (x - 1.0) * (x - 1.0); }
inline double fadeOutGain(double x) { return 1.0 - x * x; }

// The instances that began to sound, tick by tick, from the world's state after each tick's timer.
class StartLog {
public:
    struct Start {
        SoundID sound;
        int tick;
    };
    // Returns how many instances are sounding at this tick.
    int onTick(const WorldFixture& w, int tick);
    int countOf(SoundID sound) const;
    std::vector<Start> starts;

private:
    std::vector<bool> playing_;
};

class WorldFixture {
public:
    static constexpr int RATE = 22050;

    explicit WorldFixture(unsigned seed = 1, int rateHz = RATE);
    ~WorldFixture();

    // A stereo sine tone at `relative` inside the folder (parents made as needed); returns its path.
    QString writeSound(const QString& relative, double seconds = 0.25, double frequency = 440.0,
                       double amplitude = 0.5);
    QString writePicture(const QString& relative, int width = 8, int height = 6);
    static FSRef ref(const QString& path);
    static AliasHandle aliasOf(const QString& path);
    AliasHandle soundAlias(const QString& relative, double seconds = 0.25, double frequency = 440.0);
    SoundID addLoop(const QString& path);
    SoundID addEnvironment(const QString& path);

    // A package folder `name` holding `data.plist` with `plistBytes` and, when given, sound files
    // of those names in its two sound folders. Returns its path.
    QString makePackage(const QString& name, const QByteArray& plistBytes, const QStringList& loopFiles = {},
                        const QStringList& environmentFiles = {});
    OSStatus load(const QString& packagePath);

    // Runs whole ticks on the 1/15-s grid. `onTick` sees the world after each tick's timer and
    // before its audio; `sink` receives the audio.
    void runTicks(int ticks, const std::function<void(int tick)>& onTick = {}, const OfflineRenderer::Sink& sink = {});
    void runSeconds(double seconds, const std::function<void(int tick)>& onTick = {},
                    const OfflineRenderer::Sink& sink = {});
    // Renders `seconds` of audio (any length, the timers firing on their ticks within it) and
    // returns the peak sample heard.
    float play(double seconds);

    double now() const { return eventLoop.currentEventTime(); }
    // Event-clock time of tick `tick` (the clock reading its timer sees).
    double timeOfTick(int tick) const;

    // Pool views, in pool order.
    std::vector<int> entriesOf(SoundID sound) const;
    std::vector<int> scheduledEntries() const;  // start time > 0
    const MovieEntry& entry(int index) const { return world.getMovieEntry(index); }
    double positionOf(int index) const;
    int scheduledCount(SoundID sound) const;
    bool isAudible(SoundID sound) const;
    double pendingStartOf(SoundID sound) const;  // first scheduled, silent entry; -1 without one

    TempDir dir;
    const int sampleRate;
    audio::Engine engine;
    VirtualEventLoop eventLoop;
    World world;
    OfflineRenderer renderer{engine, eventLoop};

private:
    int ticksRun_ = 0;
};

// The same as a GoogleTest fixture.
class WorldTest : public ::testing::Test, public WorldFixture {
protected:
    explicit WorldTest(unsigned seed = 7, int rateHz = RATE) : WorldFixture(seed, rateHz) {}
};

// The volume the scheduler gives an instance: gain × volume × 256 × world volume, truncated.
int expectedVolume(double gain, double volume, double worldVolume);

}  // namespace sylvora::test
