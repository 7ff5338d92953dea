#pragma once

// Everything `sylvora-cli info` tells about a loaded world, gathered once from the World so the
// text and the JSON forms say the same thing.

#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

#include "util/status.h"

namespace sylvora {
class World;
}

namespace sylvora::cli {

struct WorldSummary {
    struct Group {
        QString name;
        int minInterval = 0;
        int maxInterval = 0;
    };
    struct Loop {
        QString file;
        double volume = 1.0;
        std::optional<double> duration;  // seconds; none when the sound has no loaded instance
    };
    struct Environment {
        QString file;
        double minVolume = 1.0;
        double maxVolume = 1.0;
        int minInterval = 0;
        int maxInterval = 0;
        std::optional<int> group;  // zero-based position in `groups`
        std::optional<double> duration;
    };

    OSStatus status = noErr;
    QString name;         // null when the world has none
    QString author;
    QString description;
    int crossfade = 0;    // seconds
    QString picture;      // file name inside the package; null without a picture
    std::vector<Group> groups;
    std::vector<Loop> loops;
    std::vector<Environment> environment;
    QStringList warnings;
};

// `world` as it stands after a load that returned `status`.
WorldSummary summarizeWorld(World& world, OSStatus status);

}  // namespace sylvora::cli
