#include "services/codecs/pcm_conversion.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>

#include "services/codecs/pcm_kernels.h"

namespace atdp::services {
namespace {

static_assert(std::endian::native == std::endian::little);
static_assert(std::numeric_limits<float>::is_iec559);  // a double beyond float's range is infinity

std::uint16_t swapped(std::uint16_t value) {
    return __builtin_bswap16(value);
}
std::uint32_t swapped(std::uint32_t value) {
    return __builtin_bswap32(value);
}
std::uint64_t swapped(std::uint64_t value) {
    return __builtin_bswap64(value);
}

template <class Word, std::endian Order>
Word load(const std::byte* in) {
    Word word;
    std::memcpy(&word, in, sizeof(word));
    return Order == std::endian::little ? word : swapped(word);
}

void convertUnsigned8(const std::byte* in, float* out, std::size_t samples) {
    for (std::size_t i = 0; i < samples; ++i)
        out[i] = static_cast<float>(std::to_integer<int>(in[i]) - 128) * 0x1p-7F;
}

void convertSigned8(const std::byte* in, float* out, std::size_t samples) {
    for (std::size_t i = 0; i < samples; ++i)
        out[i] = static_cast<float>(static_cast<std::int8_t>(in[i])) * 0x1p-7F;
}

template <std::endian Order>
void convertSigned16(const std::byte* in, float* out, std::size_t samples) {
    for (std::size_t i = 0; i < samples; ++i)
        out[i] =
            static_cast<float>(static_cast<std::int16_t>(load<std::uint16_t, Order>(in + 2 * i))) *
            0x1p-15F;
}

// The three bytes go to the high end of a 32-bit word, whose sign is then theirs.
template <std::endian Order>
void convertSigned24(const std::byte* in, float* out, std::size_t samples) {
    constexpr std::size_t kLow = Order == std::endian::little ? 0 : 2;
    for (std::size_t i = 0; i < samples; ++i, in += 3) {
        const std::uint32_t word = std::to_integer<std::uint32_t>(in[2 - kLow]) << 24 |
                                   std::to_integer<std::uint32_t>(in[1]) << 16 |
                                   std::to_integer<std::uint32_t>(in[kLow]) << 8;
        out[i] = static_cast<float>(static_cast<std::int32_t>(word)) * 0x1p-31F;
    }
}

template <std::endian Order>
void convertSigned32(const std::byte* in, float* out, std::size_t samples) {
    for (std::size_t i = 0; i < samples; ++i)
        out[i] =
            static_cast<float>(static_cast<std::int32_t>(load<std::uint32_t, Order>(in + 4 * i))) *
            0x1p-31F;
}

template <std::endian Order>
void convertFloat32(const std::byte* in, float* out, std::size_t samples) {
    for (std::size_t i = 0; i < samples; ++i)
        out[i] = std::bit_cast<float>(load<std::uint32_t, Order>(in + 4 * i));
}

template <std::endian Order>
void convertFloat64(const std::byte* in, float* out, std::size_t samples) {
    for (std::size_t i = 0; i < samples; ++i)
        out[i] = static_cast<float>(std::bit_cast<double>(load<std::uint64_t, Order>(in + 8 * i)));
}

template <std::endian Order>
PcmConversion conversionFor(std::uint32_t bytesPerSample, bool isFloat, bool isSigned) {
    if (isFloat)
        return bytesPerSample == 4   ? convertFloat32<Order>
               : bytesPerSample == 8 ? convertFloat64<Order>
                                     : nullptr;
    if (!isSigned) return bytesPerSample == 1 ? convertUnsigned8 : nullptr;
    if (const PcmConversion fast = avx2PcmConversion(bytesPerSample, Order == std::endian::big))
        return fast;
    switch (bytesPerSample) {
        case 1:
            return convertSigned8;
        case 2:
            return convertSigned16<Order>;
        case 3:
            return convertSigned24<Order>;
        case 4:
            return convertSigned32<Order>;
        default:
            return nullptr;
    }
}

}  // namespace

PcmConversion pcmConversionFor(const AudioStreamBasicDescription& format) {
    if (format.mFormatID != kAudioFormatLinearPCM || format.mChannelsPerFrame == 0) return nullptr;
    const std::uint32_t bytesPerSample = format.mBytesPerFrame / format.mChannelsPerFrame;
    const bool isFloat = (format.mFormatFlags & kAudioFormatFlagIsFloat) != 0;
    const bool isSigned = (format.mFormatFlags & kAudioFormatFlagIsSignedInteger) != 0;
    return (format.mFormatFlags & kAudioFormatFlagIsBigEndian) != 0
               ? conversionFor<std::endian::big>(bytesPerSample, isFloat, isSigned)
               : conversionFor<std::endian::little>(bytesPerSample, isFloat, isSigned);
}

}  // namespace atdp::services
