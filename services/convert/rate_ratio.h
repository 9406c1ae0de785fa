#pragma once

#include <cstdint>

namespace atdp::services {

// Two rates in lowest terms: `in` frames at the one last as long as `out` frames at the other.
struct RateRatio {
    std::uint32_t in = 1;
    std::uint32_t out = 1;
};

// The ratio of two rates in Hz, positive and finite, no further apart than kMaxRateRatio: exact
// where terms up to `maxTerm` are enough, else the closest such.
RateRatio rateRatio(double inRate, double outRate, std::uint32_t maxTerm);

}  // namespace atdp::services
