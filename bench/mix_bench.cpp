// Throughput of the audio thread's mix: 48 kHz float stereo, every voice gliding to a new volume
// in every block (the worst case for the gain ramps). The figure to watch is voice_s_per_cpu_s:
// seconds of one voice mixed per second of CPU.

#include <benchmark/benchmark.h>

#include <QString>

#include <memory>
#include <vector>

#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"
#include "support/soundfiles.h"
#include "support/tempdir.h"

namespace {

using sylvora::audio::Engine;
using sylvora::audio::SoundInstance;

constexpr std::size_t BLOCK = 1024;

struct Fixture {
    sylvora::test::TempDir dir;
    Engine engine;
    std::vector<std::unique_ptr<SoundInstance>> voices;

    Fixture(int count, double seconds, int channels) {
        for (int file = 0; file < 4; ++file) {
            sylvora::test::ToneSpec tone;
            tone.waveform = sylvora::test::Waveform::Noise;
            tone.amplitude = 0.1;
            tone.seconds = seconds;
            tone.channels = channels;
            tone.seed = static_cast<unsigned>(file + 1);
            sylvora::test::writeSoundFile(dir.filePath(QStringLiteral("v%1.wav").arg(file)), tone);
        }
        for (int i = 0; i < count; ++i) {
            std::unique_ptr<SoundInstance> voice;
            engine.openInstance(dir.filePath(QStringLiteral("v%1.wav").arg(i % 4)).toStdString(), voice);
            voice->prepareToStart();
            voice->start();
            voices.push_back(std::move(voice));
        }
        engine.waitForStreams();
    }

    // What the scheduler does between blocks: new volumes for everyone, replays of ended sounds.
    void tick(std::int64_t block) {
        for (std::size_t i = 0; i < voices.size(); ++i) {
            SoundInstance& voice = *voices[i];
            voice.setVolume(
                static_cast<std::int16_t>(128 + ((block + static_cast<std::int64_t>(i)) % 2) * 64));
            if (voice.isDone()) {
                voice.stop();
                voice.goToBeginning();
                voice.start();
            }
        }
    }
};

void run(benchmark::State& state, double seconds, int channels, bool streamed) {
    const auto count = static_cast<int>(state.range(0));
    Fixture fixture(count, seconds, channels);
    std::vector<float> out(2 * BLOCK);
    std::int64_t blocks = 0;
    for (auto _ : state) {
        state.PauseTiming();
        fixture.tick(blocks);
        if (streamed)
            fixture.engine.waitForStreams();
        state.ResumeTiming();
        fixture.engine.render(out.data(), BLOCK);
        benchmark::DoNotOptimize(out.data());
        ++blocks;
    }
    const double voiceSeconds = static_cast<double>(blocks) * BLOCK * count / Engine::DEFAULT_SAMPLE_RATE;
    state.counters["voice_s_per_cpu_s"] = benchmark::Counter(voiceSeconds, benchmark::Counter::kIsRate);
    state.counters["underruns"] = static_cast<double>(fixture.engine.underruns());
}

// Short sounds held in memory (1 s), stereo and mono.
void BM_MixMemoryStereo(benchmark::State& state) {
    run(state, 1.0, 2, false);
}
void BM_MixMemoryMono(benchmark::State& state) {
    run(state, 2.0, 1, false);
}
// Long sounds read from their rings (the streaming thread's work is not counted here).
void BM_MixStreamedStereo(benchmark::State& state) {
    run(state, 10.0, 2, true);
}

}  // namespace

BENCHMARK(BM_MixMemoryStereo)->Arg(1)->Arg(16)->Arg(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MixMemoryMono)->Arg(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MixStreamedStereo)->Arg(100)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
