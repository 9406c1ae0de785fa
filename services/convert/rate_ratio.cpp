#include "services/convert/rate_ratio.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace atdp::services {
namespace {

// The last two convergents of a continued fraction, of numerators or of denominators.
struct Convergents {
    std::uint64_t before;
    std::uint64_t last;

    // The greatest term that keeps the next one in bounds.
    std::uint64_t room(std::uint64_t most) const {
        return last == 0 ? most : (most - before) / last;
    }
    void add(std::uint64_t term) { before = std::exchange(last, term * last + before); }
};

}  // namespace

// The continued fraction of the ratio, until it is met to the precision of a double or the terms
// grow out of bounds.
RateRatio rateRatio(double inRate, double outRate, std::uint32_t maxTerm) {
    const double ratio = inRate / outRate;
    Convergents numerators{0, 1};
    Convergents denominators{1, 0};
    double rest = ratio;
    for (;;) {
        const double term = std::floor(rest);
        const std::uint64_t room = std::min(numerators.room(maxTerm), denominators.room(maxTerm));
        const bool isLast = term >= static_cast<double>(room);
        const std::uint64_t used = isLast ? room : static_cast<std::uint64_t>(term);
        // A term cut down to less than half is worse than none.
        if (denominators.last != 0 && static_cast<double>(used) < term / 2) break;
        numerators.add(used);
        denominators.add(used);
        const double met =
            static_cast<double>(numerators.last) / static_cast<double>(denominators.last);
        if (isLast || std::fabs(met - ratio) <= 0x1p-51 * ratio) break;
        rest = 1 / (rest - term);
    }
    return {static_cast<std::uint32_t>(numerators.last),
            static_cast<std::uint32_t>(denominators.last)};
}

}  // namespace atdp::services
