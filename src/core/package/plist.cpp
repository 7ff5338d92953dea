#include "core/package/plist.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>
#include <cstdlib>
#include <limits>

namespace sylvora {

void PlistDeleter::operator()(void* node) const noexcept {
    if (node) plist_free(static_cast<plist_t>(node));
}

namespace {

bool isSpaceOrEnd(char c) { return c == '>' || c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '/'; }

// Counts opening and closing <array> and <dict> tags; an empty "<array/>" opens nothing. Tags inside
// comments count too, which can only make the answer more careful.
bool xmlNestingWithin(const QByteArray& bytes, int limit) {
    int depth = 0;
    const char* data = bytes.constData();
    const qsizetype size = bytes.size();
    for (qsizetype i = bytes.indexOf('<'); i >= 0 && i + 1 < size; i = bytes.indexOf('<', i + 1)) {
        const bool closing = data[i + 1] == '/';
        const qsizetype nameStart = i + (closing ? 2 : 1);
        qsizetype nameLength = 0;
        for (const char* tag : {"array", "dict"}) {
            const auto length = static_cast<qsizetype>(std::strlen(tag));
            if (nameStart + length < size && std::memcmp(data + nameStart, tag, static_cast<std::size_t>(length)) == 0 &&
                isSpaceOrEnd(data[nameStart + length]))
                nameLength = length;
        }
        if (nameLength == 0) continue;
        if (closing) {
            depth = std::max(0, depth - 1);
            continue;
        }
        const qsizetype end = bytes.indexOf('>', nameStart + nameLength);
        if (end > 0 && data[end - 1] == '/') continue;  // "<array/>"
        if (++depth > limit) return false;
    }
    return true;
}

std::uint64_t bigEndian(const unsigned char* p, int width) {
    std::uint64_t value = 0;
    for (int i = 0; i < width; ++i) value = (value << 8) | p[i];
    return value;
}

// Walks a binary property list's object graph without recursion: the height of every container is
// the largest height of its children plus one, and an object reached again while it is still being
// walked is a cycle, which no parser could end.
bool binaryNestingWithin(const QByteArray& bytes, int limit) {
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.constData());
    const auto size = static_cast<std::uint64_t>(bytes.size());
    if (size < 8 + 32) return false;
    const unsigned char* trailer = data + size - 32;
    const int offsetWidth = trailer[6];
    const int refWidth = trailer[7];
    const std::uint64_t count = bigEndian(trailer + 8, 8);
    const std::uint64_t top = bigEndian(trailer + 16, 8);
    const std::uint64_t table = bigEndian(trailer + 24, 8);
    if (offsetWidth < 1 || offsetWidth > 8 || refWidth < 1 || refWidth > 8 || count == 0 || top >= count ||
        table >= size || count > (size - table) / static_cast<std::uint64_t>(offsetWidth))
        return false;

    // The children of object `index`: where its references start and how many there are.
    const auto children = [&](std::uint64_t index, std::uint64_t& first, std::uint64_t& number) {
        first = number = 0;
        const std::uint64_t offset = bigEndian(data + table + index * static_cast<std::uint64_t>(offsetWidth), offsetWidth);
        if (offset >= size) return false;
        const int type = data[offset] >> 4;
        if (type != 0xA && type != 0xC && type != 0xD) return true;  // not a container
        std::uint64_t length = data[offset] & 0x0F;
        std::uint64_t start = offset + 1;
        if (length == 0x0F) {
            if (start >= size || (data[start] >> 4) != 0x1) return false;
            const int width = 1 << (data[start] & 0x0F);
            if (width > 8 || start + 1 + static_cast<std::uint64_t>(width) > size) return false;
            length = bigEndian(data + start + 1, width);
            start += 1 + static_cast<std::uint64_t>(width);
        }
        number = type == 0xD ? 2 * length : length;
        if (length > size || start + number * static_cast<std::uint64_t>(refWidth) > size) return false;
        first = start;
        return true;
    };

    enum : std::uint8_t { Unseen, Open, Done };
    std::vector<std::uint8_t> state(count, Unseen);
    std::vector<std::uint16_t> height(count, 0);
    struct Frame {
        std::uint64_t index, first, number, next;
    };
    std::vector<Frame> stack;
    const auto enter = [&](std::uint64_t index) {
        Frame frame{index, 0, 0, 0};
        if (!children(index, frame.first, frame.number)) return false;
        state[index] = Open;
        stack.push_back(frame);
        return static_cast<int>(stack.size()) <= limit || frame.number == 0;
    };
    if (!enter(top)) return false;
    while (!stack.empty()) {
        Frame& frame = stack.back();
        if (frame.next == frame.number) {
            const bool container = frame.first != 0;
            state[frame.index] = Done;
            const std::uint16_t own = static_cast<std::uint16_t>(height[frame.index] + (container ? 1 : 0));
            height[frame.index] = own;
            stack.pop_back();
            if (own > limit) return false;
            if (!stack.empty())
                height[stack.back().index] = std::max(height[stack.back().index], own);
            continue;
        }
        const std::uint64_t child = bigEndian(data + frame.first + frame.next * static_cast<std::uint64_t>(refWidth), refWidth);
        ++frame.next;
        if (child >= count || state[child] == Open) return false;
        if (state[child] == Done) {
            height[frame.index] = std::max(height[frame.index], height[child]);
            continue;
        }
        if (!enter(child)) return false;
    }
    return true;
}

}  // namespace

bool plistNestingWithin(const QByteArray& bytes, int limit) {
    return bytes.startsWith("bplist") ? binaryNestingWithin(bytes, limit) : xmlNestingWithin(bytes, limit);
}

PlistPtr plistParse(const QByteArray& bytes) {
    if (bytes.isEmpty() || static_cast<quint64>(bytes.size()) > std::numeric_limits<std::uint32_t>::max())
        return nullptr;
    if (!plistNestingWithin(bytes, PLIST_MAX_NESTING)) return nullptr;
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
