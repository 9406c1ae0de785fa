// What holds of every sound file, sound or damaged.
#pragma once

#include <cstdint>
#include <span>

namespace atdp::fuzz {

// Opens the bytes as a file and checks its description; plays it straight, from places that
// `choices` picks, and converted. Counts are never above what was asked for, nothing is written
// behind them, a straight run has the stated length, and a run from anywhere has the straight run's
// samples.
void checkSound(std::span<const std::uint8_t> file, std::uint32_t choices);

}  // namespace atdp::fuzz
