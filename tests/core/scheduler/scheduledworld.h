#pragma once

// A world on the virtual event loop with the real engine behind it, rendered offline: the tests'
// view of what the scheduler does tick by tick and of what a listener hears.

#include <QString>
#include <cstdint>
#include <functional>
#include <vector>

#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"
#include "core/render/offlinerenderer.h"
#include "core/time/virtualeventloop.h"
#include "core/world/world.h"
#include "support/tempdir.h"

namespace sylvora::test {

class ScheduledWorld {
public:
    static constexpr int RATE = 22050;

    explicit ScheduledWorld(unsigned seed = 1);
    ~ScheduledWorld();

    // A stereo sine file of the given length at the engine's rate, in the temporary folder.
    QString tone(const QString& name, double seconds, double frequency, double amplitude = 0.5);
    QString silence(const QString& name, double seconds);

    SoundID addLoop(const QString& path);
    SoundID addEnvironment(const QString& path);

    // Runs whole ticks. `onTick` sees the world after each tick's timer and before its audio;
    // `sink` receives the audio.
    void runTicks(int ticks, const std::function<void(int tick)>& onTick = {},
                  const OfflineRenderer::Sink& sink = {});
    void runSeconds(double seconds, const std::function<void(int tick)>& onTick = {},
                    const OfflineRenderer::Sink& sink = {});
    int ticksRun() const { return ticksRun_; }

    double now() const { return loop.currentEventTime(); }
    // Event-clock time of tick `tick` (the clock reading its timer sees).
    double timeOfTick(int tick) const;

    // Indices of the pool entries of one sound, in pool order.
    std::vector<int> entriesOf(SoundID sound) const;
    // Entries that are scheduled (start time > 0), in pool order.
    std::vector<int> scheduledEntries() const;
    const MovieEntry& entry(int index) const { return world.getMovieEntry(index); }
    double positionOf(int index) const;

    TempDir dir;
    audio::Engine engine{RATE};
    VirtualEventLoop loop;
    World world;
    OfflineRenderer renderer{engine, loop};

private:
    int ticksRun_ = 0;
};

// The volume the scheduler gives an instance: gain × volume × 256 × world volume, truncated.
int expectedVolume(double gain, double volume, double worldVolume);

}  // namespace sylvora::test
