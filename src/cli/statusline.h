#pragma once

// One live line of status. On a terminal it is rewritten in place (carriage return, then the line,
// then erase to the end); elsewhere (a pipe, a log) each distinct text is written once on a line
// of its own, so logs show changes instead of fifteen lines a second.

#include <QString>
#include <cstdio>

namespace sylvora::cli {

bool isTerminal(std::FILE* stream);

class StatusLine {
public:
    explicit StatusLine(std::FILE* stream);
    StatusLine(std::FILE* stream, bool terminal);
    ~StatusLine();
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    // Shows `text`; on a terminal it is cut to the terminal's width.
    void show(const QString& text);
    // Ends the line so that what follows starts on a fresh one.
    void finish();
    bool onTerminal() const { return terminal; }

private:
    std::FILE* stream;
    bool terminal;
    bool open = false;
    QString lastText;
};

// Columns of the terminal behind `stream`; 80 when unknown.
int terminalWidth(std::FILE* stream);

}  // namespace sylvora::cli
