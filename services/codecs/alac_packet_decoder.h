#pragma once

#include <memory>
#include <vector>

#include "services/codecs/alac_decoder.h"
#include "services/codecs/packet_decoder.h"
#include "services/codecs/packet_place.h"
#include "services/io/block_reader.h"

namespace atdp::services {

// Decodes the packets of an Apple Lossless stream, each for itself. A packet with fewer frames than
// the configuration's ends in silence; one that is damaged, not there or larger than any encoder
// makes it is all silence.
class AlacPacketDecoder final : public PacketDecoder {
 public:
    AlacPacketDecoder(std::shared_ptr<ByteSource> source,
                      std::shared_ptr<const std::vector<PacketPlace>> packets,
                      const AlacConfig& config);

    const float* decode(std::uint64_t packet) override;

 private:
    std::shared_ptr<const std::vector<PacketPlace>> packets_;
    std::size_t framesPerPacket_;
    std::size_t channels_;
    BlockReader blocks_;
    AlacDecoder decoder_;
    std::vector<float> samples_;  // of a packet
};

}  // namespace atdp::services
