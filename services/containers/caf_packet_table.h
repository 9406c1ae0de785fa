// The packet table ('pakt') of a CAF file.
#pragma once

#include <cstdint>
#include <vector>

#include "services/codecs/packet_place.h"
#include "services/io/byte_source.h"

namespace atdp::services {

struct CafPacketTable {
    // Up to the last that the sound holds as a whole, and as many as limits.h allows.
    std::vector<PacketPlace> packets;

    // As the table states them; nothing is compared with the packets.
    std::int64_t validFrames = 0;
    std::int32_t primingFrames = 0;
};

// Reads a table of packets that lie in `data` one after the other. With `tellsFrames` each entry
// states the frames too, which are passed over. A table that is cut short, or has a number in it
// that cannot be, ends there.
Result<CafPacketTable> readCafPacketTable(ByteSource& source, ByteRange table, ByteRange data,
                                          bool tellsFrames);

}  // namespace atdp::services
