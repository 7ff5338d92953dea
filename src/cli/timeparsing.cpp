#include "cli/timeparsing.h"

#include <cmath>

namespace sylvora::cli {

namespace {

// Reads an unsigned decimal number (with an optional fraction) at `pos`; advances past it.
std::optional<double> readNumber(const QString& text, qsizetype& pos) {
    const qsizetype start = pos;
    while (pos < text.size() && (text[pos].isDigit() || text[pos] == u'.')) {
        if (!text[pos].isDigit() && !(text[pos] == u'.' && pos > start)) {
            return std::nullopt;
        }
        ++pos;
    }
    if (pos == start) {
        return std::nullopt;
    }
    bool ok = false;
    const double value = text.mid(start, pos - start).toDouble(&ok);
    if (!ok || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

}  // namespace

std::optional<double> parseDuration(const QString& input) {
    const QString text = input.trimmed().toLower();
    if (text.isEmpty()) {
        return std::nullopt;
    }
    qsizetype pos = 0;
    double total = 0.0;
    int lastUnitRank = 3;  // units must come in the order h, m, s
    bool sawUnit = false;
    while (pos < text.size()) {
        const std::optional<double> number = readNumber(text, pos);
        if (!number) {
            return std::nullopt;
        }
        if (pos == text.size()) {
            if (sawUnit) {
                return std::nullopt;  // "1h30" is ambiguous: say what the 30 is
            }
            total = *number;
            break;
        }
        int rank = 0;
        double factor = 1.0;
        switch (text[pos].unicode()) {
        case u'h': rank = 2; factor = 3600.0; break;
        case u'm': rank = 1; factor = 60.0; break;
        case u's': rank = 0; factor = 1.0; break;
        default: return std::nullopt;
        }
        if (rank >= lastUnitRank) {
            return std::nullopt;
        }
        lastUnitRank = rank;
        sawUnit = true;
        total += *number * factor;
        ++pos;
    }
    if (!std::isfinite(total)) {
        return std::nullopt;
    }
    return total;
}

QString formatClock(double seconds) {
    const long long whole = seconds > 0.0 ? static_cast<long long>(std::floor(seconds)) : 0;
    const long long h = whole / 3600;
    const long long m = (whole / 60) % 60;
    const long long s = whole % 60;
    if (h > 0) {
        return QStringLiteral("%1:%2:%3").arg(h).arg(m, 2, 10, QChar(u'0')).arg(s, 2, 10, QChar(u'0'));
    }
    return QStringLiteral("%1:%2").arg(m).arg(s, 2, 10, QChar(u'0'));
}

}  // namespace sylvora::cli
