#pragma once

// The rate live playback runs the engine at. Loops play all the time, so when every loop of a
// world is recorded at one rate the engine runs at that rate and the loops are decoded straight
// into it; the sound server, which resamples for the device anyway, does the one conversion left.
// Worlds whose loops differ, or that have none, play at the engine's usual rate.

#include <QString>

namespace sylvora::cli {

inline constexpr int LOWEST_NATIVE_RATE = 8000;
inline constexpr int HIGHEST_NATIVE_RATE = 192000;

// [main] Reads the package's data.plist and the headers of its loop sounds. Entries that cannot be
// read are passed over, as the loader passes them over; a package that cannot be read at all gives
// the usual rate (the load that follows says what is wrong with it).
int choosePlaybackRate(const QString& packagePath);

}  // namespace sylvora::cli
