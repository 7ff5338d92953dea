#include "cli/stopsignals.h"

namespace sylvora::cli {

namespace {

volatile std::sig_atomic_t gCaught = 0;

void onStopSignal(int signalNumber) { gCaught = signalNumber; }

}  // namespace

StopSignals::StopSignals() {
    gCaught = 0;
    struct sigaction action {};
    action.sa_handler = onStopSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, &previousInterrupt);
    sigaction(SIGTERM, &action, &previousTerminate);
}

StopSignals::~StopSignals() {
    sigaction(SIGINT, &previousInterrupt, nullptr);
    sigaction(SIGTERM, &previousTerminate, nullptr);
}

int StopSignals::caught() const { return gCaught; }

}  // namespace sylvora::cli
