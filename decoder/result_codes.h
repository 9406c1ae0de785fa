// Results of open, seek and read; no other value is ever answered.
#pragma once

#include <cstdint>

namespace atdp {

inline constexpr std::int32_t DECODER_RESULT_OK = 0;                // also end of stream
inline constexpr std::int32_t DECODER_RESULT_FAILED = -25291;       // open or seek failed
inline constexpr std::int32_t DECODER_RESULT_READ_FAILED = -26275;  // decoding failed

}  // namespace atdp
