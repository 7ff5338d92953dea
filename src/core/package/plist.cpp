#include "core/package/plist.h"

#include <cmath>
#include <cstdlib>
#include <limits>

namespace sylvora {

void PlistDeleter::operator()(void* node) const noexcept {
    if (node) plist_free(static_cast<plist_t>(node));
}

PlistPtr plistParse(const QByteArray& bytes) {
    if (bytes.isEmpty() || static_cast<quint64>(bytes.size()) > std::numeric_limits<std::uint32_t>::max())
        return nullptr;
    plist_t root = nullptr;
    plist_from_memory(bytes.constData(), static_cast<std::uint32_t>(bytes.size()), &root);
    return PlistPtr(root);
}

namespace {

using Serializer = void (*)(plist_t, char**, std::uint32_t*);
using Releaser = void (*)(char*);

QByteArray serialize(plist_t root, Serializer write, Releaser release) {
    if (!root) return {};
    char* data = nullptr;
    std::uint32_t length = 0;
    write(root, &data, &length);
    if (!data) return {};
    QByteArray bytes(data, static_cast<qsizetype>(length));
    release(data);
    return bytes;
}

bool isType(plist_t node, plist_type type) { return node && plist_get_node_type(node) == type; }

}  // namespace

QByteArray plistToXml(plist_t root) { return serialize(root, plist_to_xml, plist_to_xml_free); }

QByteArray plistToBinary(plist_t root) { return serialize(root, plist_to_bin, plist_to_bin_free); }

bool plistIsDict(plist_t node) { return isType(node, PLIST_DICT); }
bool plistIsArray(plist_t node) { return isType(node, PLIST_ARRAY); }

namespace {

plist_t valueOf(plist_t dict, const char* key) {
    return plistIsDict(dict) ? plist_dict_get_item(dict, key) : nullptr;
}

// Integers arrive as 64-bit patterns; negative values are stored in two's complement, so the
// signed reading is the one a writer of 32-bit integers meant.
std::optional<double> numberOf(plist_t node) {
    if (isType(node, PLIST_REAL)) {
        double value = 0.0;
        plist_get_real_val(node, &value);
        return value;
    }
    if (isType(node, PLIST_UINT)) {
        std::uint64_t bits = 0;
        plist_get_uint_val(node, &bits);
        return static_cast<double>(static_cast<std::int64_t>(bits));
    }
    return std::nullopt;
}

}  // namespace

std::optional<QString> plistGetString(plist_t dict, const char* key) {
    const plist_t node = valueOf(dict, key);
    if (!isType(node, PLIST_STRING)) return std::nullopt;
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    if (!text) return QString(QLatin1String(""));
    return QString::fromUtf8(text, static_cast<qsizetype>(length));
}

std::optional<std::int32_t> plistGetInt32(plist_t dict, const char* key) {
    const std::optional<double> number = numberOf(valueOf(dict, key));
    if (!number || std::isnan(*number)) return std::nullopt;
    constexpr double lowest = std::numeric_limits<std::int32_t>::min();
    constexpr double highest = std::numeric_limits<std::int32_t>::max();
    if (*number <= lowest) return std::numeric_limits<std::int32_t>::min();
    if (*number >= highest) return std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::trunc(*number));
}

std::optional<double> plistGetDouble(plist_t dict, const char* key) { return numberOf(valueOf(dict, key)); }

plist_t plistGetArray(plist_t dict, const char* key) {
    const plist_t node = valueOf(dict, key);
    return plistIsArray(node) ? node : nullptr;
}

plist_t plistGetDict(plist_t dict, const char* key) {
    const plist_t node = valueOf(dict, key);
    return plistIsDict(node) ? node : nullptr;
}

std::uint32_t plistArraySize(plist_t array) { return plistIsArray(array) ? plist_array_get_size(array) : 0; }

plist_t plistArrayItem(plist_t array, std::uint32_t index) {
    return index < plistArraySize(array) ? plist_array_get_item(array, index) : nullptr;
}

void plistSetString(plist_t dict, const char* key, const QString& value) {
    plist_dict_set_item(dict, key, plist_new_string(value.toUtf8().constData()));
}

void plistSetInt32(plist_t dict, const char* key, std::int32_t value) {
    plist_dict_set_item(dict, key, plist_new_uint(static_cast<std::uint64_t>(static_cast<std::int64_t>(value))));
}

void plistSetDouble(plist_t dict, const char* key, double value) {
    plist_dict_set_item(dict, key, plist_new_real(value));
}

void plistSetNode(plist_t dict, const char* key, PlistPtr value) {
    plist_dict_set_item(dict, key, static_cast<plist_t>(value.release()));
}

void plistAppend(plist_t array, PlistPtr value) {
    plist_array_append_item(array, static_cast<plist_t>(value.release()));
}

PlistPtr plistNewDict() { return PlistPtr(plist_new_dict()); }
PlistPtr plistNewArray() { return PlistPtr(plist_new_array()); }

}  // namespace sylvora
