// The body of AlacKernels::readResiduals, to be compiled for several instruction sets.
#pragma once

#include <algorithm>
#include <bit>

#include "services/codecs/alac_kernels.h"

namespace atdp::services {

// Adaptive Golomb codes: a prefix of ones, a zero, and a number of as many bits as the running mean
// calls for, one bit less when it is 0 or 1.
inline constexpr unsigned kAlacEscapePrefix = 9;  // ones, behind which a number stands uncoded
inline constexpr unsigned kAlacMeanFractionBits = 9;
inline constexpr std::uint32_t kAlacMaxMean = 0xFFFF;
inline constexpr std::uint32_t kAlacRunMean = 128;  // below, a run of zeros follows
inline constexpr std::uint32_t kAlacRunEscapeBits = 16;

// The longest number for which two codes fit what one refill makes available.
inline constexpr std::uint32_t kAlacShortCodeBits = 15;

// Reads the length of a run of zeros.
[[gnu::always_inline]] inline std::uint32_t readAlacRun(AlacBitReader& bits, std::uint32_t mean,
                                                        std::uint32_t maxCodeBits) {
    bits.refill();
    const std::uint64_t head = bits.head();
    const auto prefix = static_cast<unsigned>(std::countl_one(head));
    std::uint32_t run = 0;
    if (prefix >= kAlacEscapePrefix) {
        run = static_cast<std::uint32_t>(head << kAlacEscapePrefix >> (64 - kAlacRunEscapeBits));
        bits.drop(kAlacEscapePrefix + kAlacRunEscapeBits);
    } else {
        const unsigned codeBits =
            static_cast<unsigned>(std::countl_zero(mean)) - 24 + ((mean + 16) >> 6);
        const std::uint32_t step =
            ((std::uint32_t{1} << codeBits) - 1) & ((std::uint32_t{1} << maxCodeBits) - 1);
        const auto rest = static_cast<std::uint32_t>(head << prefix << 1 >> (64 - codeBits));
        run = prefix * step + (rest > 1 ? rest - 1 : 0);
        bits.drop(prefix + codeBits + (rest > 1));
    }
    bits.refill();
    return run;
}

// The chain from one code to the next sets the pace: where a code starts and how long its number is
// are known only after the one before. So a code is taken from the window as it was before the
// refill, which then happens beside it.
template <bool HasShortCodes>
[[gnu::always_inline]] inline bool readAlacResiduals(AlacBitReader& reader,
                                                     const AlacCoding& coding, std::int32_t* out,
                                                     std::uint32_t frames) {
    AlacBitReader bits = reader;
    const std::uint32_t factor = coding.meanFactor;
    const std::uint32_t maxCodeBits = coding.maxCodeBits;
    std::uint32_t mean = coding.initialMean;
    std::uint32_t isAfterRun = 0;
    bits.refill();
    for (std::uint32_t i = 0; i < frames; ++i) {
        std::uint64_t head = bits.head();
        bits.refill();
        if (!HasShortCodes) head = bits.head();
        // One less than the bits of mean / 512 + 3.
        unsigned codeBits = 63 - kAlacMeanFractionBits -
                            static_cast<unsigned>(std::countl_zero(std::uint64_t{mean} +
                                                                   (3U << kAlacMeanFractionBits)));
        if (codeBits > maxCodeBits) [[unlikely]]
            codeBits = maxCodeBits;
        const auto prefix = static_cast<unsigned>(std::countl_one(head));
        std::uint32_t value = 0;
        if (prefix < kAlacEscapePrefix) [[likely]] {
            const auto rest = static_cast<std::uint32_t>(head << prefix << 1 >> (64 - codeBits));
            value = prefix * ((std::uint32_t{1} << codeBits) - 1) + (rest > 1 ? rest - 1 : 0);
            bits.drop(prefix + codeBits + (rest > 1));
        } else {
            value = static_cast<std::uint32_t>(bits.head() << kAlacEscapePrefix >>
                                               (64 - coding.escapeBits));
            bits.drop(kAlacEscapePrefix + coding.escapeBits);
            bits.refill();
        }
        const std::uint32_t folded = value + isAfterRun;
        out[std::size_t{2} * i] = static_cast<std::int32_t>(folded >> 1 ^ (0 - (folded & 1)));
        mean += factor * folded - (factor * mean >> kAlacMeanFractionBits);
        if (value > kAlacMaxMean) [[unlikely]]
            mean = kAlacMaxMean;
        isAfterRun = 0;
        if (mean < kAlacRunMean && i + 1 < frames) [[unlikely]] {
            const std::uint32_t run = readAlacRun(bits, mean, maxCodeBits);
            if (run > frames - 1 - i) return false;
            for (std::uint32_t k = 0; k < run; ++k) out[std::size_t{2} * ++i] = 0;
            isAfterRun = run < kAlacMaxMean;
            mean = 0;
        }
    }
    reader = bits;
    return !bits.isPastEnd();
}

[[gnu::always_inline]] inline bool readAlacResidualsBody(AlacBitReader& bits,
                                                         const AlacCoding& coding,
                                                         std::int32_t* out, std::uint32_t frames) {
    return coding.maxCodeBits <= kAlacShortCodeBits
               ? readAlacResiduals<true>(bits, coding, out, frames)
               : readAlacResiduals<false>(bits, coding, out, frames);
}

}  // namespace atdp::services
