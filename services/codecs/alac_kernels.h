// The inner loops of the decoder: one plain version, which defines the result, and faster ones for
// processors that have the instructions.
//
// Samples of one or two channels lie in pairs: first, second, first, second; a single channel
// leaves the second of each pair undefined. Decoding goes on in place, from residuals to samples.
#pragma once

#include <array>
#include <cstdint>

#include "services/codecs/bit_reader.h"

namespace atdp::services {

// How the residuals of a channel are coded.
struct AlacCoding {
    std::uint32_t initialMean = 0;
    std::uint32_t meanFactor = 0;
    std::uint32_t maxCodeBits = 0;  // 1 to 31
    std::uint32_t escapeBits = 0;   // width of a residual that is not coded, 1 to 32
};

inline constexpr unsigned kMaxAlacOrder = 31;

// How the samples of a channel follow from its residuals.
struct AlacPredictor {
    bool hasSumPass = false;                         // the residuals are differences of residuals
    unsigned order = 0;                              // 0: none; 31: running sum
    unsigned shift = 0;                              // fraction bits of the taps, 0 to 15
    std::array<std::int32_t, kMaxAlacOrder> taps{};  // the newest sample's first
};

struct AlacKernels {
    // Reads the residuals of one channel to every second number from `out` on. False when they
    // are damaged.
    bool (*readResiduals)(BitReader& bits, const AlacCoding& coding, std::int32_t* out,
                          std::uint32_t frames);

    // Turns residuals into samples of `bits` bits, 1 to 32.
    void (*predict)(std::int32_t* pairs, std::uint32_t frames, unsigned channels,
                    std::array<AlacPredictor, 2>& predictors, unsigned bits);
};

const AlacKernels& plainAlacKernels();
const AlacKernels* avx2AlacKernels();  // null where the processor has no AVX2
const AlacKernels& bestAlacKernels();

}  // namespace atdp::services
