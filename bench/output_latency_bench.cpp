// Plays sound files through the native PulseAudio output, restarting each as it ends, for a
// while; then times master-volume changes, first in steady play and then with low latency asked,
// and reports them with the underruns of the whole run. Run by playback_cost.sh (latency) and
// playback_soak.sh (underruns under load) against a private server.
// Usage: output_latency_bench SECONDS FILE...

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
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

void report(const char* mode, std::vector<double> times) {
    std::sort(times.begin(), times.end());
    std::printf("volume change heard, %s: median %.0f ms, slowest %.0f ms (%d changes)\n", mode,
                1000 * times[times.size() / 2], 1000 * times.back(), CHANGES);
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
            sounds[i]->start();
    }
    std::string error;
    auto output = audio::PulseOutput::open(engine, error);
    if (!output || !output->start()) {
        std::fprintf(stderr, "no PulseAudio output: %s\n", error.c_str());
        return 1;
    }
    // Steady play at the timer's pace.
    std::vector<std::size_t> current(sounds.size() / 2, 0);  // which of each pair plays
    std::vector<bool> readied(sounds.size() / 2, false);
    for (const auto end = Clock::now() + std::chrono::duration<double>(seconds); Clock::now() < end;) {
        pause(1.0 / 15);
        engine.service();
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
    std::vector<double> times;
    for (int i = 0; i < CHANGES; ++i) {
        times.push_back(heardAfter(*output, sounds, i % 2 == 0 ? std::int16_t{64} : std::int16_t{128}));
        pause(0.1 + 0.013 * i);  // spread the changes over the output's request cycle
    }
    report("steady play", times);
    engine.setLowLatency(true);
    pause(0.5);
    times.clear();
    for (int i = 0; i < CHANGES; ++i) {
        times.push_back(heardAfter(*output, sounds, i % 2 == 0 ? std::int16_t{64} : std::int16_t{128}));
        pause(0.05 + 0.007 * i);
    }
    report("low latency", times);
    output->stop();
    std::printf("underruns by the end of the timings: %llu at the server, %llu in the engine\n",
                static_cast<unsigned long long>(output->underruns()),
                static_cast<unsigned long long>(engine.underruns()));
    return 0;
}
