#include "services/containers/chunk_walk.h"

#include <array>

#include "services/io/byte_cursor.h"
#include "services/limits.h"

namespace atdp::services {
namespace {

constexpr std::size_t kHeaderBytes = 8;

// Identifiers are printable ASCII; anything else is not a chunk but what follows the last one.
bool isIdentifier(std::uint32_t code) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        const std::uint32_t character = code >> shift & 0xFF;
        if (character < 0x20 || character > 0x7E) return false;
    }
    return true;
}

}  // namespace

Result<std::optional<Chunk>> ChunkWalk::next() {
    if (last_) offset_ = last_->body.end() + (isPadded(*last_) ? 1 : 0);
    last_.reset();

    std::array<std::byte, kHeaderBytes> header;
    const auto got = source_.readAt(offset_, header);
    if (!got) return got.failure();
    if (*got < header.size() || chunks_ == kMaxChunks) return std::optional<Chunk>();
    ++chunks_;

    ByteCursor cursor(header);
    Chunk chunk;
    chunk.identifier = cursor.bigEndian<std::uint32_t>();
    if (!isIdentifier(chunk.identifier)) return std::optional<Chunk>();
    const std::uint32_t bytes = order_ == ByteOrder::kBigEndian
                                    ? cursor.bigEndian<std::uint32_t>()
                                    : cursor.littleEndian<std::uint32_t>();
    chunk.body.offset = offset_ + kHeaderBytes;
    resize(chunk, bytes);
    return last_;
}

void ChunkWalk::resize(Chunk& chunk, std::uint64_t bytes) {
    chunk.statedBytes = bytes;
    chunk.body = clampedTo(source_.sizeBytes(), {chunk.body.offset, bytes});
    last_ = chunk;
}

// Some writers forget the pad byte. It is 0 where it was written, and no identifier starts with 0.
bool ChunkWalk::isPadded(const Chunk& chunk) {
    if (chunk.body.bytes % 2 == 0) return false;
    std::array<std::byte, 1> pad{};
    const auto got = source_.readAt(chunk.body.end(), pad);
    return got && pad[0] == std::byte{0};
}

}  // namespace atdp::services
