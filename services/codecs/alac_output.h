#pragma once

#include <cstdint>

#include "services/io/byte_cursor.h"

namespace atdp::services {

// What follows prediction in an element of one or two channels.
struct AlacOutput {
    unsigned channels = 0;
    unsigned bitDepth = 0;
    unsigned mixShift = 0;          // 0 to 31
    std::int32_t mixWeight = 0;     // 0: the two channels are left and right
    unsigned lowBytes = 0;          // of every sample, which the packet has apart: 0 to 2
    std::uint64_t lowBytesBit = 0;  // where in the packet; all of them are there
};

// Makes left and right of the pairs, puts the low bytes to them and writes value / 2^(bitDepth - 1)
// to samples[stride * i + places[c]]. Uses up the pairs.
void writeAlacSamples(const AlacOutput& output, Bytes packet, std::int32_t* pairs,
                      std::uint32_t frames, float* samples, unsigned stride,
                      const std::uint8_t* places);

}  // namespace atdp::services
