#include "host/console.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "host/failure.h"
#include "host/stop_signal.h"
#include "host/text_escape.h"

namespace atdp::host {

void print(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
        std::fflush(stdout) == 0) {
        return;
    }
    if (errno == EPIPE) throw ClosedPipe();
    if (errno == EINTR) checkForStop();
    throw Failure("standard output", std::strerror(errno));
}

void printError(std::string_view message) {
    const std::string line = "atdp: " + printableText(message) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace atdp::host
