#include "host/stop_signal.h"

#include <signal.h>

#include <atomic>

#include "host/failure.h"

namespace atdp::host {
namespace {

// Read by every thread that works.
std::atomic<bool> stopRequested = false;
static_assert(std::atomic<bool>::is_always_lock_free);  // or a handler must not touch it

void requestStop(int) {
    stopRequested = true;
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
    if (stopRequested) throw Interrupted();
}

}  // namespace atdp::host
