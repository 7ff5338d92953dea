#pragma once

// The worlds that ship with Sylvora, each synthesized from seeded noise and filters: its sounds and
// picture are written into `stagingFolder` and the package saved as `packagePath`. Each returns an
// empty string or the error. The same seed gives the same world on every build.

#include <QString>

namespace sylvora::synth {

QString buildEveningForest(const QString& stagingFolder, const QString& packagePath);
QString buildRainOnARoof(const QString& stagingFolder, const QString& packagePath);
QString buildSeaShore(const QString& stagingFolder, const QString& packagePath);
QString buildFireside(const QString& stagingFolder, const QString& packagePath);
QString buildNightMeadow(const QString& stagingFolder, const QString& packagePath);

struct BundledWorld {
    const char* name;  // also the package's name, without ".sylvora"
    QString (*build)(const QString& stagingFolder, const QString& packagePath);
};

inline constexpr BundledWorld BUNDLED_WORLDS[] = {
    {"Evening Forest", buildEveningForest}, {"Rain on a Roof", buildRainOnARoof},
    {"Sea Shore", buildSeaShore},           {"Fireside", buildFireside},
    {"Night Meadow", buildNightMeadow},
};

}  // namespace sylvora::synth
