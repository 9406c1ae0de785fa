#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "services/io/byte_source.h"
#include "services/limits.h"

namespace atdp::services {

// Serves the many small reads of header parsing from one block of the source, so that most files
// are described after a single read. The source must outlive it.
class BlockCache final : public ByteSource {
 public:
    explicit BlockCache(ByteSource& source) : source_(source) {}

    std::uint64_t sizeBytes() const override { return source_.sizeBytes(); }
    Result<std::size_t> readAt(std::uint64_t offset, std::span<std::byte> out) override;

 private:
    ByteSource& source_;
    std::array<std::byte, kHeaderBlockBytes> block_;
    ByteRange held_;  // what block_ holds
};

}  // namespace atdp::services
