// Standard output and standard error.
#pragma once

#include <string_view>

namespace atdp::host {

// Writes to standard output at once. Throws ClosedPipe or Failure when it cannot be written, and
// Interrupted when a stop signal breaks a wait.
void print(std::string_view text);

// Writes "atdp: MESSAGE" to standard error, always as one line.
void printError(std::string_view message);

}  // namespace atdp::host
