#include "services/codecs/alac_output.h"

#include <algorithm>
#include <array>

namespace atdp::services {
namespace {

// Small enough to stay in the first-level cache while several loops go over them.
constexpr std::uint32_t kBlockFrames = 512;

void unmix(std::int32_t* pairs, std::uint32_t frames, std::int32_t weight, unsigned shift) {
    for (std::size_t i = 0; i < std::size_t{2} * frames; i += 2) {
        const auto sum = static_cast<std::uint32_t>(pairs[i]);
        const auto difference = static_cast<std::uint32_t>(pairs[i + 1]);
        const auto part =
            static_cast<std::int32_t>(static_cast<std::uint32_t>(weight) * difference);
        const std::uint32_t left = sum + difference - static_cast<std::uint32_t>(part >> shift);
        pairs[i] = static_cast<std::int32_t>(left);
        pairs[i + 1] = static_cast<std::int32_t>(left - difference);
    }
}

// Numbers of one or two bytes that start at any bit; one more byte is there behind the last.
template <unsigned LowBytes>
void appendLow(std::int32_t* values, std::size_t step, std::size_t count, const std::byte* low,
               unsigned bit) {
    for (std::size_t i = 0; i < count; ++i, low += LowBytes) {
        std::uint32_t window = 0;
        for (unsigned k = 0; k <= LowBytes; ++k)
            window = window << 8 | std::to_integer<std::uint32_t>(low[k]);
        const std::uint32_t value = window >> (8 - bit) & ((1U << 8 * LowBytes) - 1);
        values[step * i] = static_cast<std::int32_t>(
            static_cast<std::uint32_t>(values[step * i]) << 8 * LowBytes | value);
    }
}

// The shift to the top of the word drops what a damaged packet made too large.
void toFloats(const std::int32_t* pairs, std::uint32_t samples, unsigned bitDepth, float* out) {
    for (std::uint32_t i = 0; i < samples; ++i)
        out[i] = static_cast<float>(static_cast<std::int32_t>(static_cast<std::uint32_t>(pairs[i])
                                                              << (32 - bitDepth))) *
                 0x1p-31F;
}

void appendLowOf(const AlacOutput& output, Bytes packet, std::int32_t* pairs, std::uint32_t first,
                 std::uint32_t frames) {
    const std::byte* low = packet.data() + output.lowBytesBit / 8 +
                           std::size_t{first} * output.channels * output.lowBytes;
    const auto bit = static_cast<unsigned>(output.lowBytesBit % 8);
    const std::size_t step = output.channels == 1 ? 2 : 1;
    const std::size_t count = std::size_t{frames} * output.channels;
    if (output.lowBytes == 1) appendLow<1>(pairs, step, count, low, bit);
    if (output.lowBytes == 2) appendLow<2>(pairs, step, count, low, bit);
}

}  // namespace

void writeAlacSamples(const AlacOutput& output, Bytes packet, std::int32_t* pairs,
                      std::uint32_t frames, float* samples, unsigned stride,
                      const std::uint8_t* places) {
    std::array<float, std::size_t{2} * kBlockFrames> block;
    const bool isPlainStereo = output.channels == 2 && stride == 2;
    for (std::uint32_t first = 0; first < frames; first += kBlockFrames) {
        const std::uint32_t count = std::min(kBlockFrames, frames - first);
        std::int32_t* part = pairs + std::size_t{2} * first;
        float* to = samples + std::size_t{stride} * first;
        if (output.channels == 2 && output.mixWeight != 0)
            unmix(part, count, output.mixWeight, output.mixShift);
        if (output.lowBytes > 0) appendLowOf(output, packet, part, first, count);
        toFloats(part, 2 * count, output.bitDepth, isPlainStereo ? to : block.data());
        if (isPlainStereo) continue;
        for (unsigned c = 0; c < output.channels; ++c)
            for (std::uint32_t i = 0; i < count; ++i)
                to[std::size_t{stride} * i + places[c]] = block[std::size_t{2} * i + c];
    }
}

}  // namespace atdp::services
