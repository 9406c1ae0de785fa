#include <cpuid.h>
#include <immintrin.h>

#include <algorithm>
#include <cstddef>

#include "services/codecs/alac_kernels.h"
#include "services/codecs/alac_prediction.h"
#include "services/codecs/alac_residuals.h"

// After the includes: what other files compile too must not need these instructions.
#ifdef __clang__
#pragma clang attribute push(__attribute__((target("avx2,bmi,bmi2,lzcnt"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2,bmi,bmi2,lzcnt")
#endif

namespace atdp::services {
namespace {

bool readResiduals(BitReader& bits, const AlacCoding& coding, std::int32_t* out,
                   std::uint32_t frames) {
    return readAlacResidualsBody(bits, coding, out, frames);
}

// Both channels at once, each in its half of the registers: taps k to k + 3 of the first channel in
// the low half and of the second in the high one, four taps of each per register.
using Vector = __m256i;
constexpr std::size_t kTapsPerVector = 4;

Vector perChannel(std::int32_t first, std::int32_t second) {
    return _mm256_blend_epi32(_mm256_set1_epi32(first), _mm256_set1_epi32(second), 0xF0);
}

// Lane k of each half to lane k - 1, lane k - 2; zeros follow.
Vector down1(Vector v) {
    return _mm256_srli_si256(v, 4);
}
Vector down2(Vector v) {
    return _mm256_srli_si256(v, 8);
}

// The sum of each half in all its lanes.
Vector sumOfHalves(Vector v) {
    v = _mm256_add_epi32(v, _mm256_shuffle_epi32(v, 0x4E));
    return _mm256_add_epi32(v, _mm256_shuffle_epi32(v, 0xB1));
}

// The state of two predictors with up to 4 * N taps each. In bare arrays, because vectors lose
// their alignment as arguments of templates.
template <std::size_t N>
struct Predictors {
    Vector taps[N];
    Vector newest;           // sample, in all lanes
    Vector history[N];       // the samples before it
    Vector olderWeights[N];  // of the history in the adaptation: 1 for the oldest sample used
    Vector active[N];        // 1 where there is a tap
    Vector shift;
    Vector half;       // what rounds before the shift
    Vector allButOne;  // 2^shift - 1
    Vector narrow;     // bits above those of a sample
};

template <std::size_t N>
Predictors<N> load(const std::int32_t* pairs, std::uint32_t frames,
                   const std::array<AlacPredictor, 2>& predictors, unsigned bits) {
    alignas(Vector) std::int32_t taps[N][8] = {}, history[N][8] = {}, olderWeights[N][8] = {},
                                 active[N][8] = {};
    std::int32_t shift[2], half[2];
    for (std::size_t c = 0; c < 2; ++c) {
        const AlacPredictor& predictor = predictors[c];
        shift[c] = static_cast<std::int32_t>(predictor.shift);
        half[c] = shift[c] > 0 ? 1 << (shift[c] - 1) : 0;
        for (std::size_t k = 0; k < predictor.order; ++k) {
            const std::size_t lane = 4 * c + k % 4;
            taps[k / 4][lane] = predictor.taps[k];
            active[k / 4][lane] = 1;
        }
        for (std::size_t k = 0; k + 1 < predictor.order; ++k)
            olderWeights[k / 4][4 * c + k % 4] = static_cast<std::int32_t>(predictor.order - k - 1);
        for (std::size_t k = 0; k < std::min<std::size_t>(4 * N, frames - 1); ++k)
            history[k / 4][4 * c + k % 4] = pairs[2 * (frames - 2 - k) + c];
    }
    Predictors<N> state;
    for (std::size_t n = 0; n < N; ++n) {
        const auto vector = [&](auto& lanes) {
            return _mm256_load_si256(reinterpret_cast<const Vector*>(lanes[n]));
        };
        state.taps[n] = vector(taps);
        state.history[n] = vector(history);
        state.olderWeights[n] = vector(olderWeights);
        state.active[n] = vector(active);
    }
    state.newest = perChannel(pairs[2 * (frames - 1)], pairs[2 * (frames - 1) + 1]);
    state.shift = perChannel(shift[0], shift[1]);
    state.half = perChannel(half[0], half[1]);
    state.allButOne = perChannel((1 << shift[0]) - 1, (1 << shift[1]) - 1);
    state.narrow = _mm256_set1_epi32(static_cast<std::int32_t>(32 - bits));
    return state;
}

// Moves the taps. What is left of the residual at a tap follows from the sum of what the older
// taps account for; all of that is positive, so a tap moves where that sum is less than the
// residual. Nothing is older than the newest sample, so only its direction is waited for.
template <std::size_t N>
[[gnu::always_inline]] inline void adapt(Predictors<N>& state, const Vector (&distances)[N],
                                         const Vector (&olderDistances)[N], Vector residual) {
    const Vector rounding = _mm256_and_si256(_mm256_srai_epi32(residual, 31), state.allButOne);
    Vector left = _mm256_abs_epi32(residual);
    for (std::size_t n = N; n-- > 0;) {
        const Vector size = _mm256_add_epi32(_mm256_abs_epi32(olderDistances[n]), rounding);
        Vector older =
            _mm256_mullo_epi32(_mm256_srlv_epi32(size, state.shift), state.olderWeights[n]);
        older = _mm256_add_epi32(older, down1(older));
        older = _mm256_add_epi32(older, down2(older));
        const Vector moves = _mm256_cmpgt_epi32(left, older);
        const Vector move =
            _mm256_sign_epi32(_mm256_sign_epi32(state.active[n], residual), distances[n]);
        state.taps[n] = _mm256_add_epi32(state.taps[n], _mm256_and_si256(move, moves));
        if (n > 0) left = _mm256_sub_epi32(left, _mm256_shuffle_epi32(older, 0));
    }
}

// What all taps but the first, whose sample is the newest, give; in all lanes of each half.
// `distances` are those of the history, which starts at the second tap.
template <std::size_t N>
[[gnu::always_inline]] inline Vector sumOfOlder(const Predictors<N>& state,
                                                const Vector (&distances)[N]) {
    Vector sum = _mm256_mullo_epi32(distances[N - 1], down1(state.taps[N - 1]));
    for (std::size_t n = 0; n + 1 < N; ++n) {
        const Vector taps = _mm256_alignr_epi8(state.taps[n + 1], state.taps[n], 4);
        sum = _mm256_add_epi32(sum, _mm256_mullo_epi32(distances[n], taps));
    }
    return sumOfHalves(sum);
}

// Puts `newest` in front of the values.
template <std::size_t N>
[[gnu::always_inline]] inline void push(Vector (&values)[N], Vector newest) {
    for (std::size_t n = N; n-- > 1;) values[n] = _mm256_alignr_epi8(values[n], values[n - 1], 12);
    values[0] = _mm256_alignr_epi8(values[0], newest, 12);
}

// Every sample needs the one before it, and little else that is not known long before; so the tap
// of that one is kept apart from the others.
template <std::size_t N>
[[gnu::always_inline]] inline void step(Predictors<N>& state, Vector base, Vector residual) {
    Vector olderDistances[N], distances[N];
    for (std::size_t n = 0; n < N; ++n)
        distances[n] = olderDistances[n] = _mm256_sub_epi32(state.history[n], base);
    const Vector distance = _mm256_sub_epi32(state.newest, base);
    push(distances, distance);

    const Vector older = _mm256_add_epi32(sumOfOlder(state, olderDistances), state.half);
    const Vector firstTap = _mm256_shuffle_epi32(state.taps[0], 0);
    const Vector sum = _mm256_add_epi32(older, _mm256_mullo_epi32(distance, firstTap));
    const Vector wide =
        _mm256_add_epi32(_mm256_add_epi32(base, residual), _mm256_srav_epi32(sum, state.shift));
    adapt(state, distances, olderDistances, residual);
    push(state.history, state.newest);
    state.newest = _mm256_srav_epi32(_mm256_sllv_epi32(wide, state.narrow), state.narrow);
}

// Goes on at frame `first`, to which the plain version has come.
template <std::size_t N>
void predictFrom(std::uint32_t first, std::int32_t* pairs, std::uint32_t frames,
                 const std::array<AlacPredictor, 2>& predictors, unsigned bits) {
    Predictors<N> state = load<N>(pairs, first, predictors, bits);
    const std::int32_t* base0 = pairs - 2 * (std::ptrdiff_t{predictors[0].order} + 1);
    const std::int32_t* base1 = pairs - 2 * (std::ptrdiff_t{predictors[1].order} + 1) + 1;
    for (std::size_t i = first; i < frames; ++i) {
        const Vector base = perChannel(base0[2 * i], base1[2 * i]);
        const Vector residual = perChannel(pairs[2 * i], pairs[2 * i + 1]);
        step(state, base, residual);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(pairs + 2 * i),
                         _mm_unpacklo_epi32(_mm256_castsi256_si128(state.newest),
                                            _mm256_extracti128_si256(state.newest, 1)));
    }
}

// Whether the sums in adapt() stay below 2^31.
bool fits(const AlacPredictor& predictor, unsigned bits) {
    const std::uint64_t weights = predictor.order * (predictor.order + 1) / 2;
    return predictor.order > 0 && predictor.order < kMaxAlacOrder &&
           weights << bits < std::uint64_t{1} << 31;
}

void predict(std::int32_t* pairs, std::uint32_t frames, unsigned channels,
             std::array<AlacPredictor, 2>& predictors, unsigned bits) {
    if (channels == 1) predictors[1] = predictors[0];
    if (!fits(predictors[0], bits) || !fits(predictors[1], bits))
        return predictAlac(pairs, frames, channels, predictors, bits);
    const unsigned order = std::max(predictors[0].order, predictors[1].order);
    const std::uint32_t first = std::min(order + 1, frames);
    for (unsigned c = 0; c < channels; ++c) {
        if (predictors[c].hasSumPass) {
            AlacPredictor sum;
            sum.order = kMaxAlacOrder;
            predictAlacChannel(pairs + c, frames, sum, bits);
            predictors[c].hasSumPass = false;
        }
        predictAlacChannel(pairs + c, first, predictors[c], bits);
    }
    if (order <= 4)
        predictFrom<1>(first, pairs, frames, predictors, bits);
    else if (order <= 8)
        predictFrom<2>(first, pairs, frames, predictors, bits);
    else if (order <= 16)
        predictFrom<4>(first, pairs, frames, predictors, bits);
    else
        predictFrom<8>(first, pairs, frames, predictors, bits);
}

}  // namespace

#ifdef __clang__
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

namespace {

// Not every compiler knows it by name.
bool hasLzcnt() {
    unsigned a = 0;
    unsigned b = 0;
    unsigned c = 0;
    unsigned d = 0;
    return __get_cpuid(0x8000'0001, &a, &b, &c, &d) != 0 && (c & bit_LZCNT) != 0;
}

}  // namespace

const AlacKernels* avx2AlacKernels() {
    static constexpr AlacKernels kKernels{readResiduals, predict};
    static const bool isThere = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
                                __builtin_cpu_supports("bmi2") && hasLzcnt();
    return isThere ? &kKernels : nullptr;
}

}  // namespace atdp::services
