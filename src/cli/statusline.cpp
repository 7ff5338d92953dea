#include "cli/statusline.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace sylvora::cli {

bool isTerminal(std::FILE* stream) {
    return ::isatty(::fileno(stream)) == 1;
}

int terminalWidth(std::FILE* stream) {
    winsize size{};
    if (::ioctl(::fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        return size.ws_col;
    }
    return 80;
}

StatusLine::StatusLine(std::FILE* output) : StatusLine(output, isTerminal(output)) {}

StatusLine::StatusLine(std::FILE* output, bool onTerminal) : stream(output), terminal(onTerminal) {}

StatusLine::~StatusLine() {
    finish();
}

void StatusLine::show(const QString& text) {
    if (text == lastText && open) {
        return;
    }
    lastText = text;
    if (terminal) {
        // One column is kept free so the cursor never wraps onto a new line.
        const int width = terminalWidth(stream) - 1;
        QString shown = text;
        if (shown.size() > width && width > 1) {
            shown = shown.left(width - 1) + QChar(0x2026);
        }
        std::fprintf(stream, "\r%s\x1b[K", shown.toLocal8Bit().constData());
        open = true;
    } else {
        std::fprintf(stream, "%s\n", text.toLocal8Bit().constData());
        open = true;
    }
    std::fflush(stream);
}

void StatusLine::finish() {
    if (open && terminal) {
        std::fputc('\n', stream);
        std::fflush(stream);
    }
    open = false;
}

}  // namespace sylvora::cli
