// Resident memory that a big world costs the audio engine: 50 loop sounds of 5 minutes and 50
// environment sounds, all loaded and all playing at once (more than a world ever plays: it plays
// two loops at a time), measured as the growth of the process's resident set over an engine with
// nothing loaded. Run once; the counters are the figures.

#include <benchmark/benchmark.h>

#include <QFile>
#include <QString>

#include <chrono>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"
#include "audio/outputs/output.h"
#include "support/soundfiles.h"
#include "support/tempdir.h"

namespace {

using sylvora::audio::Engine;
using sylvora::audio::SoundInstance;
using sylvora::test::ToneSpec;
using sylvora::test::Waveform;

double residentMiB() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmRSS:", 0) == 0)
            return std::stod(line.substr(6)) / 1024.0;
    }
    return 0.0;
}

void BM_FiftyLongLoopsAndFiftyOneShots(benchmark::State& state) {
    sylvora::test::TempDir dir;
    ToneSpec loop;
    loop.waveform = Waveform::Noise;
    loop.amplitude = 0.05;
    loop.seconds = 300.0;
    loop.sampleRate = 44100;
    const QString master = dir.filePath(QStringLiteral("loop.ogg"));
    sylvora::test::writeSoundFile(master, loop);
    std::vector<std::string> loops;
    for (int i = 0; i < 50; ++i) {
        // Copies, not links: every loop is a file of its own, as in a world package.
        const QString path = dir.filePath(QStringLiteral("loop%1.ogg").arg(i));
        QFile::copy(master, path);
        loops.push_back(path.toStdString());
    }
    std::vector<std::string> shots;
    for (int i = 0; i < 50; ++i) {
        ToneSpec shot;
        shot.frequency = 300.0 + 20.0 * i;
        shot.seconds = 1.0;
        shot.sampleRate = 44100;
        const QString path = dir.filePath(QStringLiteral("shot%1.wav").arg(i));
        sylvora::test::writeSoundFile(path, shot);
        shots.push_back(path.toStdString());
    }

    for (auto _ : state) {
        Engine engine;
        auto output = sylvora::audio::makeNullOutput(engine);
        output->start();
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        const double before = residentMiB();

        std::vector<std::unique_ptr<SoundInstance>> sounds;
        for (const auto& paths : {loops, shots}) {
            for (const std::string& path : paths) {
                std::unique_ptr<SoundInstance> sound;
                if (engine.openInstance(path, sound) != sylvora::noErr)
                    state.SkipWithError("open failed");
                sound->setVolume(8);
                sound->prepareToStart();
                sounds.push_back(std::move(sound));
            }
        }
        engine.waitForStreams();
        for (auto& sound : sounds)
            sound->start();
        // Three seconds of play with the scheduler's ticks, replaying one-shots as they end.
        for (int tick = 0; tick < 45; ++tick) {
            engine.service();
            for (auto& sound : sounds) {
                if (sound->isDone()) {
                    sound->stop();
                    sound->goToBeginning();
                    sound->start();
                }
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(66));
        }
        const double after = residentMiB();
        state.counters["rss_before_MiB"] = before;
        state.counters["rss_delta_MiB"] = after - before;
        state.counters["decoded_MiB"] = static_cast<double>(engine.decodedBytes()) / (1024.0 * 1024.0);
        state.counters["rings"] = static_cast<double>(engine.ringsInUse());
        state.counters["underruns"] = static_cast<double>(engine.underruns());
        output->stop();
    }
}

}  // namespace

BENCHMARK(BM_FiftyLongLoopsAndFiftyOneShots)->Iterations(1)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
