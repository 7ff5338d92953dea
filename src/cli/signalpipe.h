#pragma once

// Brings SIGINT and SIGTERM into the Qt event loop: the handler only writes one byte into a pipe
// (all a signal handler may safely do), and a socket notifier on the other end calls `onSignal`
// on the main thread, where the world may be touched. The previous handlers come back when this
// object is destroyed.

#include <csignal>
#include <functional>
#include <memory>

class QSocketNotifier;

namespace sylvora::cli {

class SignalPipe {
public:
    explicit SignalPipe(std::function<void(int signal)> onSignal);
    ~SignalPipe();
    SignalPipe(const SignalPipe&) = delete;
    SignalPipe& operator=(const SignalPipe&) = delete;

    bool isValid() const { return notifier != nullptr; }

private:
    void drain();

    std::function<void(int)> onSignal;
    std::unique_ptr<QSocketNotifier> notifier;
    struct sigaction previousInterrupt {};
    struct sigaction previousTerminate {};
};

}  // namespace sylvora::cli
