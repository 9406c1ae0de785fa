#pragma once

#include <cstdint>
#include <vector>

#include "services/codecs/frame_reader.h"
#include "services/convert/channel_matrix.h"

namespace atdp::services {

// Sound of a source on another number of channels.
class ChannelMixer final : public FrameReader {
 public:
    // The source must outlive the mixer. Both counts are from 1 to kMaxChannels.
    ChannelMixer(FrameReader& source, std::uint32_t channelsIn, std::uint32_t channelsOut,
                 std::vector<ChannelGain> gains);

    bool read(float* samples, std::uint32_t* frames) override;
    void seek(std::uint64_t frame) override { source_.seek(frame); }

 private:
    void mix(float* samples, std::uint32_t frames) const;

    FrameReader& source_;
    std::uint32_t channelsIn_;
    std::uint32_t channelsOut_;
    std::vector<ChannelGain> gains_;
    std::vector<float> block_;  // of the source
};

}  // namespace atdp::services
