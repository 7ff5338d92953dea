#include "cli/signalpipe.h"

#include <QSocketNotifier>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace sylvora::cli {

namespace {

// One process-wide pipe: signal handlers cannot carry a pointer to their object.
int pipeEnds[2] = {-1, -1};

void writeSignalByte(int signal) {
    const int savedErrno = errno;
    const auto byte = static_cast<unsigned char>(signal);
    // A full pipe already holds a pending signal; losing this byte loses nothing.
    [[maybe_unused]] const ssize_t written = ::write(pipeEnds[1], &byte, 1);
    errno = savedErrno;
}

}  // namespace

SignalPipe::SignalPipe(std::function<void(int)> callback) : onSignal(std::move(callback)) {
    if (pipeEnds[0] >= 0 || ::pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0) {
        return;
    }
    struct sigaction action {};
    action.sa_handler = writeSignalByte;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGINT, &action, &previousInterrupt);
    ::sigaction(SIGTERM, &action, &previousTerminate);
    notifier = std::make_unique<QSocketNotifier>(pipeEnds[0], QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), [this] { drain(); });
}

SignalPipe::~SignalPipe() {
    if (!notifier) {
        return;
    }
    notifier.reset();
    ::sigaction(SIGINT, &previousInterrupt, nullptr);
    ::sigaction(SIGTERM, &previousTerminate, nullptr);
    ::close(pipeEnds[0]);
    ::close(pipeEnds[1]);
    pipeEnds[0] = pipeEnds[1] = -1;
}

void SignalPipe::drain() {
    unsigned char bytes[16];
    ssize_t count = 0;
    while ((count = ::read(pipeEnds[0], bytes, sizeof bytes)) > 0) {
        for (ssize_t i = 0; i < count; ++i) {
            onSignal(bytes[i]);
        }
    }
}

}  // namespace sylvora::cli
