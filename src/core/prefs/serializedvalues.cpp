// The INI syntax as QSettings reads it, as far as it decides what a value starts with: a line runs
// to an end of line outside quotes, or to a ";" outside quotes; a backslash takes the character
// after it along; the value starts after the line's first "=" outside quotes; within it a comma
// outside quotes starts another element, spaces are skipped where an element starts and after a
// closing quote, and escapes are decoded.

#include "core/prefs/serializedvalues.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

namespace sylvora {

namespace {

int digitValue(char ch, int base) {
    const int value = ch >= '0' && ch <= '9'   ? ch - '0'
                      : ch >= 'a' && ch <= 'f' ? ch - 'a' + 10
                      : ch >= 'A' && ch <= 'F' ? ch - 'A' + 10
                                               : 99;
    return value < base ? value : -1;
}

bool isSpace(char ch) { return ch == ' ' || ch == '\t'; }

bool startsSerialized(const std::u16string& element) {
    return element.starts_with(u"@Variant(") || element.starts_with(u"@DateTime(");
}

// The value text [at, end) of one line, unescaped and split as QSettings does.
bool valueHoldsSerialized(const QByteArray& text, qsizetype at, qsizetype end) {
    static constexpr char NAMED[][2] = {{'a', '\a'}, {'b', '\b'}, {'f', '\f'}, {'n', '\n'}, {'r', '\r'}, {'t', '\t'},
                                        {'v', '\v'}, {'"', '"'},   {'?', '?'},   {'\'', '\''}, {'\\', '\\'}};
    std::u16string element;
    bool inQuotes = false;
    bool skipSpaces = true;
    while (at < end) {
        const char ch = text[at];
        if (skipSpaces && isSpace(ch)) {
            ++at;
            continue;
        }
        skipSpaces = false;
        ++at;
        if (ch == '"') {
            inQuotes = !inQuotes;
            skipSpaces = !inQuotes;
        } else if (ch == ',' && !inQuotes) {
            if (startsSerialized(element)) return true;
            element.clear();
            skipSpaces = true;
        } else if (ch != '\\') {
            element += static_cast<char16_t>(static_cast<unsigned char>(ch));
        } else if (at < end) {
            const char code = text[at++];
            const auto named = std::find_if(std::begin(NAMED), std::end(NAMED), [&](const char* pair) { return pair[0] == code; });
            const int base = code == 'x' ? 16 : digitValue(code, 8) >= 0 ? 8 : 0;
            if (named != std::end(NAMED)) {
                element += static_cast<char16_t>((*named)[1]);
            } else if (base == 8 || (base == 16 && at < end && digitValue(text[at], 16) >= 0)) {
                // Qt reads every digit that follows and keeps the value to 16 bits.
                char16_t value = base == 8 ? static_cast<char16_t>(digitValue(code, 8)) : 0;
                for (int digit = 0; at < end && (digit = digitValue(text[at], base)) >= 0; ++at)
                    value = static_cast<char16_t>(value * base + digit);
                element += value;
            } else if ((code == '\n' || code == '\r') && at < end && (text[at] == '\n' || text[at] == '\r') &&
                       text[at] != code) {
                ++at;  // a continued line's \r\n or \n\r
            }
        }
    }
    return startsSerialized(element);
}

}  // namespace

bool holdsSerializedValues(const QByteArray& file) {
    const qsizetype size = file.size();
    qsizetype at = 0;
    while (at < size) {
        while (at < size && (isSpace(file[at]) || std::string_view("\n\r\v\f").find(file[at]) != std::string_view::npos)) ++at;
        const qsizetype start = at;
        qsizetype equals = -1;
        bool inQuotes = false;
        while (at < size) {
            const char ch = file[at];
            if ((ch == '\n' || ch == '\r' || ch == ';') && !inQuotes) break;
            ++at;
            if (ch == '=' && !inQuotes && equals < 0) {
                equals = at - 1;
            } else if (ch == '"') {
                inQuotes = !inQuotes;
            } else if (ch == '\\' && at < size) {
                const char next = file[at++];
                if (at < size && ((next == '\n' && file[at] == '\r') || (next == '\r' && file[at] == '\n'))) ++at;
            }
        }
        const qsizetype end = at;
        if (at < size && file[at] == ';')  // the rest of the line is a comment
            while (at < size && file[at] != '\n' && file[at] != '\r') ++at;
        if (start < size && file[start] != '[' && equals >= 0 && valueHoldsSerialized(file, equals + 1, end))
            return true;
    }
    return false;
}

}  // namespace sylvora
