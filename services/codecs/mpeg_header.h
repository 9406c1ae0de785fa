// The 4-byte header of an MPEG audio frame (ISO 11172-3, ISO 13818-3, and the unofficial 2.5).
#pragma once

#include <cstdint>
#include <optional>

#include "services/io/byte_cursor.h"

namespace atdp::services {

enum class MpegVersion : std::uint8_t { k1, k2, k25 };

struct MpegHeader {
    static constexpr std::size_t kBytes = 4;

    MpegVersion version;
    std::uint8_t layer;         // 1 to 3
    bool hasChecksum;           // 2 bytes after the header
    std::uint8_t bitrateIndex;  // 0: free format, whose frames tell their size by their distance
    std::uint8_t rateIndex;
    bool padded;
    bool isMono;

    std::uint32_t rate() const;  // Hz
    std::uint32_t channels() const { return isMono ? 1 : 2; }
    std::uint32_t framesPerPacket() const;  // 384, 576 or 1152
    bool isFreeFormat() const { return bitrateIndex == 0; }

    // The whole packet, header included; `freeFormatBytes` is that of an unpadded packet of a
    // free-format stream.
    std::uint32_t packetBytes(std::uint32_t freeFormatBytes) const;

    // A padded packet is longer by that much.
    std::uint32_t paddingBytes() const { return layer == 1 ? 4 : 1; }

    // Where layer III keeps its side information, after header and checksum.
    std::uint32_t sideInfoOffset() const { return hasChecksum ? 6 : 4; }
    std::uint32_t sideInfoBytes() const;

    // Whether both can belong to one stream: same version, layer and rate. The channel count may
    // change within a stream, and free format does not mix with stated bit rates.
    bool agreesWith(const MpegHeader& other) const {
        return version == other.version && layer == other.layer && rateIndex == other.rateIndex &&
               isFreeFormat() == other.isFreeFormat();
    }
};

// The header at the front of `bytes`, or none.
std::optional<MpegHeader> parseMpegHeader(Bytes bytes);

}  // namespace atdp::services
