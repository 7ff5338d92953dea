#pragma once

// How the editor's lists order names: without regard to letter case, and with runs of digits
// compared by their value, so "Bird 2" comes before "Bird 10".

#include <QString>

namespace sylvora::app {

// Negative, 0 or positive as `a` sorts before, with or after `b`.
int compareNamesNumerically(const QString& a, const QString& b);

}  // namespace sylvora::app
