// Decoded samples in the encodings that files take.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace atdp::host {

enum class SampleEncoding { kFloat32, kSigned16, kSigned24 };

std::uint32_t bytesPerSample(SampleEncoding encoding);

// Replaces `bytes` with the samples, little-endian. Whole numbers are the sample times
// 2^(bits - 1), rounded to the nearest (halves to even) and clipped; what is not a number is 0.
void encodeSamples(std::span<const float> samples, SampleEncoding encoding,
                   std::vector<std::byte>& bytes);

}  // namespace atdp::host
