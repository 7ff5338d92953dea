#pragma once

// Whether an INI settings file holds values that QSettings would decode through QDataStream
// ("@Variant(...)" and "@DateTime(...)"), which believes the lengths it reads: one damaged value
// can make QSettings ask for gigabytes as it opens the file. Sylvora never writes such values.

#include <QByteArray>

namespace sylvora {

// True when a value, or an element of a list value, reads as one of those forms once QSettings has
// split the file into lines and unescaped it: through escapes of any length, escapes that read as
// nothing, quotes and continued lines alike. Text that merely contains the form (a name written
// as "@@Variant(" or "@String(...)") is not such a value.
bool holdsSerializedValues(const QByteArray& file);

}  // namespace sylvora
