// The playback timer runs only at the ticks where something would change, and then does just what
// it did when it ran at every point of its grid: the same volumes set and the same instances started
// at the same ticks, through crossfades, environment sounds, groups, a volume change and edits.

#include <cstdint>
#include <cstring>
#include <functional>
#include <vector>

#include "support/worldfixture.h"

namespace sylvora::test {
namespace {

struct Scenario {
    const char* name;
    int rate;
    int ticks;
    std::function<void(WorldFixture&)> build;
    std::function<void(WorldFixture&, int tick)> edit;  // at the same ticks in both worlds
    int quietFrom, quietTo;  // a stretch without fades: ticks where the lazy timer should rarely run
    int mostQuietWakes;
};

struct Played {
    // Per tick: whether instances let go still wait to be freed, each entry's start, rate, volume...
    std::vector<std::vector<double>> states;
    std::vector<std::uint64_t> sound;         // per tick: a hash of the audio rendered after it
    std::vector<int> wakes;                   // ticks at which the timer ran
};

Played play(const Scenario& s, bool everyTick) {
    WorldFixture w(11, s.rate);
    s.build(w);
    Played run;
    w.world.setTickListener([&] {
        run.wakes.push_back(static_cast<int>(run.states.size()));
        return everyTick ? w.now() : 0.0;  // asking for the next tick at once makes it poll
    });
    w.world.start();
    w.runTicks(
        s.ticks,
        [&](int tick) {
            s.edit(w, tick);
            std::vector<double> state{w.engine.servicePending() ? 1.0 : 0.0};
            for (int i = 0; i < w.world.getNumMovies(); ++i) {
                const MovieEntry& e = w.entry(i);
                state.insert(state.end(), {static_cast<double>(e.soundID), e.startTime, e.movie->rate(),
                                           static_cast<double>(e.movie->volume()), e.movie->isDone() ? 1.0 : 0.0, static_cast<double>(e.movie->time()), e.movie->isCued() ? 1.0 : 0.0});
            }
            run.states.push_back(std::move(state));
            run.sound.push_back(0);
        },
        [&](const float* samples, std::size_t frames, std::uint64_t) {
            for (std::size_t i = 0; i < frames * 2; ++i) {
                std::uint32_t bits = 0;
                std::memcpy(&bits, &samples[i], sizeof bits);
                run.sound.back() = (run.sound.back() ^ bits) * 1099511628211ull;
            }
        });
    return run;
}

TEST(PlaybackTimer, WakesOnlyWhenNeededAndActsAsIfItTickedAlways) {
    const Scenario scenarios[] = {
        {"crossfading loops, environment sounds and a group, edited", WorldFixture::RATE, 15 * 200,
         [](WorldFixture& w) {
             w.world.setLoopSoundsCrossFadeDuration(2);
             w.addLoop(w.writeSound("Loop Sounds/long.wav", 5.0, 330.0));  // streamed
             w.addLoop(w.writeSound("Loop Sounds/short.wav", 2.5, 440.0));  // held in memory
             const SoundID bird = w.addEnvironment(w.writeSound("bird.wav", 0.3, 990.0));
             w.world.setEnvironmentSoundMinInterval(bird, 1);
             w.world.setEnvironmentSoundMaxInterval(bird, 4);
             w.world.setEnvironmentSoundMinVolume(bird, 0.3);
             const GroupID group = w.world.addGroup({});
             w.world.setGroupMinInterval(group, 2);
             w.world.setGroupMaxInterval(group, 5);
             for (const char* name : {"owl.wav", "frog.wav"}) {
                 const SoundID member = w.addEnvironment(w.writeSound(name, 0.4, 550.0));
                 w.world.setEnvironmentSoundGroupID(member, group);
             }
         },
         [](WorldFixture& w, int tick) {
             if (tick == 15 * 40) w.world.setVolume(0.6);
             if (tick == 15 * 70 + 7) {
                 w.world.setLoopSoundsCrossFadeDuration(1);
                 w.world.setLoopSoundVolume(w.world.getIndLoopSoundID(0), 0.5);
                 w.world.removeEnvironmentSound(w.world.getIndEnvironmentSoundID(0));
             }
             if (tick == 15 * 100) w.world.setEnvironmentSoundMaxInterval(w.world.getIndEnvironmentSoundID(0), 2);
             if (tick == 15 * 130 + 3) w.addEnvironment(w.writeSound("bell.wav", 0.2, 1320.0));
         },
         0, 0, 0},
        {"one long loop at full volume, a rare environment sound, a restart", 8000, 15 * 40,
         [](WorldFixture& w) {
             w.world.setLoopSoundsCrossFadeDuration(1);
             w.addLoop(w.writeSound("Loop Sounds/long.wav", 12.0, 330.0));  // held in memory at this rate
             const SoundID bird = w.addEnvironment(w.writeSound("bird.wav", 0.5, 990.0));
             w.world.setEnvironmentSoundMinInterval(bird, 20);
             w.world.setEnvironmentSoundMaxInterval(bird, 30);
         },
         [](WorldFixture& w, int tick) {
             if (tick == 15 * 12) {  // what sounds fades out over a second, freed only once it has
                 for (int i = 0; i < w.world.getNumMovies(); ++i) w.entry(i).movie->fadeNextChange(1.0);
                 w.world.removeLoopSound(w.world.getIndLoopSoundID(0));
             }
             if (tick == 15 * 25) w.world.stop();
             if (tick == 15 * 26 + 4) w.world.start();
         },
         15 * 1, 15 * 10, 2},
    };
    for (const Scenario& s : scenarios) {
        SCOPED_TRACE(s.name);
        const Played polled = play(s, true);
        const Played lazy = play(s, false);
        ASSERT_EQ(lazy.states.size(), polled.states.size());
        for (std::size_t tick = 0; tick < polled.states.size(); ++tick) {
            ASSERT_EQ(lazy.states[tick], polled.states[tick]) << "tick " << tick;
            ASSERT_EQ(lazy.sound[tick], polled.sound[tick]) << "tick " << tick;
        }
        const auto quietWakes = [&s](const Played& run) {
            int count = 0;
            for (const int tick : run.wakes) count += tick >= s.quietFrom && tick < s.quietTo ? 1 : 0;
            return count;
        };
        EXPECT_EQ(quietWakes(polled), s.quietTo - s.quietFrom) << "the reference must tick always";
        EXPECT_LE(quietWakes(lazy), s.mostQuietWakes);
    }
}

}  // namespace
}  // namespace sylvora::test
