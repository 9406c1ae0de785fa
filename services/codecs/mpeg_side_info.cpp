#include "services/codecs/mpeg_side_info.h"

#include <algorithm>

namespace atdp::services {
namespace {

constexpr std::uint32_t kMaxBigValues = 288;  // pairs of the 576 frequency lines

// Reads fields of up to 32 bits, most significant bit first. The caller sees to it that they are
// there.
class Fields {
 public:
    explicit Fields(Bytes bytes) : bytes_(bytes) {}

    std::uint32_t take(unsigned bits) {
        std::uint32_t value = 0;
        for (; bits > 0; --bits, ++position_) {
            const auto byte = std::to_integer<std::uint32_t>(bytes_[position_ / 8]);
            value = value << 1 | (byte >> (7 - position_ % 8) & 1);
        }
        return value;
    }

 private:
    Bytes bytes_;
    std::size_t position_ = 0;
};

// One channel of one granule.
void takeGranule(Fields& fields, bool isMpeg1, MpegSideInfo& info) {
    info.soundBits += fields.take(12);
    if (fields.take(9) > kMaxBigValues) info.isLegal = false;
    fields.take(8);                // gain
    fields.take(isMpeg1 ? 4 : 9);  // lengths of scale factors
    const bool switchesWindow = fields.take(1) != 0;
    const std::uint32_t blockType = fields.take(2);
    if (switchesWindow && blockType == 0) info.isLegal = false;
    fields.take(20);               // tables and regions
    fields.take(isMpeg1 ? 3 : 2);  // flags
}

}  // namespace

MpegSideInfo parseMpegSideInfo(const MpegHeader& header, Bytes packet) {
    MpegSideInfo info;
    const std::size_t offset = header.sideInfoOffset();
    if (packet.size() < offset + header.sideInfoBytes()) return info;
    info.isLegal = true;
    const bool isMpeg1 = header.version == MpegVersion::k1;
    const std::uint32_t channels = header.channels();
    Fields fields(packet.subspan(offset, header.sideInfoBytes()));
    info.reservoirBytes = fields.take(isMpeg1 ? 9 : 8);
    if (isMpeg1)
        fields.take((channels == 1 ? 5 : 3) + 4 * channels);  // private bits, shared scale factors
    else
        fields.take(channels);
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
