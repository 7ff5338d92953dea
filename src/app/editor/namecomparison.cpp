#include "app/editor/namecomparison.h"

namespace sylvora::app {

namespace {
// The digit run starting at `at`, without its leading zeros; `at` moves past the run.
QStringView digitRun(const QString& text, qsizetype& at) {
    while (at < text.size() - 1 && text[at] == u'0' && text[at + 1].isDigit()) ++at;
    const qsizetype start = at;
    while (at < text.size() && text[at].isDigit()) ++at;
    return QStringView(text).mid(start, at - start);
}

int compareRuns(QStringView a, QStringView b) {
    if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;  // more digits, larger value
    for (qsizetype i = 0; i < a.size(); ++i) {
        const int difference = a[i].digitValue() - b[i].digitValue();
        if (difference != 0) return difference;
    }
    return 0;
}
}  // namespace

int compareNamesNumerically(const QString& a, const QString& b) {
    qsizetype i = 0;
    qsizetype j = 0;
    while (i < a.size() && j < b.size()) {
        if (a[i].isDigit() && b[j].isDigit()) {
            const int order = compareRuns(digitRun(a, i), digitRun(b, j));
            if (order != 0) return order;
            continue;
        }
        const char16_t x = a[i].toCaseFolded().unicode();
        const char16_t y = b[j].toCaseFolded().unicode();
        if (x != y) return x < y ? -1 : 1;
        ++i;
        ++j;
    }
    if (i < a.size()) return 1;
    if (j < b.size()) return -1;
    return 0;
}

}  // namespace sylvora::app
