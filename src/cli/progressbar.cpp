#include "cli/progressbar.h"

#include <algorithm>
#include <cmath>

#include "cli/statusline.h"

namespace sylvora::cli {

ProgressBar::ProgressBar(std::FILE* output, QString text)
    : stream(output), label(std::move(text)), enabled(isTerminal(output)) {}

ProgressBar::~ProgressBar() {
    finish();
}

QString ProgressBar::render(const QString& label, double fraction, int width) {
    fraction = std::clamp(fraction, 0.0, 1.0);
    const QString percent = QStringLiteral("%1%").arg(static_cast<int>(std::floor(fraction * 100.0)), 3);
    // "label [#####.....] 100%"
    const int barWidth = std::max(10, width - static_cast<int>(label.size()) - 4 - static_cast<int>(percent.size()));
    const int filled = static_cast<int>(std::floor(fraction * barWidth));
    return label + QStringLiteral(" [") + QString(filled, u'#') + QString(barWidth - filled, u'.') +
           QStringLiteral("] ") + percent;
}

void ProgressBar::update(double fraction) {
    if (!enabled) {
        return;
    }
    const int permille = static_cast<int>(std::clamp(fraction, 0.0, 1.0) * 1000.0);
    const auto now = std::chrono::steady_clock::now();
    if (permille == lastPermille || (permille / 10 == lastPermille / 10 && now - lastDraw < std::chrono::milliseconds(200))) {
        return;
    }
    lastPermille = permille;
    lastDraw = now;
    const int width = std::min(terminalWidth(stream) - 1, 100);
    std::fprintf(stream, "\r%s\x1b[K", render(label, fraction, width).toLocal8Bit().constData());
    std::fflush(stream);
}

void ProgressBar::finish() {
    if (enabled && lastPermille >= 0) {
        std::fputc('\n', stream);
        std::fflush(stream);
    }
    lastPermille = -1;
    enabled = false;
}

}  // namespace sylvora::cli
