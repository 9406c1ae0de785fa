#include "services/codecs/mpeg_side_info.h"

#include <algorithm>

#include "services/codecs/bit_reader.h"

namespace atdp::services {
namespace {

constexpr std::uint32_t kMaxBigValues = 288;  // pairs of the 576 frequency lines

// One channel of one granule.
void takeGranule(BitReader& fields, bool isMpeg1, MpegSideInfo& info) {
    info.soundBits += fields.read(12);
    if (fields.read(9) > kMaxBigValues) info.isLegal = false;
    fields.skip(8);                // gain
    fields.skip(isMpeg1 ? 4 : 9);  // lengths of scale factors
    const bool switchesWindow = fields.read(1) != 0;
    const std::uint32_t blockType = fields.read(2);
    if (switchesWindow && blockType == 0) info.isLegal = false;
    fields.skip(20);               // tables and regions
    fields.skip(isMpeg1 ? 3 : 2);  // flags
}

}  // namespace

MpegSideInfo parseMpegSideInfo(const MpegHeader& header, Bytes packet) {
    MpegSideInfo info;
    const std::size_t offset = header.sideInfoOffset();
    if (packet.size() < offset + header.sideInfoBytes()) return info;
    info.isLegal = true;
    const bool isMpeg1 = header.version == MpegVersion::k1;
    const std::uint32_t channels = header.channels();
    BitReader fields(packet.subspan(offset));
    info.reservoirBytes = fields.read(isMpeg1 ? 9 : 8);
    if (isMpeg1)
        fields.skip((channels == 1 ? 5 : 3) + 4 * channels);  // private bits, shared scale factors
    else
        fields.skip(channels);
    for (std::uint32_t i = 0; i < (isMpeg1 ? 2 : 1) * channels; ++i)
        takeGranule(fields, isMpeg1, info);
    return info;
}

std::uint32_t maxReservoirBytes(const MpegHeader& header) {
    return header.version == MpegVersion::k1 ? 511 : 255;
}

void blankSideInfo(const MpegHeader& header, std::span<std::byte> packet,
                   std::uint32_t reservoirBytes) {
    const auto sideInfo = packet.subspan(header.sideInfoOffset(), header.sideInfoBytes());
    std::fill(sideInfo.begin(), sideInfo.end(), std::byte{0});
    const std::uint32_t word =
        header.version == MpegVersion::k1 ? reservoirBytes << 7 : reservoirBytes << 8;
    sideInfo[0] = static_cast<std::byte>(word >> 8);
    sideInfo[1] = static_cast<std::byte>(word & 0xFF);
}

}  // namespace atdp::services
