#pragma once

#include <cstdint>
#include <vector>

#include "services/codecs/alac_config.h"
#include "services/codecs/packet_place.h"

namespace atdp::services {

// The packets of Apple Lossless in a file.
struct LosslessTrack {
    AlacConfig config;
    std::vector<PacketPlace> packets;
    std::uint64_t primingFrames = 0;  // before the sound
    std::uint64_t validFrames = 0;    // of it
};

}  // namespace atdp::services
