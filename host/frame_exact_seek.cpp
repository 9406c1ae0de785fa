#include "host/frame_exact_seek.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace atdp::host {
namespace {

constexpr std::uint64_t kLatestTime = std::uint64_t{1} << 62;  // 146 years, in nanoseconds

// The frame that a decoder lands on, worked out operation by operation as it does.
std::uint64_t landingFrame(std::uint64_t nanoseconds, float rate) {
    const float frame = static_cast<float>(nanoseconds) * rate / 1e9f;
    return frame < 0x1p63f ? static_cast<std::uint64_t>(frame) : UINT64_MAX;
}

// The decoder of MPEG files repeats frames after a seek into the last second, so no seek goes
// there. It counts that second back from the end of all frames, but a seek from behind those cut
// at the start, which are up to a second. One more second outweighs the rounding of the duration.
constexpr double kUnsoughtSeconds = 3;

bool repeatsFrames(const DecoderClass& decoderClass) {
    return std::string_view(decoderClass.name) == "AudioToolboxMP3Decoder";
}

std::uint64_t latestSeekFrame(const DecoderClass& decoderClass, AudioFileDecoder& decoder) {
    if (!repeatsFrames(decoderClass)) return std::numeric_limits<std::uint64_t>::max();
    const double seconds = static_cast<double>(decoder.getDuration()) / 1e9 - kUnsoughtSeconds;
    const double frame = seconds * double{decoder.getSamplingRate()};
    return static_cast<std::uint64_t>(std::clamp(frame, 0.0, 0x1p62));
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

SeekPoint seekPointFor(const DecoderClass& decoderClass, AudioFileDecoder& decoder,
                       std::uint64_t frame) {
    return seekPointBefore(std::min(frame, latestSeekFrame(decoderClass, decoder)),
                           decoder.getSamplingRate());
}

}  // namespace atdp::host
