// Builds packets of Apple Lossless with every parameter free, so that the decoder is tested on what
// real encoders seldom make. It follows the format step by step, with no regard for time.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "services/codecs/alac_config.h"

namespace atdp::test {

class AlacBitWriter {
 public:
    void put(std::uint64_t value, unsigned bits) {
        for (unsigned i = bits; i-- > 0;) {
            if (bits_ % 8 == 0) bytes_ += '\0';
            if (value >> i & 1) bytes_.back() |= static_cast<char>(1 << (7 - bits_ % 8));
            ++bits_;
        }
    }
    void putOnes(unsigned count) { put((std::uint64_t{1} << count) - 1, count); }
    const std::string& bytes() const { return bytes_; }

 private:
    std::string bytes_;
    std::size_t bits_ = 0;
};

struct AlacElement {
    std::vector<std::vector<std::int32_t>> channels;  // one or two
    unsigned tag = 0;
    bool isPlain = false;
    bool hasFrames = false;
    unsigned lowBytes = 0;
    unsigned mixShift = 0;
    int mixWeight = 0;
    unsigned mode = 0;
    unsigned shift = 9;
    unsigned meanFactor = 4;
    std::vector<std::int16_t> taps;
};

// A value of n: a prefix of ones, a zero, and the rest.
inline void putGolomb(AlacBitWriter& out, std::uint32_t n, unsigned bits, std::uint32_t step,
                      unsigned escapeBits) {
    const std::uint32_t prefix = step > 0 ? n / step : 9;
    if (prefix >= 9) {
        out.putOnes(9);
        out.put(n, escapeBits);
        return;
    }
    out.putOnes(prefix);
    out.put(0, 1);
    if (n % step == 0)
        out.put(0, bits - 1);
    else
        out.put(n % step + 1, bits);
}

inline void putResiduals(AlacBitWriter& out, const std::vector<std::int32_t>& residuals,
                         const services::AlacConfig& config, unsigned quarters, unsigned width) {
    const std::uint32_t factor = config.meanFactor * quarters / 4;
    std::uint32_t mean = config.initialMean;
    std::uint32_t afterRun = 0;
    for (std::size_t i = 0; i < residuals.size();) {
        const std::int64_t residual = residuals[i++];
        const auto folded =
            static_cast<std::uint32_t>(residual < 0 ? -2 * residual - 1 : 2 * residual);
        const std::uint32_t n = folded - afterRun;
        const auto natural = static_cast<unsigned>(std::bit_width((mean >> 9) + 3) - 1);
        const unsigned bits = std::min(natural, config.maxCodeBits);
        putGolomb(out, n, bits, (1U << bits) - 1, width);
        mean = n > 0xFFFF ? 0xFFFF : mean + factor * folded - (factor * mean >> 9);
        afterRun = 0;
        if (mean >= 128 || i >= residuals.size()) continue;
        std::uint32_t run = 0;
        while (i < residuals.size() && residuals[i] == 0 && run < 0xFFFF) ++i, ++run;
        const unsigned runBits =
            8U - static_cast<unsigned>(std::bit_width(mean)) + (mean + 16) / 64;
        putGolomb(out, run, runBits, ((1U << runBits) - 1) & ((1U << config.maxCodeBits) - 1), 16);
        afterRun = run < 0xFFFF;
        mean = 0;
    }
}

inline std::int32_t signExtended(std::int64_t value, unsigned bits) {
    return static_cast<std::int32_t>(
        static_cast<std::int64_t>(static_cast<std::uint64_t>(value) << (64 - bits)) >> (64 - bits));
}

inline std::vector<std::int32_t> differences(const std::vector<std::int32_t>& values,
                                             std::size_t count, unsigned width) {
    std::vector<std::int32_t> result(values);
    for (std::size_t i = count; i-- > 1;)
        result[i] = signExtended(std::int64_t{values[i]} - values[i - 1], width);
    return result;
}

inline std::vector<std::int32_t> residualsOf(const std::vector<std::int32_t>& x,
                                             const AlacElement& element, unsigned width) {
    const std::size_t order = element.taps.size();
    if (order == 0) return x;
    if (order == 31) return differences(x, x.size(), width);
    auto result = differences(x, std::min(order + 1, x.size()), width);
    std::vector<std::int32_t> taps(element.taps.begin(), element.taps.end());
    for (std::size_t i = order + 1; i < x.size(); ++i) {
        const std::int64_t base = x[i - order - 1];
        std::uint32_t sum = element.shift > 0 ? 1U << (element.shift - 1) : 0;
        for (std::size_t k = 0; k < order; ++k)
            sum += static_cast<std::uint32_t>(taps[k] * (x[i - 1 - k] - base));
        const std::int64_t predicted = base + (static_cast<std::int32_t>(sum) >> element.shift);
        std::int64_t left = result[i] = signExtended(x[i] - predicted, width);
        const int sign = (left > 0) - (left < 0);
        for (std::size_t k = order; k-- > 0 && left * sign > 0;) {
            const std::int64_t distance =
                std::int64_t{signExtended(base - x[i - 1 - k], 32)} * sign;
            const int direction = (distance > 0) - (distance < 0);
            taps[k] -= direction;
            left -= static_cast<std::int64_t>(order - k) *
                    ((std::abs(distance) * sign) >> element.shift);
        }
    }
    return result;
}

inline void putPlain(AlacBitWriter& out, const AlacElement& element, unsigned bitDepth) {
    for (std::size_t i = 0; i < element.channels[0].size(); ++i)
        for (const auto& channel : element.channels)
            out.put(static_cast<std::uint32_t>(channel[i]), bitDepth);
}

inline void putPredicted(AlacBitWriter& out, const AlacElement& element,
                         const services::AlacConfig& config) {
    auto channels = element.channels;
    const unsigned lowBits = 8 * element.lowBytes;
    const unsigned width = config.bitDepth - lowBits + static_cast<unsigned>(channels.size()) - 1;
    for (auto& channel : channels)
        for (auto& value : channel) value >>= lowBits;
    if (channels.size() == 2 && element.mixWeight != 0)
        for (std::size_t i = 0; i < channels[0].size(); ++i) {
            const std::int64_t right = channels[1][i], difference = channels[0][i] - right;
            channels[1][i] = static_cast<std::int32_t>(difference);
            channels[0][i] = static_cast<std::int32_t>(
                right + (element.mixWeight * difference >> element.mixShift));
        }
    out.put(element.mixShift, 8);
    out.put(static_cast<std::uint8_t>(element.mixWeight), 8);
    for (std::size_t c = 0; c < channels.size(); ++c) {
        out.put(element.mode, 4);
        out.put(element.shift, 4);
        out.put(element.meanFactor, 3);
        out.put(element.taps.size(), 5);
        for (const std::int16_t tap : element.taps) out.put(static_cast<std::uint16_t>(tap), 16);
    }
    for (std::size_t i = 0; i < channels[0].size(); ++i)
        for (const auto& channel : element.channels)
            out.put(static_cast<std::uint32_t>(channel[i]) & ((1U << lowBits) - 1), lowBits);
    for (const auto& channel : channels) {
        auto residuals = residualsOf(channel, element, width);
        if (element.mode != 0) residuals = differences(residuals, residuals.size(), width);
        putResiduals(out, residuals, config, element.meanFactor, width);
    }
}

inline void putElement(AlacBitWriter& out, const AlacElement& element,
                       const services::AlacConfig& config) {
    out.put(element.tag, 3);
    out.put(0, 4 + 12);
    out.put(element.hasFrames, 1);
    out.put(element.lowBytes, 2);
    out.put(element.isPlain, 1);
    if (element.hasFrames) out.put(element.channels[0].size(), 32);
    if (element.isPlain)
        putPlain(out, element, config.bitDepth);
    else
        putPredicted(out, element, config);
}

inline std::string alacPacket(const AlacElement& element, const services::AlacConfig& config) {
    AlacBitWriter out;
    putElement(out, element, config);
    out.put(7, 3);  // the end
    return out.bytes();
}

}  // namespace atdp::test
