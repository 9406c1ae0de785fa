#include "host/terminal_line.h"

#include <unistd.h>

#include <cstdio>

#include "host/text_escape.h"

namespace atdp::host {
namespace {

constexpr auto kInterval = std::chrono::milliseconds(100);
constexpr const char* kClearLine = "\r\033[K";
// Text that is too long for the terminal is cut off instead of going on below.
constexpr const char* kWrapOff = "\033[?7l";
constexpr const char* kWrapOn = "\033[?7h";

}  // namespace

TerminalLine::TerminalLine() : onTerminal_(::isatty(STDERR_FILENO) == 1) {}

bool TerminalLine::isDue() const {
    return onTerminal_ && std::chrono::steady_clock::now() - lastShown_ >= kInterval;
}

void TerminalLine::show(const std::string& text) {
    if (!onTerminal_) return;
    std::fprintf(stderr, "%s%s%s%s", kClearLine, kWrapOff, printableText(text).c_str(), kWrapOn);
    shown_ = true;
    lastShown_ = std::chrono::steady_clock::now();
}

void TerminalLine::clear() {
    if (shown_) std::fputs(kClearLine, stderr);
    shown_ = false;
}

}  // namespace atdp::host
