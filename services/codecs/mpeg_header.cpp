#include "services/codecs/mpeg_header.h"

namespace atdp::services {
namespace {

constexpr std::uint16_t kRates[3] = {44100, 48000, 32000};  // MPEG-1; 2 has half, 2.5 a quarter

// kbit/s by bit rate index: MPEG-1 layers I to III, then layer I and layers II and III of MPEG-2.
constexpr std::uint16_t kKilobits[5][15] = {
    {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
    {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},
    {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},
};

}  // namespace

std::uint32_t MpegHeader::rate() const {
    return std::uint32_t{kRates[rateIndex]} >> static_cast<unsigned>(version);
}

std::uint32_t MpegHeader::framesPerPacket() const {
    if (layer == 1) return 384;
    return layer == 3 && version != MpegVersion::k1 ? 576 : 1152;
}

std::uint32_t MpegHeader::packetBytes(std::uint32_t freeFormatBytes) const {
    const std::uint32_t padding = padded ? paddingBytes() : 0;
    if (isFreeFormat()) return freeFormatBytes + padding;
    const unsigned row = version == MpegVersion::k1 ? layer - 1U : layer == 1 ? 3U : 4U;
    const std::uint32_t bitsPerSecond = kKilobits[row][bitrateIndex] * 1000U;
    // A slot is 4 bytes in layer I, 1 in the others; a packet has a whole number of them.
    const std::uint32_t bytesPerSlot = paddingBytes();
    return framesPerPacket() / 8 / bytesPerSlot * bitsPerSecond / rate() * bytesPerSlot + padding;
}

std::uint32_t MpegHeader::sideInfoBytes() const {
    if (version == MpegVersion::k1) return isMono ? 17 : 32;
    return isMono ? 9 : 17;
}

std::optional<MpegHeader> parseMpegHeader(Bytes bytes) {
    if (bytes.size() < MpegHeader::kBytes) return std::nullopt;
    const auto word = loadBigEndian<std::uint32_t>(bytes.data());
    if (word >> 21 != 0x7FF) return std::nullopt;
    const std::uint32_t version = word >> 19 & 3;
    const std::uint32_t layer = word >> 17 & 3;
    const std::uint32_t bitrateIndex = word >> 12 & 15;
    const std::uint32_t rateIndex = word >> 10 & 3;
    const std::uint32_t emphasis = word & 3;
    // Reserved values; bit rate index 15 is what a run of bytes 0xFF shows.
    if (version == 1 || layer == 0 || bitrateIndex == 15 || rateIndex == 3 || emphasis == 2)
        return std::nullopt;
    MpegHeader header;
    header.version = version == 3   ? MpegVersion::k1
                     : version == 2 ? MpegVersion::k2
                                    : MpegVersion::k25;
    header.layer = static_cast<std::uint8_t>(4 - layer);
    header.hasChecksum = (word >> 16 & 1) == 0;
    header.bitrateIndex = static_cast<std::uint8_t>(bitrateIndex);
    header.rateIndex = static_cast<std::uint8_t>(rateIndex);
    header.padded = (word >> 9 & 1) != 0;
    header.isMono = (word >> 6 & 3) == 3;
    return header;
}

}  // namespace atdp::services
