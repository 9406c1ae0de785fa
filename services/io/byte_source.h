// Where the bytes of a file come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "services/result.h"

namespace atdp::services {

// A run of bytes within a source.
struct ByteRange {
    std::uint64_t offset = 0;
    std::uint64_t bytes = 0;

    std::uint64_t end() const { return offset + bytes; }
};

// One thread at a time.
class ByteSource {
 public:
    virtual ~ByteSource() = default;

    // The size when the source was opened. A file may have become shorter since.
    virtual std::uint64_t sizeBytes() const = 0;

    // Reads into `out` from `offset` on and answers how many bytes were there: fewer than asked
    // for only at the end of the source, 0 past it.
    virtual Result<std::size_t> readAt(std::uint64_t offset, std::span<std::byte> out) = 0;

    // As readAt, but where the source fails on the way, answers the bytes before that place; a
    // failure only where there are none.
    virtual Result<std::size_t> readUntilFailure(std::uint64_t offset, std::span<std::byte> out) {
        return readAt(offset, out);
    }
};

// The part of `range` that lies within a source of that many bytes.
constexpr ByteRange clampedTo(std::uint64_t sourceBytes, ByteRange range) {
    if (range.offset >= sourceBytes) return {sourceBytes, 0};
    const std::uint64_t available = sourceBytes - range.offset;
    return {range.offset, range.bytes < available ? range.bytes : available};
}

}  // namespace atdp::services
