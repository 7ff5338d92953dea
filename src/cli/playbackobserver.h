#pragma once

// Watches a playing world from the outside, the way a listener would: which loop sound is playing
// (two during a crossfade) and which environment sound was heard last. It reads the world's pool
// and never changes it; poll it a few times a second.

#include <QString>
#include <array>

#include "core/world/world.h"

namespace sylvora::cli {

class PlaybackObserver {
public:
    // [main]
    void poll(World& world, double now);

    // The playing loop sounds' names, the older first ("Rain > Wind" while crossfading); empty
    // when none plays.
    QString playingLoops() const { return loops; }
    // The environment sound that started last, and when (event-clock seconds); empty before any.
    QString lastEnvironmentSound() const { return lastEnvironment; }
    double lastEnvironmentSoundTime() const { return lastEnvironmentTime; }

    // "Rain on the Pines.flac" is shown as "Rain on the Pines".
    static QString displayName(const QString& fileName);

private:
    QString loops;
    QString lastEnvironment;
    double lastEnvironmentTime = 0.0;
    // The start time of the play each pool entry was making when last looked at.
    std::array<double, World::MAX_MOVIES> seenStart{};
};

}  // namespace sylvora::cli
