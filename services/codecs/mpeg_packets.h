// Where the packets of an MPEG audio stream are.
#pragma once

#include <cstdint>
#include <vector>

namespace atdp::services {

// 8 bytes a packet: an hour of sound takes 1.1 MB.
class MpegPacket {
 public:
    // `offset` has 48 bits, `bytes` 16.
    MpegPacket(std::uint64_t offset, std::uint64_t bytes) : packed_(offset << 16 | bytes) {}

    std::uint64_t offset() const { return packed_ >> 16; }  // in the file

    // Header included; fewer than it states where the stream is damaged.
    std::uint32_t bytes() const { return packed_ & 0xFFFF; }
    std::uint64_t end() const { return offset() + bytes(); }

 private:
    std::uint64_t packed_;
};
static_assert(sizeof(MpegPacket) == 8);

struct MpegPackets {
    std::vector<MpegPacket> packets;    // sound only: without the frame that tells of the stream
    std::uint32_t freeFormatBytes = 0;  // unpadded packets of a free-format stream

    // Frames of the whole stream that the encoder put before and after the sound, and the
    // decoder's delay among them. Both 0 where the stream does not tell.
    bool hasGaplessCounts = false;
    std::uint32_t primingFrames = 0;
    std::uint32_t remainderFrames = 0;
};

}  // namespace atdp::services
