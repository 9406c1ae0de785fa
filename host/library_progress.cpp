#include "host/library_progress.h"

#include <algorithm>

#include "host/number_text.h"

namespace atdp::host {
namespace {

constexpr std::size_t kCells = 20;

}  // namespace

LibraryProgress::LibraryProgress(std::size_t files, bool shown) : files_(files) {
    if (shown) line_.emplace();
}

std::size_t LibraryProgress::filesDone() const {
    std::size_t done = 0;
    for (const Count& count : counts_) done += count;
    return done;
}

// Goes by the files that took time: those that are passed over, as on a second run, take none.
std::string LibraryProgress::timeLeft() const {
    const std::size_t worked = count(Outcome::kDone) + count(Outcome::kFailed);
    if (worked == 0) return "";
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start_;
    const auto left = static_cast<double>(files_ - filesDone());
    return ", " + clockText(spent.count() * left / static_cast<double>(worked)) + " left";
}

void LibraryProgress::update() {
    if (!line_ || !line_->isDue()) return;
    const std::size_t done = filesDone();
    std::string cells(kCells, '-');
    std::fill_n(cells.begin(), done * kCells / std::max<std::size_t>(files_, 1), '#');
    line_->show("[" + cells + "] " + std::to_string(done) + " of " + std::to_string(files_) +
                " files, " + clockText(soundSeconds_) + " of sound, " +
                std::to_string(count(Outcome::kFailed)) + " failed" + timeLeft());
}

void LibraryProgress::clear() {
    if (line_) line_->clear();
}

std::string LibraryProgress::summary(std::string_view doneWord) const {
    const std::size_t notSound = count(Outcome::kNotSound);
    const std::size_t skipped = count(Outcome::kComplete) + notSound;
    std::string text = std::to_string(files_) + (files_ == 1 ? " file: " : " files: ") +
                       std::to_string(count(Outcome::kDone)) + " " + std::string(doneWord) + ", " +
                       std::to_string(skipped) + " skipped";
    if (notSound > 0) text += " (" + std::to_string(notSound) + " not sound)";
    text += ", " + std::to_string(count(Outcome::kFailed)) + " failed";
    if (filesDone() < files_) text += ", " + std::to_string(files_ - filesDone()) + " left";
    return text;
}

}  // namespace atdp::host
