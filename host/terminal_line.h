// A line at the bottom of the terminal that is written over and over.
#pragma once

#include <chrono>
#include <string>

namespace atdp::host {

// Standard error, when it is a terminal; nothing at all when it is not.
class TerminalLine {
 public:
    TerminalLine();
    ~TerminalLine() { clear(); }
    TerminalLine(const TerminalLine&) = delete;
    TerminalLine& operator=(const TerminalLine&) = delete;

    // Whether it is time for a new text: some ten times a second.
    bool isDue() const;
    void show(const std::string& text);

    // To be called before anything else is written to the terminal.
    void clear();

 private:
    bool onTerminal_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point lastShown_;
};

}  // namespace atdp::host
