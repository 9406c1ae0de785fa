// Every value of the small sample formats, and the corners of the large ones.
#include "services/codecs/pcm_conversion.h"

#include <gtest/gtest.h>

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

TEST(PcmConversion, IsExactForEvery8BitValue) {
    std::string bytes;
    for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
    const auto fromUnsigned = convert(0, 1, bytes);
    const auto fromSigned = convert(kSigned, 1, bytes);
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(fromUnsigned[static_cast<std::size_t>(i)], static_cast<float>((i - 128) / 128.0));
        EXPECT_EQ(fromSigned[static_cast<std::size_t>(i)],
                  static_cast<float>((i < 128 ? i : i - 256) / 128.0));
    }
}

TEST(PcmConversion, IsExactForEvery16BitValue) {
    std::string little, big;
    for (int i = -32768; i < 32768; ++i) {
        little += littleEndian(static_cast<std::int16_t>(i));
        big += bigEndian(static_cast<std::int16_t>(i));
    }
    const auto fromLittle = convert(kSigned, 2, little);
    const auto fromBig = convert(kSigned | kBig, 2, big);
    for (int i = -32768; i < 32768; ++i) {
        const auto index = static_cast<std::size_t>(i + 32768);
        ASSERT_EQ(fromLittle[index], static_cast<float>(i / 32768.0));
        ASSERT_EQ(fromBig[index], static_cast<float>(i / 32768.0));
    }
}

// Lengths around the width of vector registers, so that the last few samples are not forgotten.
TEST(PcmConversion, HandlesWideSamplesInBothByteOrders) {
    const double values[] = {0, 1, -1, 8388607, -8388608, 4660, -4660, 70000, -70000, 3, -3};
    for (std::size_t count = 1; count <= std::size(values); ++count) {
        std::string s24, s24b, s32, s32b, f32, f32b, f64, f64b;
        for (std::size_t i = 0; i < count; ++i) {
            const auto integer = static_cast<std::int32_t>(values[i]);
            s24 += littleEndian(integer).substr(0, 3);
            s24b += bigEndian(integer).substr(1);
            s32 += littleEndian(integer * 256);
            s32b += bigEndian(integer * 256);
            f32 += littleEndian(std::bit_cast<std::uint32_t>(static_cast<float>(values[i])));
            f32b += bigEndian(std::bit_cast<std::uint32_t>(static_cast<float>(values[i])));
            f64 += littleEndian(std::bit_cast<std::uint64_t>(values[i]));
            f64b += bigEndian(std::bit_cast<std::uint64_t>(values[i]));
        }
        const std::vector<float> integers[] = {
            convert(kSigned, 3, s24), convert(kSigned | kBig, 3, s24b), convert(kSigned, 4, s32),
            convert(kSigned | kBig, 4, s32b)};
        const std::vector<float> floats[] = {
            convert(kFloat, 4, f32), convert(kFloat | kBig, 4, f32b), convert(kFloat, 8, f64),
            convert(kFloat | kBig, 8, f64b)};
        for (std::size_t i = 0; i < count; ++i) {
            for (const auto& samples : integers)
                EXPECT_EQ(samples[i], static_cast<float>(values[i] / 8388608.0));
            for (const auto& samples : floats) EXPECT_EQ(samples[i], static_cast<float>(values[i]));
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
