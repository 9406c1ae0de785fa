// How far a decode has come and how long it still takes, on the terminal.
#pragma once

#include <chrono>
#include <cstdint>

#include "host/terminal_line.h"

namespace atdp::host {

// Gone from the terminal when it goes out of scope.
class ProgressBar {
 public:
    explicit ProgressBar(double totalFrames) : totalFrames_(totalFrames) {}

    void update(std::uint64_t framesDone);

 private:
    double totalFrames_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    TerminalLine line_;
};

}  // namespace atdp::host
