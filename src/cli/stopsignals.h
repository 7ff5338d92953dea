#pragma once

// Ctrl+C (SIGINT) and SIGTERM for the commands that work without an event loop (render, make):
// while a StopSignals lives, either signal only sets a flag that the command's work asks at each
// step, so that it can stop, take away its unfinished output and say so. The previous handlers come
// back when it is destroyed. One at a time. [main]

#include <csignal>

namespace sylvora::cli {

class StopSignals {
public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    // The signal that asked to stop, or 0.
    int caught() const;
    // What a command stopped by that signal exits with: 128 plus its number (130, 143).
    int exitCode() const { return 128 + caught(); }

private:
    struct sigaction previousInterrupt {};
    struct sigaction previousTerminate {};
};

}  // namespace sylvora::cli
