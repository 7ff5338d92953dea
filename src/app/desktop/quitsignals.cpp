#include "app/desktop/quitsignals.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <QCoreApplication>

namespace sylvora::app {

namespace {
int gWriteEnd = -1;

void onSignal(int) {
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(gWriteEnd, &byte, 1);  // async-signal-safe
}
}  // namespace

QuitSignals::QuitSignals() {
    if (::pipe2(fds_, O_CLOEXEC | O_NONBLOCK) != 0) return;
    gWriteEnd = fds_[1];
    notifier_ = std::make_unique<QSocketNotifier>(fds_[0], QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
        char drained[16];
        while (::read(fds_[0], drained, sizeof drained) > 0) {
        }
        received_ = true;
        QCoreApplication::exit(0);  // not quit(): a shown window would veto it
    });
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    // A closed terminal or an ended session (SIGHUP) asks to end as politely as SIGTERM does.
    for (const int signalNumber : {SIGTERM, SIGINT, SIGHUP}) sigaction(signalNumber, &action, nullptr);
}

QuitSignals::~QuitSignals() {
    for (const int signalNumber : {SIGTERM, SIGINT, SIGHUP}) signal(signalNumber, SIG_DFL);
    notifier_.reset();
    gWriteEnd = -1;
    for (int fd : fds_) {
        if (fd >= 0) ::close(fd);
    }
}

}  // namespace sylvora::app
