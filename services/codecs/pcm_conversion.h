#pragma once

#include <cstddef>

#include "platform/core_audio_types.h"

namespace atdp::services {

// Converts samples at `in`, of the width that the format states, to floats. Integers become
// value / 2^(bits - 1), rounded to the nearest float; the width is that of the bytes, so samples
// that do not fill them, being aligned to the high end, come out right too.
using PcmConversion = void (*)(const std::byte* in, float* out, std::size_t samples);

// The conversion for a linear PCM format; null when there is none.
PcmConversion pcmConversionFor(const AudioStreamBasicDescription& format);

}  // namespace atdp::services
