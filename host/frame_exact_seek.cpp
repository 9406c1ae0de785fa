#include "host/frame_exact_seek.h"

namespace atdp::host {
namespace {

constexpr std::uint64_t kLatestTime = std::uint64_t{1} << 62;  // 146 years, in nanoseconds

// The frame that a decoder lands on, worked out operation by operation as it does.
std::uint64_t landingFrame(std::uint64_t nanoseconds, float rate) {
    const float frame = static_cast<float>(nanoseconds) * rate / 1e9f;
    return frame < 0x1p63f ? static_cast<std::uint64_t>(frame) : UINT64_MAX;
}

}  // namespace

SeekPoint seekPointBefore(std::uint64_t frame, float rate) {
    // The landing frame never falls as time grows, so the latest time is found by halving.
    std::uint64_t early = 0;
    std::uint64_t late = kLatestTime;
    while (early < late) {
        const std::uint64_t middle = early + (late - early + 1) / 2;
        if (landingFrame(middle, rate) <= frame) {
            early = middle;
        } else {
            late = middle - 1;
        }
    }
    return {early, landingFrame(early, rate)};
}

}  // namespace atdp::host
