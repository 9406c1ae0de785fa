#include "host/stop_signal.h"

#include <signal.h>

#include "host/failure.h"

namespace atdp::host {
namespace {

volatile sig_atomic_t stopRequested = 0;

void requestStop(int) {
    stopRequested = 1;
}

}  // namespace

void catchStopSignals() {
    struct sigaction action = {};
    action.sa_handler = requestStop;
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction inherited = {};
        sigaction(number, nullptr, &inherited);
        if (inherited.sa_handler == SIG_IGN) continue;  // as nohup wants it
        sigaction(number, &action, nullptr);
    }
}

void checkForStop() {
    if (stopRequested != 0) throw Interrupted();
}

}  // namespace atdp::host
