// Every value of the small sample formats, and the corners of the large ones.
#include "services/codecs/pcm_conversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <vector>

#include "tests/support/byte_builder.h"

namespace atdp::test {
namespace {

constexpr std::uint32_t kSigned = kAudioFormatFlagIsSignedInteger;
constexpr std::uint32_t kFloat = kAudioFormatFlagIsFloat;
constexpr std::uint32_t kBig = kAudioFormatFlagIsBigEndian;

std::vector<float> convert(std::uint32_t flags, std::uint32_t bytesPerSample,
                           const std::string& bytes) {
    AudioStreamBasicDescription format{};
    format.mFormatID = kAudioFormatLinearPCM;
    format.mFormatFlags = flags;
    format.mChannelsPerFrame = 1;
    format.mBytesPerFrame = bytesPerSample;
    std::vector<float> samples(bytes.size() / bytesPerSample);
    services::pcmConversionFor(format)(reinterpret_cast<const std::byte*>(bytes.data()),
                                       samples.data(), samples.size());
    return samples;
}

// Lengths around the width of vector registers, so that the last few samples are not forgotten.
TEST(PcmConversion, IsExactInEveryFormatAndLength) {
    const struct {
        const char* name;
        std::uint32_t flags, bytes;
    } formats[] = {
        {"unsigned 8 bits", 0, 1}, {"8 bits", kSigned, 1},
        {"16 bits", kSigned, 2},   {"16 bits big-endian", kSigned | kBig, 2},
        {"24 bits", kSigned, 3},   {"24 bits big-endian", kSigned | kBig, 3},
        {"32 bits", kSigned, 4},   {"32 bits big-endian", kSigned | kBig, 4},
        {"float", kFloat, 4},      {"float big-endian", kFloat | kBig, 4},
        {"double", kFloat, 8},     {"double big-endian", kFloat | kBig, 8},
    };
    for (const auto& [name, flags, bytes] : formats) {
        const double full = std::ldexp(1.0, static_cast<int>(8 * bytes - 1));
        const double values[] = {0, 1, -1, full - 1, -full, full / 2, -full / 2, 93, -93, 18, -3};
        std::string encoded;
        std::vector<float> expected;
        for (std::size_t i = 0; i < 4 * std::size(values); ++i) {
            const double value = values[i % std::size(values)];
            const auto integer = static_cast<std::int64_t>(flags == 0 ? value + full : value);
            std::string sample = littleEndian(integer).substr(0, bytes);
            if (flags & kFloat)
                sample = bytes == 8 ? littleEndian(std::bit_cast<std::uint64_t>(value / full))
                                    : littleEndian(std::bit_cast<std::uint32_t>(
                                          static_cast<float>(value / full)));
            if (flags & kBig) std::ranges::reverse(sample);
            encoded += sample;
            expected.push_back(static_cast<float>(value / full));
            EXPECT_EQ(convert(flags, bytes, encoded), expected) << name;
        }
    }
    // 32 bits do not fit a float: the nearest one is taken.
    EXPECT_EQ(convert(kSigned, 4, littleEndian(std::int32_t{0x7FFFFFFF}))[0], 1.0F);
    EXPECT_EQ(convert(kSigned, 4, littleEndian(std::int32_t{0x40000020}))[0], 0.5F);
    EXPECT_TRUE(std::isnan(convert(
        kFloat, 8,
        littleEndian(std::bit_cast<std::uint64_t>(std::numeric_limits<double>::quiet_NaN())))[0]));
}

}  // namespace
}  // namespace atdp::test
