#pragma once

#include "services/codecs/alac_kernels.h"

namespace atdp::services {

// The plain version of AlacKernels::predict, which defines what the others must give.
void predictAlac(std::int32_t* pairs, std::uint32_t frames, unsigned channels,
                 std::array<AlacPredictor, 2>& predictors, unsigned bits);

// The same for one channel, which is every second number from `samples` on. The taps come out
// adapted.
void predictAlacChannel(std::int32_t* samples, std::uint32_t frames, AlacPredictor& predictor,
                        unsigned bits);

}  // namespace atdp::services
