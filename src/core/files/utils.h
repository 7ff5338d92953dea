#pragma once

// File helpers shared by the world model, its packages and the editor.

#include <QString>
#include <span>

#include "core/files/alias.h"

namespace sylvora {

inline constexpr std::size_t COPY_BUFFER_SIZE = 5242880;  // 5 MB per copy pass
inline constexpr unsigned kTextEncodingUnknown = 0xFFFF;

// Finds the existing object `name` inside `parent`. A name that is empty, ".", "..", holds "/" or
// NUL, or is longer than 255 UTF-16 code units is refused with paramErr before any lookup, so a
// name can never reach outside its folder.
OSStatus FSMakeFSRefCFString(const FSRef& parent, const QString& name, unsigned textEncodingHint,
                             FSRef& out);

// Position of the first alias in `list` that resolves to the same object as `alias`; -1 when none
// does or when `alias` itself does not resolve. Null entries are passed over.
int findAliasInList(const Alias& alias, std::span<const Alias* const> list);
bool isFileAliasInList(const Alias& alias, std::span<const Alias* const> list);

// Creates a file of the source's name in `destinationDirectory` (dupFNErr, nothing written, when one
// exists) and copies the source's data into it, keeping its permission bits.
OSStatus myCopyFileDataForkAndType(const FSRef& source, const FSRef& destinationDirectory);

// An optionally negative decimal integer of ASCII digits, at most 255 characters; no range check.
bool isValidIntegerCFString(const QString& text);

// The running application's name; a null string when it cannot be had.
QString copyApplicationNameCFString();

}  // namespace sylvora
