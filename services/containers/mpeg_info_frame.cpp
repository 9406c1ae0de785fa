#include "services/containers/mpeg_info_frame.h"

#include <algorithm>
#include <cctype>

#include "platform/core_audio_types.h"

namespace atdp::services {
namespace {

constexpr std::size_t kVbriOffset = 36;

// Which fields a Xing header has.
constexpr std::uint32_t kHasPackets = 1;
constexpr std::uint32_t kHasBytes = 2;
constexpr std::uint32_t kHasSeekTable = 4;
constexpr std::uint32_t kHasQuality = 8;

std::uint32_t tagAt(Bytes packet, std::size_t offset) {
    return offset + 4 <= packet.size() ? loadBigEndian<std::uint32_t>(packet.data() + offset) : 0;
}

// The extension starts with the encoder's name and version, "LAME3.100" or "Lavc58.54".
bool isEncoderName(Bytes name) {
    return !name.empty() && std::all_of(name.begin(), name.begin() + 4, [](std::byte byte) {
        return std::isgraph(std::to_integer<unsigned char>(byte)) != 0;
    });
}

MpegInfoFrame parseXing(Bytes fields) {
    ByteCursor cursor(fields);
    MpegInfoFrame info;
    const auto flags = cursor.bigEndian<std::uint32_t>();
    if ((flags & kHasPackets) != 0) info.packets = cursor.bigEndian<std::uint32_t>();
    if ((flags & kHasBytes) != 0) cursor.skip(4);
    if ((flags & kHasSeekTable) != 0) cursor.skip(100);
    if ((flags & kHasQuality) != 0) cursor.skip(4);
    const Bytes encoder = cursor.take(9);
    cursor.skip(12);  // method, lowpass, gain, flags, bit rate
    const Bytes counts = cursor.take(3);
    if (!cursor.failed() && isEncoderName(encoder)) {
        const auto packed = loadBigEndian<std::uint16_t>(counts.data());
        info.delayFrames = packed >> 4;
        info.paddingFrames = (packed & 15U) << 8 | std::to_integer<std::uint32_t>(counts[2]);
    }
    return info;
}

}  // namespace

// The tag stands where a decoder that knows nothing of it finds silence: after the side
// information, with which some encoders count the checksum and some do not.
std::optional<MpegInfoFrame> parseMpegInfoFrame(const MpegHeader& header, Bytes packet) {
    if (header.layer != 3) return std::nullopt;
    for (const std::uint32_t start : {std::uint32_t{MpegHeader::kBytes}, header.sideInfoOffset()}) {
        const std::size_t offset = start + header.sideInfoBytes();
        const std::uint32_t tag = tagAt(packet, offset);
        if (tag == fourCharCode("Xing") || tag == fourCharCode("Info"))
            return parseXing(packet.subspan(offset + 4));
    }
    if (tagAt(packet, kVbriOffset) == fourCharCode("VBRI")) return MpegInfoFrame{};
    return std::nullopt;
}

// A file that was cut short has lost the padding that was to come at its end.
void applyInfoFrame(MpegPackets& found, const MpegInfoFrame& info, std::uint32_t framesPerPacket,
                    bool endIsTorn) {
    // What a layer III decoder is late by, with the filterbank's 1 frame: 528 + 1.
    constexpr std::uint32_t kDecoderDelayFrames = 529;
    if (info.delayFrames == 0 && info.paddingFrames == 0) return;
    const std::uint64_t packets = found.packets.size();
    const bool isCutShort = info.packets > packets + (endIsTorn ? 0 : 1);  // some count their own
    const std::uint32_t priming = info.delayFrames + kDecoderDelayFrames;
    const std::uint32_t padding = isCutShort ? 0 : info.paddingFrames;
    const std::uint32_t remainder =
        padding > kDecoderDelayFrames ? padding - kDecoderDelayFrames : 0;
    if (packets * framesPerPacket < std::uint64_t{priming} + remainder) return;
    found.hasGaplessCounts = true;
    found.primingFrames = priming;
    found.remainderFrames = remainder;
}

}  // namespace atdp::services
