#include "cli/playbackobserver.h"

#include <QFileInfo>
#include <algorithm>
#include <vector>

#include "audio/engine/soundinstance.h"

namespace sylvora::cli {

QString PlaybackObserver::displayName(const QString& fileName) {
    const QString base = QFileInfo(fileName).completeBaseName();
    return base.isEmpty() ? fileName : base;
}

void PlaybackObserver::poll(World& world, double now) {
    struct Playing {
        double startTime;
        SoundID id;
    };
    std::vector<Playing> playingLoops;
    for (int i = 0; i < world.getNumMovies(); ++i) {
        const MovieEntry& entry = world.getMovieEntry(i);
        const bool playing = entry.movie && entry.movie->rate() != 0.0 && entry.startTime > 0.0;
        if (!playing) {
            continue;
        }
        if (entry.isLoopSound) {
            playingLoops.push_back({entry.startTime, entry.soundID});
            continue;
        }
        double& seen = seenStart[static_cast<std::size_t>(i)];
        if (seen != entry.startTime) {
            seen = entry.startTime;
            if (entry.startTime >= lastEnvironmentTime) {
                lastEnvironment = displayName(world.getEnvironmentSoundFilename(entry.soundID));
                lastEnvironmentTime = std::min(entry.startTime, now);
            }
        }
    }
    std::sort(playingLoops.begin(), playingLoops.end(),
              [](const Playing& a, const Playing& b) { return a.startTime < b.startTime; });
    QStringList names;
    for (const Playing& loop : playingLoops) {
        names << displayName(world.getLoopSoundFilename(loop.id));
    }
    loops = names.join(QStringLiteral(" > "));
}

}  // namespace sylvora::cli
