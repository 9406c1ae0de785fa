#pragma once

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

#include "tests/support/byte_builder.h"

namespace atdp::test {

// A positive number in the 80-bit form that AIFF states rates in.
inline std::string extendedNumber(double value) {
    int exponent = 0;
    const double fraction = std::frexp(value, &exponent);
    return bigEndian(static_cast<std::uint16_t>(exponent + 16382)) +
           bigEndian(static_cast<std::uint64_t>(std::ldexp(fraction, 64)));
}

// An AIFF file, or AIFF-C where a compression is set.
struct AiffBuilder {
    std::uint16_t channels = 2;
    std::uint16_t bits = 16;
    double rate = 44100;
    std::string compression;
    std::string data;
    std::optional<std::uint32_t> statedFrames, statedSoundBytes, statedFormBytes;
    std::uint32_t soundOffset = 0;
    bool hasSound = true;

    std::string bytes() const {
        const std::uint32_t frameBytes = channels * ((bits + 7U) / 8U);
        const auto frames =
            frameBytes == 0 ? 0 : static_cast<std::uint32_t>(data.size() / frameBytes);
        std::string common = bigEndian(channels) + bigEndian(statedFrames.value_or(frames)) +
                             bigEndian(bits) + extendedNumber(rate);
        if (!compression.empty()) common += compression + std::string("\0\0", 2);
        std::string sound = iffChunk("SSND", bigEndian(soundOffset) + bigEndian(std::uint32_t{0}) +
                                                 std::string(soundOffset, 'x') + data);
        if (statedSoundBytes) sound.replace(4, 4, bigEndian(*statedSoundBytes));
        const std::string body = std::string(compression.empty() ? "AIFF" : "AIFC") +
                                 iffChunk("COMM", common) + (hasSound ? sound : "");
        const auto size = statedFormBytes.value_or(static_cast<std::uint32_t>(body.size()));
        return "FORM" + bigEndian(size) + body;
    }
};

}  // namespace atdp::test
