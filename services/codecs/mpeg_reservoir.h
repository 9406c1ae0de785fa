// The bit reservoir of MPEG audio, layer III.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "services/io/byte_cursor.h"

namespace atdp::services {

// The sound data that the packets so far have left for those to come: what packets hold behind
// their side information, one behind the other. A packet's bits may start in that of packets before
// it, but not before the bits of the packet in front of it (ISO 11172-3, 2.4.3.4).
class MpegReservoir {
 public:
    // Packets that one may reach back over. The smallest there are, of 8 kbit/s at 24 kHz, have 3
    // bytes to give, and side information of that rate reaches back 255 bytes.
    static constexpr std::size_t kPackets = 128;
    static constexpr std::uint32_t kBytes = 511;  // the farthest that side information can state

    explicit MpegReservoir(std::uint32_t maxReach = kBytes) : maxReach_(maxReach) {}

    // How many bytes before its own the next packet's bits may start.
    std::uint32_t reach() const;

    // The packet's sound data, and how many bytes before them its bits start, at most reach().
    void add(Bytes soundData, std::uint32_t start);

    // The last of the sound data, reach() bytes of them. Valid until the next packet is added.
    Bytes bytes() const { return Bytes(last_).last(reach()); }

 private:
    std::uint32_t maxReach_;
    std::array<std::byte, kBytes> last_{};          // ends at end_
    std::array<std::uint64_t, kPackets> starts_{};  // of the last packets' sound data
    std::uint64_t packets_ = 0;
    std::uint64_t end_ = 0;    // all positions: bytes of sound data since the first packet
    std::uint64_t floor_ = 0;  // before which nobody may reach any more
};

}  // namespace atdp::services
