#pragma once

// Property lists through libplist: an owner for plist_t and typed access to dictionary values.
//
// The getters are forgiving in the way world descriptions are read: a key that is absent, or whose
// value is of another type, gives nothing. Any number node (integer or real) serves both an integer
// and a real field; booleans are not numbers.

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <memory>
#include <optional>

#include <plist/plist.h>

namespace sylvora {

struct PlistDeleter {
    void operator()(void* node) const noexcept;
};
// Owns a root node (and with it the whole tree below it).
using PlistPtr = std::unique_ptr<void, PlistDeleter>;

// libplist parses (and frees) nested arrays and dictionaries by recursion, so a deep enough nest
// overflows the stack; no world needs more than a few levels.
inline constexpr int PLIST_MAX_NESTING = 256;

// Parses an XML or binary property list; null when the bytes are neither, or when arrays and
// dictionaries nest deeper than PLIST_MAX_NESTING (checked before libplist sees the bytes).
PlistPtr plistParse(const QByteArray& bytes);
// Whether the containers of a property list nest at most `limit` deep; false for a binary property
// list too damaged to tell.
bool plistNestingWithin(const QByteArray& bytes, int limit);
// Serializes as an XML property list; empty when libplist gives nothing.
QByteArray plistToXml(plist_t root);
// Serializes as a binary property list; empty when libplist gives nothing.
QByteArray plistToBinary(plist_t root);

bool plistIsDict(plist_t node);
bool plistIsArray(plist_t node);

// Dictionary values. `dict` may be null (then nothing is found).
std::optional<QString> plistGetString(plist_t dict, const char* key);
// A number converted to a signed 32-bit integer: reals are truncated toward zero, and values out
// of range are clamped to the nearest bound (NaN gives nothing).
std::optional<std::int32_t> plistGetInt32(plist_t dict, const char* key);
std::optional<double> plistGetDouble(plist_t dict, const char* key);
// Borrowed nodes of the wanted container type, or null.
plist_t plistGetArray(plist_t dict, const char* key);
plist_t plistGetDict(plist_t dict, const char* key);

// The number of elements of an array node, and a borrowed element.
std::uint32_t plistArraySize(plist_t array);
plist_t plistArrayItem(plist_t array, std::uint32_t index);

// Setters replace any value under the key. Integers are stored as integers, reals as reals.
void plistSetString(plist_t dict, const char* key, const QString& value);
void plistSetInt32(plist_t dict, const char* key, std::int32_t value);
void plistSetDouble(plist_t dict, const char* key, double value);
// Takes ownership of `value` (an array or dictionary built by the caller).
void plistSetNode(plist_t dict, const char* key, PlistPtr value);
void plistAppend(plist_t array, PlistPtr value);

PlistPtr plistNewDict();
PlistPtr plistNewArray();

}  // namespace sylvora
