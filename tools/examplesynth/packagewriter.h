#pragma once

// Assembles a world from sound files through the real World (the same add operations, setters and
// Save As that the editor uses) and saves it as a package, so the example is written by the code
// users run.

#include <QImage>
#include <QString>
#include <optional>
#include <vector>

#include "stereobuffer.h"

namespace sylvora::synth {

struct GroupRecipe {
    QString name;
    int minInterval = 20;
    int maxInterval = 40;
};

struct EnvironmentRecipe {
    QString file;  // absolute path of the sound to copy in
    double minVolume = 1.0;
    double maxVolume = 1.0;
    int minInterval = 20;
    int maxInterval = 40;
    int group = -1;  // position in WorldRecipe::groups, or -1
};

struct LoopRecipe {
    QString file;
    double volume = 1.0;
};

struct WorldRecipe {
    QString name;
    QString author;
    QString description;
    int crossfade = 5;
    QString picture;  // absolute path, or empty
    std::vector<GroupRecipe> groups;
    std::vector<LoopRecipe> loops;
    std::vector<EnvironmentRecipe> environment;
};

// Saves `recipe` as the package `packagePath` (which must end in ".sylvora"), replacing one that is
// there. Returns an empty string on success, otherwise what went wrong.
QString writeWorldPackage(const WorldRecipe& recipe, const QString& packagePath);

// Write one synthesized sound or picture as `folder/fileName` and return its path. A failure fills
// `error` unless it already holds an earlier one, and later calls then write nothing, so a world's
// files can be written in one go and the first error checked once.
QString writeSoundInto(const QString& folder, const QString& fileName, const StereoBuffer& sound, QString& error);
QString savePictureInto(const QString& folder, const QString& fileName, const QImage& picture, QString& error);

}  // namespace sylvora::synth
