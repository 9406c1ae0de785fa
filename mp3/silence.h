// Silence at the ends of a run of interleaved samples.
#pragma once

#include <cstdint>

namespace atdp {

// The greatest magnitude that is silent, from decibels relative to full scale: 0.001 at -60.
float silenceLevel(float decibels);

// How many frames in a row are silent, from the first frame on or from the last one back. A frame
// is silent when no sample's magnitude is above the level; one that is not a number is not above.
std::uint64_t silentFramesAtStart(const float* samples, std::uint64_t frames,
                                  std::uint32_t channels, float level);
std::uint64_t silentFramesAtEnd(const float* samples, std::uint64_t frames, std::uint32_t channels,
                                float level);

}  // namespace atdp
