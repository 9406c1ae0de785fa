#pragma once

#include <algorithm>
#include <cstdint>

#include "services/io/byte_cursor.h"
#include "services/io/byte_source.h"

namespace atdp::services {

// The start of a run of bytes, such as a body: as much as there is of it and as `room` holds.
inline Result<Bytes> readStart(ByteSource& source, ByteRange range, std::span<std::byte> room) {
    const auto got =
        source.readAt(range.offset, room.first(std::min<std::uint64_t>(room.size(), range.bytes)));
    if (!got) return got.failure();
    return Bytes(room).first(*got);
}

}  // namespace atdp::services
