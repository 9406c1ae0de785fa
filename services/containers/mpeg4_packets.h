// The packets of the sound track of an MPEG-4 or QuickTime file.
#pragma once

#include <memory>
#include <vector>

#include "services/codecs/alac_config.h"
#include "services/codecs/mpeg_packets.h"
#include "services/codecs/packet_place.h"
#include "services/io/byte_source.h"

namespace atdp::services {

struct LosslessTrack {
    AlacConfig config;
    std::vector<PacketPlace> packets;
    std::uint64_t primingFrames = 0;  // before the sound
    std::uint64_t validFrames = 0;    // of it
};

// Both read the tables of a file that was described with that encoding.
Result<LosslessTrack> readLosslessTrack(ByteSource& source);
Result<MpegPackets> readMpegTrack(const std::shared_ptr<ByteSource>& source);

}  // namespace atdp::services
