#include "scheduledworld.h"

#include <gtest/gtest.h>

#include <cmath>

#include "core/files/alias.h"
#include "support/soundfiles.h"

namespace sylvora::test {

ScheduledWorld::ScheduledWorld(unsigned seed) : world(engine, loop, seed) {}

ScheduledWorld::~ScheduledWorld() { world.resetToInitialState(); }

QString ScheduledWorld::tone(const QString& name, double seconds, double frequency, double amplitude) {
    ToneSpec settings;
    settings.frequency = frequency;
    settings.amplitude = amplitude;
    settings.seconds = seconds;
    settings.sampleRate = RATE;
    const QString path = dir.filePath(name);
    EXPECT_TRUE(writeSoundFile(path, settings)) << path.toStdString();
    return path;
}

QString ScheduledWorld::silence(const QString& name, double seconds) {
    ToneSpec settings;
    settings.waveform = Waveform::Silence;
    settings.seconds = seconds;
    settings.sampleRate = RATE;
    const QString path = dir.filePath(name);
    EXPECT_TRUE(writeSoundFile(path, settings)) << path.toStdString();
    return path;
}

SoundID ScheduledWorld::addLoop(const QString& path) {
    AliasHandle alias;
    EXPECT_EQ(FSNewAlias(refOf(path), alias), noErr);
    return alias ? world.addLoopSound(*alias) : 0;
}

SoundID ScheduledWorld::addEnvironment(const QString& path) {
    AliasHandle alias;
    EXPECT_EQ(FSNewAlias(refOf(path), alias), noErr);
    return alias ? world.addEnvironmentSound(*alias) : 0;
}

void ScheduledWorld::runTicks(int ticks, const std::function<void(int)>& onTick,
                              const OfflineRenderer::Sink& sink) {
    renderer.setTickObserver([&onTick](std::uint64_t tick) {
        if (onTick) onTick(static_cast<int>(tick));
    });
    const auto target = renderer.frameOfTick(static_cast<std::uint64_t>(ticksRun_ + ticks));
    renderer.render(target - renderer.framesRendered(), sink);
    renderer.setTickObserver({});
    ticksRun_ += ticks;
}

void ScheduledWorld::runSeconds(double seconds, const std::function<void(int)>& onTick,
                                const OfflineRenderer::Sink& sink) {
    runTicks(static_cast<int>(std::lround(seconds * OfflineRenderer::TICKS_PER_SECOND)), onTick, sink);
}

double ScheduledWorld::timeOfTick(int tick) const {
    const double audio = static_cast<double>(renderer.frameOfTick(static_cast<std::uint64_t>(tick))) / RATE;
    return loop.clockOrigin() + audio * (1.0 + VirtualEventLoop::CLOCK_SKEW);
}

std::vector<int> ScheduledWorld::entriesOf(SoundID sound) const {
    std::vector<int> found;
    for (int i = 0; i < world.getNumMovies(); ++i) {
        if (world.getMovieEntry(i).soundID == sound) found.push_back(i);
    }
    return found;
}

std::vector<int> ScheduledWorld::scheduledEntries() const {
    std::vector<int> found;
    for (int i = 0; i < world.getNumMovies(); ++i) {
        if (world.getMovieEntry(i).startTime > 0.0) found.push_back(i);
    }
    return found;
}

double ScheduledWorld::positionOf(int index) const {
    const audio::SoundInstance& movie = *world.getMovieEntry(index).movie;
    return static_cast<double>(movie.time()) / movie.timeScale();
}

int expectedVolume(double gain, double volume, double worldVolume) {
    return static_cast<int>(std::trunc(gain * volume * 256.0 * worldVolume));
}

}  // namespace sylvora::test
