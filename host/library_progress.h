// How far the work on many files has come: counted, drawn on the terminal and summed up.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "host/file_result.h"
#include "host/terminal_line.h"

namespace atdp::host {

class LibraryProgress {
 public:
    // Draws only when `shown`. The line is gone from the terminal when this goes out of scope.
    LibraryProgress(std::size_t files, bool shown);

    // Counts what has been worked through. Any thread.
    void addSound(double seconds) { soundSeconds_ += seconds; }
    void add(Outcome outcome) { ++countOf(outcome); }

    // Draws, when it is time for it. Like clear(), for the thread that made this.
    void update();

    // To be called before anything else is written to the terminal.
    void clear();

    // Such as "2000 files: 1940 decoded, 10 skipped (4 not sound), 50 failed"; `doneWord` is
    // "decoded". Files that nothing was done about are "left".
    std::string summary(std::string_view doneWord) const;

 private:
    using Count = std::atomic<std::size_t>;

    Count& countOf(Outcome outcome) { return counts_[static_cast<std::size_t>(outcome)]; }
    std::size_t count(Outcome outcome) const { return counts_[static_cast<std::size_t>(outcome)]; }
    std::size_t filesDone() const;
    std::string timeLeft() const;

    const std::size_t files_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    Count counts_[4] = {};
    std::atomic<double> soundSeconds_ = 0;
    std::optional<TerminalLine> line_;
};

}  // namespace atdp::host
