#include "host/progress_bar.h"

#include <algorithm>
#include <string>

#include "host/number_text.h"

namespace atdp::host {
namespace {

constexpr std::size_t kCells = 30;

}  // namespace

void ProgressBar::update(std::uint64_t framesDone) {
    if (!line_.isDue() || framesDone == 0) return;
    const double done = static_cast<double>(framesDone);
    const double part = std::min(done / std::max(totalFrames_, done), 1.0);
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start_;
    const double secondsLeft = spent.count() * (1 - part) / part;

    std::string cells(kCells, '-');
    std::fill_n(cells.begin(), static_cast<std::ptrdiff_t>(part * kCells), '#');
    const std::string percent = std::to_string(static_cast<int>(part * 100));
    line_.show("[" + cells + "] " + percent + " %, " + clockText(secondsLeft) + " left");
}

}  // namespace atdp::host
