// Plays sound files through the native PulseAudio output, restarting each as it ends, for a
// while; then times master-volume changes and sounds started on the timer's grid, first in steady
// play and then with low latency asked, and reports them with the underruns of the whole run. Run by playback_cost.sh (latency) and
// playback_soak.sh (underruns under load) against a private server.
// Usage: output_latency_bench SECONDS FILE...

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"
#include "audio/outputs/pulse/pulseoutput.h"

using namespace sylvora;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int CHANGES = 20;

void pause(double seconds) {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

// Seconds from setting the volume until the server plays the first frame rendered after it (or
// after a block that was being rendered as it was set), by the server's clock.
double heardAfter(audio::PulseOutput& output, std::vector<std::unique_ptr<audio::SoundInstance>>& sounds,
                  std::int16_t volume) {
    const auto set = Clock::now();
    for (auto& sound : sounds)
        sound->setVolume(volume);
    const std::uint64_t next = output.framesWritten();
    pause(0.003);
    const std::uint64_t landed = std::max(next, output.framesWritten());
    while (output.framesPlayed() < landed)
        pause(0.002);
    return std::chrono::duration<double>(Clock::now() - set).count();
}

// Seconds from a sound's scheduled time until the server plays its first frame (negative when
// early), when the timer starts it at its first tick at which the output's queue would bring it to
// the ear at or after that time, as a world's timer starts a due environment sound.
double startedAfter(audio::Engine& engine, audio::PulseOutput& output, audio::SoundInstance& sound,
                    Clock::time_point timerOrigin, std::mt19937& random) {
    const auto tick = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(1.0 / 15));
    const auto scheduled = Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(
                                              std::uniform_real_distribution<double>(0.1, 0.5)(random)));
    // Readied when scheduled, as a world readies a sound it has scheduled.
    sound.goToBeginning();
    sound.prepareToStart();
    auto ticks = (Clock::now() - timerOrigin) / tick + 1;
    for (;; ++ticks) {
        std::this_thread::sleep_until(timerOrigin + ticks * tick);
        if (Clock::now() + std::chrono::duration<double>(engine.outputDelay()) >= scheduled)
            break;
    }
    sound.start();
    const std::uint64_t next = output.framesWritten();
    pause(0.003);
    const std::uint64_t landed = std::max(next, output.framesWritten());
    while (output.framesPlayed() < landed)
        pause(0.002);
    const double heard = std::chrono::duration<double>(Clock::now() - scheduled).count();
    sound.stop();
    return heard;
}

void report(const char* what, const char* mode, std::vector<double> times) {
    std::sort(times.begin(), times.end());
    std::printf("%s, %s: median %.0f ms, slowest %.0f ms, quickest %.0f ms (%d times)\n", what, mode,
                1000 * times[times.size() / 2], 1000 * times.back(), 1000 * times.front(), CHANGES);
}

void timeChanges(audio::Engine& engine, audio::PulseOutput& output, std::vector<std::unique_ptr<audio::SoundInstance>>& sounds,
                 audio::SoundInstance& added, const char* mode, double spacing) {
    std::vector<double> times;
    for (int i = 0; i < CHANGES; ++i) {
        times.push_back(heardAfter(output, sounds, i % 2 == 0 ? std::int16_t{64} : std::int16_t{128}));
        pause(spacing + 0.013 * i);  // spread the changes over the output's request cycle
    }
    report("volume change heard", mode, times);
    times.clear();
    std::mt19937 random(15);
    const auto timerOrigin = Clock::now();
    for (int i = 0; i < CHANGES; ++i)
        times.push_back(startedAfter(engine, output, added, timerOrigin, random));
    report("sound started after its scheduled time", mode, times);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s SECONDS FILE...\n", argv[0]);
        return 2;
    }
    const double seconds = std::atof(argv[1]);
    audio::Engine engine(44100);
    // Two instances of each file take turns, the next readied two seconds before the other ends,
    // as a world's loop chain readies its next play.
    std::vector<std::unique_ptr<audio::SoundInstance>> sounds(static_cast<std::size_t>(2 * (argc - 2)));
    for (std::size_t i = 0; i < sounds.size(); ++i) {
        if (engine.openInstance(argv[i / 2 + 2], sounds[i]) != noErr) {
            std::fprintf(stderr, "cannot open %s\n", argv[i / 2 + 2]);
            return 1;
        }
        sounds[i]->setVolume(128);
        if (i % 2 == 0)
            sounds[i]->prepareToStart();
    }
    // Readied ahead, as a world readies what it schedules, so that steady play starts with full
    // rings rather than with the streaming thread racing the first blocks.
    pause(1.0);
    for (std::size_t i = 0; i < sounds.size(); i += 2)
        sounds[i]->start();
    std::string error;
    auto output = audio::PulseOutput::open(engine, error);
    if (!output || !output->start()) {
        std::fprintf(stderr, "no PulseAudio output: %s\n", error.c_str());
        return 1;
    }
    // Steady play at the timer's pace.
    std::vector<std::size_t> current(sounds.size() / 2, 0);  // which of each pair plays
    std::vector<bool> readied(sounds.size() / 2, false);
    const auto began = Clock::now();
    std::uint64_t underruns = 0;
    for (const auto end = began + std::chrono::duration<double>(seconds); Clock::now() < end;) {
        pause(1.0 / 15);
        engine.service();
        // When, so that an underrun can be matched with what else the machine was doing.
        if (output->underruns() + engine.underruns() != underruns) {
            underruns = output->underruns() + engine.underruns();
            std::printf("underrun at %.1f s: %llu at the server, %llu in the engine so far\n",
                        std::chrono::duration<double>(Clock::now() - began).count(),
                        static_cast<unsigned long long>(output->underruns()),
                        static_cast<unsigned long long>(engine.underruns()));
        }
        for (std::size_t pair = 0; pair < current.size(); ++pair) {
            audio::SoundInstance& playing = *sounds[2 * pair + current[pair]];
            audio::SoundInstance& next = *sounds[2 * pair + 1 - current[pair]];
            if (!readied[pair] && playing.duration() - playing.time() < 2 * playing.timeScale()) {
                next.goToBeginning();
                next.prepareToStart();
                readied[pair] = true;
            }
            if (playing.isDone()) {
                next.start();
                playing.stop();
                current[pair] = 1 - current[pair];
                readied[pair] = false;
            }
        }
    }
    std::printf("underruns in %.0f s of steady play: %llu at the server, %llu in the engine\n", seconds,
                static_cast<unsigned long long>(output->underruns()),
                static_cast<unsigned long long>(engine.underruns()));
    std::unique_ptr<audio::SoundInstance> added;
    if (engine.openInstance(argv[2], added) != noErr)
        return 1;
    added->setVolume(64);
    timeChanges(engine, *output, sounds, *added, "steady play", 0.1);
    engine.setLowLatency(true);
    pause(0.5);
    timeChanges(engine, *output, sounds, *added, "low latency", 0.05);
    output->stop();
    std::printf("underruns by the end of the timings: %llu at the server, %llu in the engine\n",
                static_cast<unsigned long long>(output->underruns()),
                static_cast<unsigned long long>(engine.underruns()));
    return 0;
}
