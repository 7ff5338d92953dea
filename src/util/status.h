#pragma once

// Status numbers of the platform this application first ran on. Worlds, alerts and tests compare
// against these exact values, so they are kept as they were and every failure is one of them.

#include <cstdint>

namespace sylvora {

using OSStatus = std::int32_t;

inline constexpr OSStatus noErr = 0;
inline constexpr OSStatus unreadablePropertyListErr = -1;  // a data file that does not parse
inline constexpr OSStatus dskFulErr = -34;
inline constexpr OSStatus nsvErr = -35;  // no such volume: the file system is not mounted
inline constexpr OSStatus ioErr = -36;
inline constexpr OSStatus eofErr = -39;
inline constexpr OSStatus fnfErr = -43;
inline constexpr OSStatus wPrErr = -44;
inline constexpr OSStatus dupFNErr = -48;
inline constexpr OSStatus paramErr = -50;
inline constexpr OSStatus permErr = -54;
inline constexpr OSStatus userCanceledErr = -128;  // the person asked to stop
inline constexpr OSStatus dirNFErr = -120;
inline constexpr OSStatus unimpErr = -4;  // the file system cannot do what was asked
inline constexpr OSStatus errFSNoMoreItems = -1417;
inline constexpr OSStatus errAEDescNotFound = -1701;
inline constexpr OSStatus errAEParamMissed = -1715;
inline constexpr OSStatus eventNotHandledErr = -9874;
inline constexpr OSStatus errAENoSuchProperty = -4979;  // "list property not supported"
inline constexpr OSStatus movieListFullErr = 32767;     // the sound instance pool is full

// The one place where operating-system errors become statuses.
OSStatus statusFromErrno(int error) noexcept;

}  // namespace sylvora
