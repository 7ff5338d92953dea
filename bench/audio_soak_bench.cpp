// Underrun soak: 100 streamed voices (Ogg Vorbis at 44.1 kHz, so every one is decoded and
// resampled) played at real-time pace through the null output, each replayed as it ends, for
// SYLVORA_SOAK_SECONDS (default 60). bench/audio_soak.sh runs it next to a process that keeps one
// core busy. The figure is `underruns`: voice-blocks (1024 frames) that had nothing ready.

#include <benchmark/benchmark.h>

#include <QFile>
#include <QString>

#include <chrono>
#include <cstdlib>
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

void BM_HundredStreamedVoicesRealTime(benchmark::State& state) {
    const char* env = std::getenv("SYLVORA_SOAK_SECONDS");
    const int seconds = env ? std::atoi(env) : 60;
    sylvora::test::TempDir dir;
    std::vector<std::string> files;
    for (int i = 0; i < 10; ++i) {
        sylvora::test::ToneSpec tone;
        tone.waveform = i % 2 ? sylvora::test::Waveform::Noise : sylvora::test::Waveform::Sine;
        tone.frequency = 200.0 + 70.0 * i;
        tone.amplitude = 0.05;
        tone.seconds = 20.0 + i;
        tone.sampleRate = 44100;
        tone.seed = static_cast<unsigned>(i + 1);
        const QString path = dir.filePath(QStringLiteral("stream%1.ogg").arg(i));
        sylvora::test::writeSoundFile(path, tone);
        files.push_back(path.toStdString());
    }
    for (auto _ : state) {
        Engine engine;
        std::vector<std::unique_ptr<SoundInstance>> voices;
        for (int i = 0; i < 100; ++i) {
            std::unique_ptr<SoundInstance> voice;
            if (engine.openInstance(files[static_cast<std::size_t>(i % 10)], voice) != sylvora::noErr) {
                state.SkipWithError("open failed");
                return;
            }
            voice->setVolume(4);
            voice->prepareToStart();
            voices.push_back(std::move(voice));
        }
        engine.waitForStreams();
        auto output = sylvora::audio::makeNullOutput(engine);
        output->start();
        for (auto& voice : voices)
            voice->start();
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
        std::int64_t replays = 0;
        std::vector<bool> due(voices.size(), false);
        // The scheduler's tick: service, start what was readied a tick ago, and ready the next
        // play of what ended (its ring fills before its start, as a scheduled play's does).
        while (std::chrono::steady_clock::now() < end) {
            engine.service();
            for (std::size_t i = 0; i < voices.size(); ++i) {
                SoundInstance& voice = *voices[i];
                if (due[i]) {
                    voice.start();
                    due[i] = false;
                    ++replays;
                } else if (voice.isDone()) {
                    voice.stop();
                    voice.goToBeginning();
                    voice.prepareToStart();
                    due[i] = true;
                }
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(66));
        }
        output->stop();
        state.counters["seconds"] = seconds;
        state.counters["underruns"] = static_cast<double>(engine.underruns());
        state.counters["replays"] = static_cast<double>(replays);
    }
}

}  // namespace

BENCHMARK(BM_HundredStreamedVoicesRealTime)->Iterations(1)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
