// Where the packets of an MPEG-4 or QuickTime track are, and how long they take.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "services/codecs/packet_place.h"
#include "services/io/byte_source.h"

namespace atdp::services {

struct SampleTable {
    // Up to the last that the file holds as a whole. One before it that the file does not hold has
    // no bytes.
    std::vector<PacketPlace> packets;
    bool isCutShort = false;     // packets at the end are missing
    std::uint64_t duration = 0;  // of these packets, in units of the media's time scale
};

// Reads a sample table ('stbl'). Where parts of it are missing there are no packets.
Result<SampleTable> readSampleTable(ByteSource& source, ByteRange table);

// Where the first packet starts, from the fronts of the tables alone; none where there is none.
Result<std::optional<std::uint64_t>> firstPacketOffset(ByteSource& source, ByteRange table);

}  // namespace atdp::services
