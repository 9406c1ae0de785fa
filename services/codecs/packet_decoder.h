#pragma once

#include <cstdint>

namespace atdp::services {

// Decodes the packets of a stream, each into the same number of frames, interleaved.
class PacketDecoder {
 public:
    virtual ~PacketDecoder() = default;

    // Decodes a packet of the stream, any packet in any order; its samples do not depend on what
    // was decoded before. They are the decoder's, until the next call. A damaged packet is silence.
    // Null when its bytes cannot be read.
    virtual const float* decode(std::uint64_t packet) = 0;
};

}  // namespace atdp::services
