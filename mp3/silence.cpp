#include "mp3/silence.h"

#include <algorithm>
#include <cmath>

namespace atdp {
namespace {

bool isSilent(const float* frame, std::uint32_t channels, float level) {
    return std::none_of(frame, frame + channels,
                        [level](float sample) { return std::fabs(sample) > level; });
}

}  // namespace

float silenceLevel(float decibels) {
    return std::pow(10.0F, decibels / 20.0F);
}

std::uint64_t silentFramesAtStart(const float* samples, std::uint64_t frames,
                                  std::uint32_t channels, float level) {
    std::uint64_t silent = 0;
    while (silent < frames && isSilent(samples + silent * channels, channels, level)) ++silent;
    return silent;
}

std::uint64_t silentFramesAtEnd(const float* samples, std::uint64_t frames, std::uint32_t channels,
                                float level) {
    std::uint64_t silent = 0;
    while (silent < frames && isSilent(samples + (frames - 1 - silent) * channels, channels, level))
        ++silent;
    return silent;
}

}  // namespace atdp
