// Conversions of linear PCM for certain instruction sets.
#pragma once

#include "services/codecs/pcm_conversion.h"

namespace atdp::services {

// The conversion of signed integers of so many bytes with AVX2, where that is faster than what the
// compiler makes of the plain one; null for others, and where the processor has no AVX2.
PcmConversion avx2PcmConversion(std::uint32_t bytesPerSample, bool isBigEndian);

}  // namespace atdp::services
