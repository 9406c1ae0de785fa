// The first frame of many layer III streams holds no sound but tells of the stream: "Xing" or
// "Info" (with LAME's extension) or "VBRI". The fields are those of the LAME tag's public
// description, revision 1.
#pragma once

#include <cstdint>

#include "services/codecs/mpeg_header.h"
#include "services/codecs/mpeg_packets.h"

namespace atdp::services {

struct MpegInfoFrame {
    std::uint32_t packets = 0;  // of sound, as stated; 0 where it is not

    // Frames that the encoder added before and after the sound; both 0 where it does not tell.
    std::uint32_t delayFrames = 0;
    std::uint32_t paddingFrames = 0;
};

// Reads a packet that starts with `header`; none where the packet holds sound.
std::optional<MpegInfoFrame> parseMpegInfoFrame(const MpegHeader& header, Bytes packet);

// Takes the encoder's counts over where the packets that were found bear them out. `endIsTorn`: a
// further packet was there in part.
void applyInfoFrame(MpegPackets& found, const MpegInfoFrame& info, std::uint32_t framesPerPacket,
                    bool endIsTorn);

}  // namespace atdp::services
