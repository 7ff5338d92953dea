#pragma once

// World packages written by hand for the tests: a data.plist in XML as another program would write
// it, and sound files generated on the spot.

#include <QString>

#include "support/soundfiles.h"
#include "support/worldfixture.h"  // xmlPlist

namespace sylvora::test {

class TempDir;

// A loop sound entry, an environment sound entry and a group entry of data.plist, in XML.
QString loopEntry(const QString& file, double volume = 1.0);
QString environmentEntry(const QString& file, double minVolume, double maxVolume, int minInterval, int maxInterval,
                         int groupIndex = -1);
QString groupEntry(const QString& name, int minInterval, int maxInterval);

// Writes the sound `tone` as `folder`/`name` inside the package; returns false when it could not.
bool addSound(const QString& package, const QString& folder, const QString& name, const ToneSpec& tone);

}  // namespace sylvora::test
