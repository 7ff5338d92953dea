#pragma once

// Durations as people type them on a command line ("90", "90s", "10m", "1h30m", "2.5") and the
// clock form the status line shows.

#include <QString>
#include <optional>

namespace sylvora::cli {

// Seconds for a plain number or for hours, minutes and seconds written in that order, each at most
// once ("1h30m", "10m5s", "45s"); a plain number may have a fraction. Null for anything else,
// including negative values, empty text and units out of order.
std::optional<double> parseDuration(const QString& text);

// "m:ss" below an hour, "h:mm:ss" above it; fractions are dropped.
QString formatClock(double seconds);

}  // namespace sylvora::cli
