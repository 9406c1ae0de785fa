#include "services/convert/channel_mixer.h"

#include <algorithm>
#include <utility>

namespace atdp::services {
namespace {

constexpr std::uint32_t kBlockFrames = 512;

}  // namespace

ChannelMixer::ChannelMixer(FrameReader& source, std::uint32_t channelsIn, std::uint32_t channelsOut,
                           std::vector<ChannelGain> gains)
    : source_(source),
      channelsIn_(channelsIn),
      channelsOut_(channelsOut),
      gains_(std::move(gains)),
      block_(std::size_t{kBlockFrames} * channelsIn) {}

bool ChannelMixer::read(float* samples, std::uint32_t* frames) {
    std::uint32_t done = 0;
    while (done < *frames) {
        const std::uint32_t wanted = std::min(kBlockFrames, *frames - done);
        std::uint32_t got = wanted;
        if (!source_.read(block_.data(), &got)) {
            if (done == 0) return false;
            break;
        }
        mix(samples + std::size_t{done} * channelsOut_, got);
        done += got;
        if (got < wanted) break;
    }
    *frames = done;
    return true;
}

void ChannelMixer::mix(float* samples, std::uint32_t frames) const {
    std::fill_n(samples, std::size_t{frames} * channelsOut_, 0.0F);
    for (const auto& [in, out, gain] : gains_) {
        const float* from = block_.data() + in;
        float* to = samples + out;
        for (std::uint32_t i = 0; i < frames; ++i, from += channelsIn_, to += channelsOut_)
            *to += gain * *from;
    }
}

}  // namespace atdp::services
