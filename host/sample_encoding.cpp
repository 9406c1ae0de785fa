#include "host/sample_encoding.h"

#include <bit>
#include <cmath>

namespace atdp::host {
namespace {

template <int kBytes>
void storeLittleEndian(std::uint32_t value, std::byte* to) {
    for (int i = 0; i < kBytes; ++i) to[i] = static_cast<std::byte>(value >> (8 * i));
}

template <int kBits>
std::uint32_t wholeNumber(float sample) {
    constexpr double kFullScale = 1 << (kBits - 1);
    const double scaled = std::nearbyint(static_cast<double>(sample) * kFullScale);
    if (std::isnan(scaled)) return 0;
    const double clipped = std::fmin(std::fmax(scaled, -kFullScale), kFullScale - 1);
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(clipped));
}

template <int kBytes, class Convert>
void encode(std::span<const float> samples, std::vector<std::byte>& bytes, Convert convert) {
    bytes.resize(samples.size() * kBytes);
    std::byte* to = bytes.data();
    for (const float sample : samples) {
        storeLittleEndian<kBytes>(convert(sample), to);
        to += kBytes;
    }
}

}  // namespace

std::uint32_t bytesPerSample(SampleEncoding encoding) {
    switch (encoding) {
        case SampleEncoding::kSigned16:
            return 2;
        case SampleEncoding::kSigned24:
            return 3;
        case SampleEncoding::kFloat32:
            break;
    }
    return 4;
}

void encodeSamples(std::span<const float> samples, SampleEncoding encoding,
                   std::vector<std::byte>& bytes) {
    switch (encoding) {
        case SampleEncoding::kSigned16:
            return encode<2>(samples, bytes, wholeNumber<16>);
        case SampleEncoding::kSigned24:
            return encode<3>(samples, bytes, wholeNumber<24>);
        case SampleEncoding::kFloat32:
            break;
    }
    encode<4>(samples, bytes, [](float sample) { return std::bit_cast<std::uint32_t>(sample); });
}

}  // namespace atdp::host
