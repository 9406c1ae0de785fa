#include <immintrin.h>

#include <algorithm>
#include <cstring>

#include "services/codecs/pcm_kernels.h"

// After the includes: what other files compile too must not need these instructions.
#ifdef __clang__
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif

namespace atdp::services {
namespace {

constexpr std::size_t kSamples = 8;  // of a register of floats

__m128i load(const std::byte* in) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
}

// Eight samples at a time, from `Reach` bytes; the last few from a copy with zeros behind, as no
// byte behind the samples may be read.
template <std::size_t Width, std::size_t Reach, class Convert>
void convertAll(const std::byte* in, float* out, std::size_t samples, Convert convert) {
    const std::size_t bytes = samples * Width;
    const std::size_t steps = bytes < Reach ? 0 : (bytes - Reach) / (kSamples * Width) + 1;
#pragma GCC unroll 4
    for (std::size_t i = 0; i < steps; ++i)
        _mm256_storeu_ps(out + i * kSamples, convert(in + i * kSamples * Width));
    for (std::size_t i = steps * kSamples; i < samples; i += kSamples) {
        const std::size_t count = std::min(samples - i, kSamples);
        std::byte padded[Reach] = {};
        float converted[kSamples];
        std::memcpy(padded, in + i * Width, count * Width);
        _mm256_storeu_ps(converted, convert(padded));
        std::memcpy(out + i, converted, count * sizeof(float));
    }
}

template <bool IsBigEndian>
void convertSigned16(const std::byte* in, float* out, std::size_t samples) {
    const __m128i swap = _mm_setr_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14);
    const __m256 scale = _mm256_set1_ps(0x1p-15F);
    convertAll<2, 16>(in, out, samples, [&](const std::byte* at) {
        const __m128i words = IsBigEndian ? _mm_shuffle_epi8(load(at), swap) : load(at);
        return _mm256_mul_ps(_mm256_cvtepi32_ps(_mm256_cvtepi16_epi32(words)), scale);
    });
}

// The three bytes of a sample go to the high end of a 32-bit word, whose sign is then theirs.
template <bool IsBigEndian>
void convertSigned24(const std::byte* in, float* out, std::size_t samples) {
    const __m128i four = IsBigEndian
                             ? _mm_setr_epi8(-1, 2, 1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9)
                             : _mm_setr_epi8(-1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11);
    const __m256i spread = _mm256_broadcastsi128_si256(four);
    const __m256 scale = _mm256_set1_ps(0x1p-31F);
    convertAll<3, 28>(in, out, samples, [&](const std::byte* at) {
        const __m256i bytes =
            _mm256_inserti128_si256(_mm256_castsi128_si256(load(at)), load(at + 12), 1);
        return _mm256_mul_ps(_mm256_cvtepi32_ps(_mm256_shuffle_epi8(bytes, spread)), scale);
    });
}

template <bool IsBigEndian>
void convertSigned32(const std::byte* in, float* out, std::size_t samples) {
    const __m256i swap = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12));
    const __m256 scale = _mm256_set1_ps(0x1p-31F);
    convertAll<4, 32>(in, out, samples, [&](const std::byte* at) {
        __m256i words = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at));
        if (IsBigEndian) words = _mm256_shuffle_epi8(words, swap);
        return _mm256_mul_ps(_mm256_cvtepi32_ps(words), scale);
    });
}

}  // namespace

PcmConversion avx2PcmConversion(std::uint32_t bytesPerSample, bool isBigEndian) {
    if (__builtin_cpu_supports("avx2") == 0) return nullptr;
    switch (bytesPerSample) {
        case 2:
            return isBigEndian ? convertSigned16<true> : convertSigned16<false>;
        case 3:
            return isBigEndian ? convertSigned24<true> : convertSigned24<false>;
        case 4:
            return isBigEndian ? convertSigned32<true> : convertSigned32<false>;
        default:
            return nullptr;
    }
}

}  // namespace atdp::services

#ifdef __clang__
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif
