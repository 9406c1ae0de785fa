#pragma once

#include <cstdint>

namespace atdp::services {

// Two rates in lowest terms: `in` frames at the one last as long as `out` frames at the other.
struct RateRatio {
    std::uint32_t in = 1;
    std::uint32_t out = 1;
};

// The ratio of two rates in Hz, positive and finite, no further apart than kMaxRateRatio. Exact
// where terms of 24 bits are enough, as for all whole numbers of Hz up to 16 MHz; else the closest
// such.
RateRatio rateRatio(double inRate, double outRate);

}  // namespace atdp::services
