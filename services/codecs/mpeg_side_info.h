// The side information of a layer III packet (ISO 11172-3, 2.4.1.7; ISO 13818-3 for MPEG-2).
#pragma once

#include <cstdint>
#include <span>

#include "services/codecs/mpeg_header.h"

namespace atdp::services {

struct MpegSideInfo {
    // How far before the packet its bits start, in bytes of sound data of the packets before it.
    std::uint32_t reservoirBytes = 0;

    std::uint32_t soundBits = 0;  // that the packet takes, from there on
    bool isLegal = false;         // values are such as an encoder may write
};

// Of a packet that starts with `header`, which is of layer III; illegal where it is cut.
MpegSideInfo parseMpegSideInfo(const MpegHeader& header, Bytes packet);

// The farthest that side information can reach back.
std::uint32_t maxReservoirBytes(const MpegHeader& header);

// Makes a packet one of silence whose bits start that far back.
void blankSideInfo(const MpegHeader& header, std::span<std::byte> packet,
                   std::uint32_t reservoirBytes);

}  // namespace atdp::services
