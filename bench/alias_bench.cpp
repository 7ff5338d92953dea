// Resolving aliases: one whose object is in place, and finding a package that was moved in a home
// folder of 100,000 files, to a sibling folder (the common case) and deep into another branch (the
// search's worst case short of its bound), and the cost of that bound for an object that is gone.
//
// SYLVORA_BENCH_DIR chooses the folder to build the home folder in (default: the system's temporary
// folder), so that the search runs on the file system a user's worlds would be on.

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstdio>
#include <cstring>
#include <memory>

#include "core/files/alias.h"
#include "core/files/identitysearch.h"
#include "core/prefs/knownworldsmenu.h"
#include "core/prefs/preferences.h"

namespace {

using namespace sylvora;

constexpr int TOP_FOLDERS = 20;
constexpr int SUBFOLDERS = 50;
constexpr int FILES_PER_FOLDER = 100;  // 20 × 50 × 100 = 100,000 files

// home/Music holds the library of 100,000 files in d00..d19/s00..s49, the package in Worlds and an
// empty sibling folder Archive.
class Home {
  public:
    // Removed with the object, or kept when `kept` (for a program run afterwards in it).
    explicit Home(bool kept = false) : dir_(root() + QStringLiteral("/sylvora-alias-bench-XXXXXX")) {
        dir_.setAutoRemove(!kept);
        music_ = dir_.path() + QStringLiteral("/home/Music");
        for (int d = 0; d < TOP_FOLDERS; ++d) {
            for (int s = 0; s < SUBFOLDERS; ++s) {
                const QString folder = QStringLiteral("%1/d%2/s%3")
                                           .arg(music_)
                                           .arg(d, 2, 10, QLatin1Char('0'))
                                           .arg(s, 2, 10, QLatin1Char('0'));
                QDir().mkpath(folder);
                const QByteArray base = QFile::encodeName(folder);
                for (int f = 0; f < FILES_PER_FOLDER; ++f) {
                    const QByteArray file = base + "/track" + QByteArray::number(f) + ".flac";
                    ::close(::open(file.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
                }
            }
        }
        QDir().mkpath(music_ + QStringLiteral("/Worlds/Forest.sylvora/Loop Sounds"));
        QDir().mkpath(music_ + QStringLiteral("/Archive"));
        QFile data(package() + QStringLiteral("/data.plist"));
        if (data.open(QIODevice::WriteOnly))
            data.write("<plist/>");
    }

    QString package() const { return music_ + QStringLiteral("/Worlds/Forest.sylvora"); }
    QString music() const { return music_; }
    QString path() const { return dir_.path(); }

    static Home& shared() {
        static Home home;
        return home;
    }

  private:
    static QString root() {
        const QByteArray chosen = qgetenv("SYLVORA_BENCH_DIR");
        return chosen.isEmpty() ? QDir::tempPath() : QString::fromLocal8Bit(chosen);
    }

    QTemporaryDir dir_;
    QString music_;
};

QByteArray storedAliasBytes(const QString& path) {
    FSRef ref;
    AliasHandle alias;
    if (FSPathMakeRef(path, ref) != noErr || FSNewAlias(ref, alias) != noErr)
        return {};
    return alias->toBytes();
}

bool rename(const QString& from, const QString& to) {
    return ::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

// An alias as the preferences keep it (from its bytes, following nothing) whose package is in place.
void BM_ResolveInPlace(benchmark::State& state) {
    const AliasHandle alias = Alias::fromBytes(storedAliasBytes(Home::shared().package()));
    FSRef out;
    for (auto _ : state) {
        if (FSResolveAlias(*alias, out) != noErr)
            state.SkipWithError("did not resolve");
        benchmark::DoNotOptimize(out);
    }
}
BENCHMARK(BM_ResolveInPlace);

// An alias of the open world, which follows its package.
void BM_ResolveFollowedInPlace(benchmark::State& state) {
    const AliasHandle alias = Alias::fromBytes(storedAliasBytes(Home::shared().package()));
    alias->follow();
    FSRef out;
    for (auto _ : state) {
        if (FSResolveAlias(*alias, out) != noErr)
            state.SkipWithError("did not resolve");
        benchmark::DoNotOptimize(out);
    }
}
BENCHMARK(BM_ResolveFollowedInPlace);

// The package moved to `relativeTarget` under Music; each resolution starts from the stored bytes,
// with nothing remembered, and takes the search.
void resolveMoved(benchmark::State& state, const QString& relativeTarget) {
    Home& home = Home::shared();
    const QByteArray bytes = storedAliasBytes(home.package());
    const QString moved = home.music() + QLatin1Char('/') + relativeTarget;
    for (auto _ : state) {
        state.PauseTiming();
        const AliasHandle alias = Alias::fromBytes(bytes);
        if (!rename(home.package(), moved))
            state.SkipWithError("cannot move the package");
        state.ResumeTiming();
        FSRef out;
        const OSStatus status = FSResolveAlias(*alias, out);
        state.PauseTiming();
        if (status != noErr || out.path != moved)
            state.SkipWithError("the moved package was not found");
        rename(moved, home.package());
        state.ResumeTiming();
    }
    // How many directory entries the search looked at, counted by a search of its own.
    const AliasHandle alias = Alias::fromBytes(bytes);
    const auto mounts = MountTable::current();
    FileIdentity identity;
    readFileIdentity(AT_FDCWD, QFile::encodeName(home.package()).constData(), identity);
    if (const MountEntry* mount = mounts->mountOf(QFile::encodeName(home.package()), identity)) {
        rename(home.package(), moved);
        IdentitySearch search(*mount, alias->inode(), alias->birthTime());
        search.find(QFile::encodeName(home.package()));
        rename(moved, home.package());
        state.counters["entries"] = static_cast<double>(search.entriesVisited());
    }
}

void BM_FindPackageMovedToSiblingFolder(benchmark::State& state) {
    resolveMoved(state, QStringLiteral("Archive/Forest.sylvora"));
}
BENCHMARK(BM_FindPackageMovedToSiblingFolder)->Unit(benchmark::kMillisecond);

void BM_FindPackageMovedDeepIntoTheLibrary(benchmark::State& state) {
    resolveMoved(state, QStringLiteral("d19/s49/Forest.sylvora"));
}
BENCHMARK(BM_FindPackageMovedDeepIntoTheLibrary)->Unit(benchmark::kMillisecond);

// An object that is gone: the search runs to its bound (or to the end of the file system).
void BM_SearchForAnObjectThatIsGone(benchmark::State& state) {
    Home& home = Home::shared();
    const QString doomed = home.music() + QStringLiteral("/Worlds/gone.wav");
    QFile file(doomed);
    if (!file.open(QIODevice::WriteOnly))
        state.SkipWithError("cannot write");
    file.close();
    const QByteArray bytes = storedAliasBytes(doomed);
    QFile::remove(doomed);
    for (auto _ : state) {
        state.PauseTiming();
        const AliasHandle alias = Alias::fromBytes(bytes);
        state.ResumeTiming();
        FSRef out;
        if (FSResolveAlias(*alias, out) == noErr)
            state.SkipWithError("a deleted file resolved");
    }
}
BENCHMARK(BM_SearchForAnObjectThatIsGone)->Unit(benchmark::kMillisecond);

// Two hundred known worlds that are no longer where the settings say: what start-up does with the
// list (read the settings, fill the known-worlds menus) and the Known Worlds menu opened at once,
// each timed; "searched_ms" is how long the searches in the background took to settle them.
enum class Fate { deleted, moved, restored };

class CountingMenu : public KnownWorldsMenu {
  public:
    void clear() override { items = 0; }
    void appendItem(const QString&, quint32, bool) override { ++items; }
    int items = 0;
};

// Settings at `settings` that know 200 worlds in `home`, which then meet their fate.
void prepareGoneWorlds(const Home& home, const QString& settings, Fate fate) {
    const QString worlds = home.music() + QStringLiteral("/Known");
    QDir(worlds).removeRecursively();
    QDir(home.music() + QStringLiteral("/Known moved")).removeRecursively();
    {
        Preferences made(settings);
        for (int i = 0; i < Preferences::MAX_KNOWN_WORLDS; ++i) {
            const QString package = worlds + QStringLiteral("/World %1.sylvora").arg(i);
            QDir().mkpath(package);
            const AliasHandle alias = Alias::fromBytes(storedAliasBytes(package));
            made.updateKnownWorlds(alias.get(), QStringLiteral("World %1").arg(i));
        }
        made.savePreferences();
    }
    if (fate == Fate::moved) {
        rename(worlds, home.music() + QStringLiteral("/Known moved"));
    } else {
        QDir(worlds).removeRecursively();
        if (fate == Fate::restored)  // a backup put back: the same paths, new inodes
            for (int i = 0; i < Preferences::MAX_KNOWN_WORLDS; ++i)
                QDir().mkpath(worlds + QStringLiteral("/World %1.sylvora").arg(i));
    }
}

void knownWorldsGone(benchmark::State& state, Fate fate) {
    Home& home = Home::shared();
    const QString settings = home.music() + QStringLiteral("/Sylvora.ini");
    for (auto _ : state) {
        state.PauseTiming();
        prepareGoneWorlds(home, settings, fate);
        state.ResumeTiming();

        const auto started = std::chrono::steady_clock::now();
        Preferences prefs(settings);
        prefs.loadPreferences();
        CountingMenu menu;
        prefs.fillMenuWithKnownWorlds(menu, nullptr);
        const auto menuShown = std::chrono::steady_clock::now();
        prefs.fillMenuWithKnownWorlds(menu, nullptr);
        const auto menuAgain = std::chrono::steady_clock::now();
        prefs.waitForKnownWorldSearches();
        const auto settled = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(menu.items);

        const auto ms = [](auto duration) { return std::chrono::duration<double, std::milli>(duration).count(); };
        state.counters["startup_ms"] = ms(menuShown - started);
        state.counters["menu_ms"] = ms(menuAgain - menuShown);
        state.counters["searched_ms"] = ms(settled - started);
    }
}

void BM_StartUpWith200DeletedKnownWorlds(benchmark::State& state) { knownWorldsGone(state, Fate::deleted); }
BENCHMARK(BM_StartUpWith200DeletedKnownWorlds)->Unit(benchmark::kMillisecond)->Iterations(2);
void BM_StartUpWith200MovedKnownWorlds(benchmark::State& state) { knownWorldsGone(state, Fate::moved); }
BENCHMARK(BM_StartUpWith200MovedKnownWorlds)->Unit(benchmark::kMillisecond)->Iterations(2);
void BM_StartUpWith200RestoredKnownWorlds(benchmark::State& state) { knownWorldsGone(state, Fate::restored); }
BENCHMARK(BM_StartUpWith200RestoredKnownWorlds)->Unit(benchmark::kMillisecond)->Iterations(2);

// `alias_bench --prepare-gone-worlds deleted|moved|restored`: builds a home folder that is kept,
// with settings at <home>/config/Sylvora/Sylvora.ini that know 200 worlds gone that way, and prints
// the home's path: for bench/app_startup.sh --gone-worlds, which starts the application on it.
int prepareForTheApplication(const QString& fateName) {
    const Fate fate = fateName == QLatin1String("moved")      ? Fate::moved
                      : fateName == QLatin1String("restored") ? Fate::restored
                                                              : Fate::deleted;
    const Home home(true);
    prepareGoneWorlds(home, home.path() + QStringLiteral("/config/Sylvora/Sylvora.ini"), fate);
    std::printf("%s\n", qPrintable(home.path()));
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "--prepare-gone-worlds") == 0)
        return prepareForTheApplication(QString::fromLocal8Bit(argv[2]));
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
