// Time and position as the host interface counts them: nanoseconds, computed in single precision.
// Hosts compute the same numbers, so the loss of precision is part of the interface.
#pragma once

#include <cstdint>
#include <limits>

namespace atdp {

inline constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;

// Truncates toward zero; a value that is not a number or does not fit gives 2^64 - 1.
template <class Float>
std::uint64_t truncatedToUint64(Float value) {
    constexpr Float kTwoTo64 = Float{18446744073709551616.0};
    if (value > Float{-1} && value < kTwoTo64)
        return value < Float{0} ? 0 : static_cast<std::uint64_t>(value);
    return std::numeric_limits<std::uint64_t>::max();
}

// Truncates toward zero, into the range of a signed 32-bit integer; not a number gives 0.
inline std::int32_t truncatedToInt32(double value) {
    using Limits = std::numeric_limits<std::int32_t>;
    if (!(value > Limits::min())) return value <= Limits::min() ? Limits::min() : 0;
    return value < Limits::max() ? static_cast<std::int32_t>(value) : Limits::max();
}

// The product wraps as an unsigned 64-bit integer, after some 213 days at 1,000 Hz.
inline std::uint64_t nanosecondsFromFrames(std::uint64_t frames, float rate) {
    return truncatedToUint64(static_cast<float>(frames * kNanosecondsPerSecond) / rate);
}

inline std::uint64_t framesFromNanoseconds(std::uint64_t nanoseconds, float rate) {
    return truncatedToUint64(static_cast<float>(nanoseconds) * rate / 1'000'000'000.0F);
}

}  // namespace atdp
