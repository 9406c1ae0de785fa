#include "services/containers/chunk_walk.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "services/io/byte_cursor.h"
#include "services/limits.h"

namespace atdp::services {
namespace {

constexpr std::size_t kHeaderBytes = 8;

// Whether a code is one that chunks have: printable ASCII.
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

    if (chunks_ == kMaxChunks) return std::optional<Chunk>();
    ++chunks_;
    const auto chunk = readHeader(offset_);
    if (chunk) last_ = *chunk;
    return chunk;
}

// The chunk that starts at `offset`, or none.
Result<std::optional<Chunk>> ChunkWalk::readHeader(std::uint64_t offset) {
    std::array<std::byte, kHeaderBytes> header;
    const auto got = source_.readAt(offset, header);
    if (!got) return got.failure();
    if (*got < header.size()) return std::optional<Chunk>();

    ByteCursor cursor(header);
    Chunk chunk;
    chunk.identifier = cursor.bigEndian<std::uint32_t>();
    const std::uint32_t bytes = order_ == ByteOrder::kBigEndian
                                    ? cursor.bigEndian<std::uint32_t>()
                                    : cursor.littleEndian<std::uint32_t>();
    chunk.statedBytes = bytes;
    chunk.body = clampedTo(source_.sizeBytes(), {offset + kHeaderBytes, bytes});
    return std::optional<Chunk>(chunk);
}

void ChunkWalk::resize(Chunk& chunk, std::uint64_t bytes) {
    chunk.statedBytes = bytes;
    chunk.body = clampedTo(source_.sizeBytes(), {chunk.body.offset, bytes});
    last_ = chunk;
}

// Some writers forget the pad byte. The next chunk then follows at once: an identifier, and a size
// that fits the file.
bool ChunkWalk::isPadded(const Chunk& chunk) {
    if (chunk.body.bytes % 2 == 0) return false;
    const auto next = readHeader(chunk.body.end());
    return !next || !*next || !isIdentifier((*next)->identifier) ||
           (*next)->body.bytes < (*next)->statedBytes;
}

void TagChunks::add(const TagChunk& chunk) {
    const bool isId3 =
        chunk.identifier == fourCharCode("id3 ") || chunk.identifier == fourCharCode("ID3 ");
    if (chunks_.size() >= kMaxTagChunks || (isId3 && id3Tags_ >= kMaxTagsInARow)) return;
    chunks_.push_back(chunk);
    if (isId3) ++id3Tags_;
}

}  // namespace atdp::services
