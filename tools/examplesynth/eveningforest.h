#pragma once

#include <QString>

namespace sylvora::synth {

// Synthesizes the sounds and the picture of the example world "Evening Forest" into
// `stagingFolder` and saves the package as `packagePath`. Returns an empty string or the error.
QString buildEveningForest(const QString& stagingFolder, const QString& packagePath);

}  // namespace sylvora::synth
