// A clean end on Ctrl-C and its kin.
#pragma once

namespace atdp::host {

// From now on SIGINT, SIGTERM and SIGHUP only raise a flag, and interrupt a blocking call.
void catchStopSignals();

// Throws Interrupted once one of those signals has come. Any thread.
void checkForStop();

}  // namespace atdp::host
