// The body of AlacKernels::readResiduals, to be compiled for several instruction sets.
#pragma once

#include <bit>

#include "services/codecs/alac_kernels.h"

namespace atdp::services {

// Adaptive Golomb codes: a prefix of ones, a zero, and a number of as many bits as the running mean
// calls for, one bit less when it is 0 or 1.
inline constexpr unsigned kAlacEscapePrefix = 9;  // ones, behind which a number stands uncoded
inline constexpr unsigned kAlacMeanFractionBits = 9;
inline constexpr std::uint32_t kAlacMaxMean = 0xFFFF;
inline constexpr std::uint32_t kAlacRunMean = 128;  // below it a run of zeros follows
inline constexpr unsigned kAlacRunBits = 16;        // of a run that is not coded

// The longest number for which two codes fit into one peek().
inline constexpr std::uint32_t kAlacShortCodeBits = 15;

// Reads the length of a run of zeros.
[[gnu::always_inline]] inline std::uint32_t readAlacRun(BitReader& bits, std::uint32_t mean,
                                                        std::uint32_t maxCodeBits) {
    const std::uint64_t head = bits.peek();
    const auto prefix = static_cast<unsigned>(std::countl_one(head));
    if (prefix >= kAlacEscapePrefix) {
        bits.skip(kAlacEscapePrefix + kAlacRunBits);
        return static_cast<std::uint32_t>(head << kAlacEscapePrefix >> (64 - kAlacRunBits));
    }
    const unsigned codeBits =
        static_cast<unsigned>(std::countl_zero(mean)) - 24 + ((mean + 16) >> 6);
    const std::uint32_t step =
        ((std::uint32_t{1} << codeBits) - 1) & ((std::uint32_t{1} << maxCodeBits) - 1);
    const auto rest = static_cast<std::uint32_t>(head << 1 << prefix >> (64 - codeBits));
    bits.skip(prefix + codeBits + (rest > 1));
    return prefix * step + (rest > 1 ? rest - 1 : 0);
}

// How long a code is and what the next one looks like is known only after it, so the chain of
// operations from code to code sets the pace. Therefore the bits at the next code are not read
// from the packet, but shifted out of those at this code; products are taken apart, so that the
// number at the end of the code, which is known last, has the shortest way; and the mean has a bias
// of what is added to it for each use.
template <bool HasShortCodes>
[[gnu::always_inline]] inline bool readAlacResiduals(BitReader& reader, const AlacCoding& coding,
                                                     std::int32_t* out, std::uint32_t frames) {
    constexpr std::uint64_t kBias = 3U << kAlacMeanFractionBits;
    BitReader bits = reader;
    const std::uint64_t factor = coding.meanFactor;
    const unsigned maxCodeBits = coding.maxCodeBits;
    std::uint64_t biasedMean = coding.initialMean + kBias;
    std::uint64_t head = bits.peek();
    std::uint32_t isAfterRun = 0;
    for (std::uint32_t i = 0; i < frames; ++i) {
        const std::uint64_t word = bits.peek();
        if (!HasShortCodes) head = word;
        unsigned codeBits =
            63 - kAlacMeanFractionBits - static_cast<unsigned>(std::countl_zero(biasedMean));
        // Certain enough to be a branch, which nothing has to wait for.
        if (__builtin_expect_with_probability(codeBits > maxCodeBits, 0, 1.0))
            codeBits = maxCodeBits;
        const std::uint64_t decayed =
            biasedMean - (factor * (biasedMean - kBias) >> kAlacMeanFractionBits);
        const auto prefix = static_cast<unsigned>(std::countl_one(head));
        std::uint64_t folded = isAfterRun;
        if (prefix < kAlacEscapePrefix) [[likely]] {
            const std::uint64_t rest = head << 1 << prefix >> (64 - codeBits);
            const std::uint64_t atLeastOne = rest > 0 ? rest : 1;
            const unsigned length = prefix + codeBits + (rest > 1);
            const std::uint64_t others = folded + (std::uint64_t{prefix} << codeBits) - prefix - 1;
            head = word << length;
            bits.skip(length);
            folded = others + atLeastOne;
            biasedMean = decayed + factor * others + factor * atLeastOne;
        } else {
            folded += word << kAlacEscapePrefix >> (64 - coding.escapeBits);
            bits.skip(kAlacEscapePrefix + coding.escapeBits);
            head = bits.peek();
            biasedMean = decayed + factor * folded;
        }
        out[std::size_t{2} * i] =
            static_cast<std::int32_t>(static_cast<std::uint32_t>(folded >> 1 ^ (0 - (folded & 1))));
        if (folded > kAlacMaxMean + isAfterRun) [[unlikely]]
            biasedMean = kAlacMaxMean + kBias;
        isAfterRun = 0;
        if (biasedMean < kAlacRunMean + kBias && i + 1 < frames) [[unlikely]] {
            const auto mean = static_cast<std::uint32_t>(biasedMean - kBias);
            const std::uint32_t run = readAlacRun(bits, mean, coding.maxCodeBits);
            if (run > frames - 1 - i) return false;
            for (std::uint32_t k = 0; k < run; ++k) out[std::size_t{2} * ++i] = 0;
            isAfterRun = run < kAlacMaxMean;
            biasedMean = kBias;
            head = bits.peek();
        }
    }
    reader = bits;
    return !bits.isPastEnd();
}

[[gnu::always_inline]] inline bool readAlacResidualsBody(BitReader& bits, const AlacCoding& coding,
                                                         std::int32_t* out, std::uint32_t frames) {
    return coding.maxCodeBits <= kAlacShortCodeBits
               ? readAlacResiduals<true>(bits, coding, out, frames)
               : readAlacResiduals<false>(bits, coding, out, frames);
}

}  // namespace atdp::services
