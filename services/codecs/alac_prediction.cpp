#include "services/codecs/alac_prediction.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

namespace atdp::services {
namespace {

constexpr std::size_t kStride = 2;

// All sums wrap, as a damaged packet may make them do.
std::int32_t wrappedSum(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
std::int32_t wrappedDifference(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

// The low `bits` of a value, with their sign.
std::int32_t narrowed(std::int32_t value, unsigned bits) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value) << (32 - bits)) >>
           (32 - bits);
}

std::int32_t signOf(std::int32_t value) {
    return (value > 0) - (value < 0);
}

void narrow(std::int32_t* samples, std::uint32_t frames, unsigned bits) {
    for (std::uint32_t i = 0; i < frames; ++i)
        samples[kStride * i] = narrowed(samples[kStride * i], bits);
}

void runningSum(std::int32_t* samples, std::uint32_t frames, unsigned bits) {
    std::int32_t sum = 0;
    for (std::uint32_t i = 0; i < frames; ++i)
        samples[kStride * i] = sum = narrowed(wrappedSum(samples[kStride * i], sum), bits);
}

// Predicts from the distances of the last samples to `base`, the one before them.
std::int32_t prediction(const std::int32_t* newest, std::int32_t base,
                        const AlacPredictor& predictor) {
    std::uint32_t sum = predictor.shift > 0 ? 1U << (predictor.shift - 1) : 0;
    for (std::size_t k = 0; k < predictor.order; ++k)
        sum += static_cast<std::uint32_t>(predictor.taps[k]) *
               static_cast<std::uint32_t>(wrappedDifference(*(newest - kStride * k), base));
    return static_cast<std::int32_t>(sum) >> predictor.shift;
}

// Moves the taps by one each, the oldest sample's first, towards what would have left a smaller
// residual, until the whole of it is accounted for.
void adapt(const std::int32_t* newest, std::int32_t base, std::int32_t residual,
           AlacPredictor& predictor) {
    const std::int32_t direction = signOf(residual);
    const std::int64_t rounding = residual < 0 ? (1 << predictor.shift) - 1 : 0;
    std::int64_t left = std::abs(std::int64_t{residual});
    for (unsigned k = predictor.order; k-- > 0 && left > 0;) {
        const std::int32_t distance = wrappedDifference(*(newest - kStride * k), base);
        predictor.taps[k] = wrappedSum(predictor.taps[k], direction * signOf(distance));
        left -= (predictor.order - k) *
                ((std::abs(std::int64_t{distance}) + rounding) >> predictor.shift);
    }
}

}  // namespace

void predictAlacChannel(std::int32_t* samples, std::uint32_t frames, AlacPredictor& predictor,
                        unsigned bits) {
    if (predictor.hasSumPass) runningSum(samples, frames, bits);
    if (predictor.order == 0) return narrow(samples, frames, bits);
    if (predictor.order == kMaxAlacOrder) return runningSum(samples, frames, bits);
    const std::uint32_t first = std::min(predictor.order + 1, frames);
    runningSum(samples, first, bits);
    for (std::uint32_t i = first; i < frames; ++i) {
        std::int32_t* sample = samples + kStride * i;
        const std::int32_t* newest = sample - kStride;
        const std::int32_t base = *(newest - kStride * predictor.order);
        const std::int32_t residual = *sample;
        const std::int32_t predicted = wrappedSum(base, prediction(newest, base, predictor));
        *sample = narrowed(wrappedSum(predicted, residual), bits);
        adapt(newest, base, residual, predictor);
    }
}

void predictAlac(std::int32_t* pairs, std::uint32_t frames, unsigned channels,
                 std::array<AlacPredictor, 2>& predictors, unsigned bits) {
    for (unsigned c = 0; c < channels; ++c)
        predictAlacChannel(pairs + c, frames, predictors[c], bits);
}

}  // namespace atdp::services
