// World packages on disk: loading a full world, and saving measured against `cp -r` of the same
// files (bench/save_vs_cp.sh runs the two side by side and prints the ratio).
//
// SYLVORA_BENCH_DIR chooses the folder to work in (default: the system's temporary folder), so
// that both copies run on the disk a user's worlds would be on.

#include <benchmark/benchmark.h>
#include <sys/statvfs.h>

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#include "audio/engine/engine.h"
#include "core/files/alias.h"
#include "core/time/qteventloop.h"
#include "core/time/virtualeventloop.h"
#include "core/world/world.h"
#include "support/soundfiles.h"

namespace {

using namespace sylvora;

constexpr int SAMPLE_RATE = 48000;

QString benchRoot() {
    const QByteArray chosen = qgetenv("SYLVORA_BENCH_DIR");
    return chosen.isEmpty() ? QDir::tempPath() : QString::fromLocal8Bit(chosen);
}

FSRef refOf(const QString& path) {
    FSRef ref;
    FSPathMakeRef(path, ref);
    return ref;
}

AliasHandle aliasOf(const QString& path) {
    AliasHandle alias;
    FSNewAlias(refOf(path), alias);
    return alias;
}

bool writeTone(const QString& path, double seconds, double frequency) {
    test::ToneSpec tone;
    tone.seconds = seconds;
    tone.frequency = frequency;
    tone.sampleRate = SAMPLE_RATE;
    return test::writeSoundFile(path, tone);
}

struct Session {
    audio::Engine engine{SAMPLE_RATE};
    VirtualEventLoop loop;
    World world{engine, loop, 3u};
};

// A package of 50 loop sounds and 50 environment sounds, each a short file, as a saved world is.
void BM_LoadFullWorld(benchmark::State& state) {
    QTemporaryDir dir(benchRoot() + QStringLiteral("/sylvora-bench-XXXXXX"));
    const QString sources = dir.filePath(QStringLiteral("sources"));
    QDir().mkpath(sources);
    Session session;
    for (int i = 0; i < World::MAX_LOOP_SOUNDS; ++i) {
        const QString path = sources + QStringLiteral("/loop %1.wav").arg(i);
        if (!writeTone(path, 0.5, 200.0 + i)) state.SkipWithError("cannot write a sound file");
        session.world.addLoopSound(*aliasOf(path));
    }
    for (int i = 0; i < World::MAX_ENVIRONMENT_SOUNDS; ++i) {
        const QString path = sources + QStringLiteral("/environment %1.wav").arg(i);
        if (!writeTone(path, 0.5, 700.0 + i)) state.SkipWithError("cannot write a sound file");
        session.world.addEnvironmentSound(*aliasOf(path));
    }
    if (session.world.doSaveAs(refOf(dir.path()), QStringLiteral("Full.sylvora")) != noErr)
        state.SkipWithError("cannot save the world");
    const FSRef package = refOf(dir.filePath(QStringLiteral("Full.sylvora")));

    for (auto _ : state) {
        state.PauseTiming();
        session.world.resetToInitialState();  // or the same-package shortcut would skip the load
        state.ResumeTiming();
        benchmark::DoNotOptimize(session.world.loadFromPackage(package));
    }
    state.counters["sounds"] = session.world.getNumLoopSounds() + session.world.getNumEnvironmentSounds();
}
BENCHMARK(BM_LoadFullWorld)->Unit(benchmark::kMillisecond)->UseRealTime();

// The files both copies copy: `count` sound files of about `megabytes` each.
struct CopySources {
    QTemporaryDir dir{benchRoot() + QStringLiteral("/sylvora-bench-XXXXXX")};
    QString sources = dir.filePath(QStringLiteral("sources"));
    qint64 totalBytes = 0;

    CopySources(int count, int megabytes) {
        QDir().mkpath(sources);
        const QString first = sources + QStringLiteral("/loop 0.wav");
        // 16-bit stereo at 48 kHz is 192,000 bytes a second.
        writeTone(first, megabytes * 1048576.0 / 192000.0, 330.0);
        for (int i = 1; i < count; ++i) QFile::copy(first, sources + QStringLiteral("/loop %1.wav").arg(i));
        for (const QFileInfo& info : QDir(sources).entryInfoList(QDir::Files)) totalBytes += info.size();
    }
};

void BM_SaveWorld(benchmark::State& state) {
    CopySources files(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    const QString saved = files.dir.filePath(QStringLiteral("Saved.sylvora"));
    for (auto _ : state) {
        state.PauseTiming();
        QDir(saved).removeRecursively();
        auto session = std::make_unique<Session>();
        for (const QFileInfo& info : QDir(files.sources).entryInfoList(QDir::Files))
            session->world.addLoopSound(*aliasOf(info.filePath()));
        state.ResumeTiming();
        if (session->world.doSaveAs(refOf(files.dir.path()), QStringLiteral("Saved.sylvora")) != noErr)
            state.SkipWithError("save failed");
        state.PauseTiming();
        session.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * files.totalBytes);
}
BENCHMARK(BM_SaveWorld)->Args({20, 10})->Unit(benchmark::kMillisecond)->UseRealTime();

// The copying part of a save alone: sound copies, description and flushes, without the swap and
// the reload.
void BM_SavePackageContents(benchmark::State& state) {
    CopySources files(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    const QString saved = files.dir.filePath(QStringLiteral("Contents.sylvora"));
    Session session;
    for (const QFileInfo& info : QDir(files.sources).entryInfoList(QDir::Files))
        session.world.addLoopSound(*aliasOf(info.filePath()));
    for (auto _ : state) {
        state.PauseTiming();
        QDir(saved).removeRecursively();
        QDir().mkpath(saved);
        state.ResumeTiming();
        if (session.world.savePackageContents(refOf(saved)) != noErr) state.SkipWithError("save failed");
    }
    state.SetBytesProcessed(state.iterations() * files.totalBytes);
}
BENCHMARK(BM_SavePackageContents)->Args({20, 10})->Unit(benchmark::kMillisecond)->UseRealTime();

// Saving a world over its own package after changing one value: the unchanged sounds are linked
// into the new package, not copied, so the time and the disk space do not grow with the sounds.
// Counters: the free space the save took for good (MB), and the sounds' total size (MB).
void BM_SaveInPlaceChangingOneValue(benchmark::State& state) {
    CopySources files(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    Session session;
    for (const QFileInfo& info : QDir(files.sources).entryInfoList(QDir::Files))
        session.world.addLoopSound(*aliasOf(info.filePath()));
    if (session.world.doSaveAs(refOf(files.dir.path()), QStringLiteral("InPlace.sylvora")) != noErr)
        state.SkipWithError("cannot save the world");
    QDir(files.sources).removeRecursively();  // the package's copies are the only ones left
    const auto freeBytes = [&files] {
        struct statvfs info {};
        ::statvfs(QFile::encodeName(files.dir.path()).constData(), &info);
        return static_cast<double>(info.f_bavail) * static_cast<double>(info.f_frsize);
    };
    const double freeBefore = freeBytes();
    int round = 0;
    for (auto _ : state) {
        session.world.setLoopSoundsCrossFadeDuration(5 + (++round % 2));
        if (session.world.doSave() != noErr) state.SkipWithError("save failed");
    }
    state.counters["taken_MB"] = (freeBefore - freeBytes()) / 1e6;
    state.counters["sounds_MB"] = static_cast<double>(files.totalBytes) / 1e6;
}
BENCHMARK(BM_SaveInPlaceChangingOneValue)->Args({10, 100})->Unit(benchmark::kMillisecond)->UseRealTime();

// Pulls the engine at real-time pace in short blocks, as a sound server does, and keeps each
// block's peak, so that the longest silence in what was heard can be read afterwards.
class PacedListener {
public:
    static constexpr int BLOCK = 128;

    PacedListener(audio::Engine& engine, double seconds)
        : engine_(engine), peaks_(static_cast<std::size_t>(seconds * engine.sampleRate() / BLOCK)) {
        thread_ = std::thread([this] { run(); });
    }
    ~PacedListener() {
        running_ = false;
        thread_.join();
    }
    // The longest run of blocks heard below `floor`, from the first loud block on, in seconds.
    double longestSilence(float floor) const {
        std::size_t run = 0, longest = 0;
        bool begun = false;
        for (std::size_t i = 0; i < heard_.load(); ++i) {
            begun = begun || peaks_[i] >= floor;
            run = begun && peaks_[i] < floor ? run + 1 : 0;
            longest = std::max(longest, run);
        }
        return static_cast<double>(longest * BLOCK) / engine_.sampleRate();
    }
    // How much of what was heard reached `floor`, in seconds: that there was sound at all.
    double soundingSeconds(float floor) const {
        const auto loud = std::count_if(peaks_.begin(), peaks_.begin() + static_cast<std::ptrdiff_t>(heard_.load()),
                                        [floor](float peak) { return peak >= floor; });
        return static_cast<double>(loud * BLOCK) / engine_.sampleRate();
    }

private:
    void run() {
        using Clock = std::chrono::steady_clock;
        std::vector<float> block(2 * BLOCK);
        const auto period = std::chrono::duration_cast<Clock::duration>(
            std::chrono::duration<double>(static_cast<double>(BLOCK) / engine_.sampleRate()));
        auto deadline = Clock::now();
        for (std::size_t i = 0; running_ && i < peaks_.size(); ++i) {
            engine_.render(block.data(), BLOCK);
            float peak = 0.0f;
            for (const float sample : block) peak = std::max(peak, std::fabs(sample));
            peaks_[i] = peak;
            heard_.store(i + 1);
            std::this_thread::sleep_until(deadline += period);
        }
    }

    audio::Engine& engine_;
    std::vector<float> peaks_;
    std::atomic<std::size_t> heard_{0};
    std::atomic<bool> running_{true};
    std::thread thread_;
};

void runEventsFor(double seconds) {
    QEventLoop events;
    QTimer::singleShot(static_cast<int>(seconds * 1000), &events, &QEventLoop::quit);
    events.exec();
}

// The same in-place save while the world plays, heard through a listener at real-time pace: the
// sound goes on while the package is written and exchanged, and the reload is a short crossfade.
// Counters: the longest stretch below -60 dBFS in all that was heard (ms), and how long it sounded.
void BM_SaveInPlaceWhilePlaying(benchmark::State& state) {
    CopySources files(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    audio::Engine engine{SAMPLE_RATE};
    QtEventLoop loop;
    World world{engine, loop, 3u};
    for (const QFileInfo& info : QDir(files.sources).entryInfoList(QDir::Files))
        world.addLoopSound(*aliasOf(info.filePath()));
    world.setLoopSoundsCrossFadeDuration(0);
    if (world.doSaveAs(refOf(files.dir.path()), QStringLiteral("Playing.sylvora")) != noErr)
        state.SkipWithError("cannot save the world");
    PacedListener listener(engine, 3.0 + 2.0 * static_cast<double>(state.max_iterations));
    world.start();
    runEventsFor(1.0);
    int round = 0;
    for (auto _ : state) {
        world.setName(QStringLiteral("Round %1").arg(++round));
        if (world.doSave() != noErr) state.SkipWithError("save failed");
        state.PauseTiming();
        runEventsFor(0.5);
        state.ResumeTiming();
    }
    state.counters["longest_silence_ms"] = listener.longestSilence(0.001f) * 1000.0;
    state.counters["sounding_s"] = listener.soundingSeconds(0.001f);
}
BENCHMARK(BM_SaveInPlaceWhilePlaying)->Args({10, 100})->Iterations(5)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_CopyWithCp(benchmark::State& state) {
    CopySources files(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    const QString copy = files.dir.filePath(QStringLiteral("Copy"));
    for (auto _ : state) {
        state.PauseTiming();
        QDir(copy).removeRecursively();
        state.ResumeTiming();
        if (QProcess::execute(QStringLiteral("cp"), {QStringLiteral("-r"), files.sources, copy}) != 0)
            state.SkipWithError("cp failed");
    }
    state.SetBytesProcessed(state.iterations() * files.totalBytes);
}
BENCHMARK(BM_CopyWithCp)->Args({20, 10})->Unit(benchmark::kMillisecond)->UseRealTime();

// `cp -r` that also flushes what it copied, the same promise a save makes.
void BM_CopyWithCpAndSync(benchmark::State& state) {
    CopySources files(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    const QString copy = files.dir.filePath(QStringLiteral("Copy"));
    const QString script = QStringLiteral("cp -r \"$1\" \"$2\" && sync \"$2\"/* \"$2\"");
    for (auto _ : state) {
        state.PauseTiming();
        QDir(copy).removeRecursively();
        state.ResumeTiming();
        if (QProcess::execute(QStringLiteral("sh"), {QStringLiteral("-c"), script, QStringLiteral("sh"), files.sources, copy}) != 0)
            state.SkipWithError("cp failed");
    }
    state.SetBytesProcessed(state.iterations() * files.totalBytes);
}
BENCHMARK(BM_CopyWithCpAndSync)->Args({20, 10})->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
