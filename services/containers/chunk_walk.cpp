#include "services/containers/chunk_walk.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "services/io/byte_cursor.h"
#include "services/limits.h"

namespace atdp::services {
namespace {

constexpr std::size_t kMaxHeaderBytes = 24;

std::size_t headerBytes(ChunkKind kind) {
    switch (kind) {
        case ChunkKind::kCaf:
            return 12;
        case ChunkKind::kWave64:
            return kMaxHeaderBytes;
        default:
            return 8;
    }
}

// The code that a GUID of Wave64 starts with, where the rest is that of its chunks, of its lists or
// of the summary list; else 0.
std::uint32_t codeOfGuid(Bytes guid) {
    constexpr std::array<std::array<unsigned char, 12>, 3> kRests = {
        {{0xF3, 0xAC, 0xD3, 0x11, 0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A},
         {0x2F, 0x91, 0xCF, 0x11, 0xA5, 0xD6, 0x28, 0xDB, 0x04, 0xC1, 0x00, 0x00},
         {0x5A, 0x52, 0xD2, 0x11, 0x86, 0xDC, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A}}};
    const bool isKnown = std::any_of(kRests.begin(), kRests.end(), [guid](const auto& rest) {
        return std::ranges::equal(guid.subspan(4), std::as_bytes(std::span(rest)));
    });
    return isKnown ? loadBigEndian<std::uint32_t>(guid.data()) : 0;
}

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
    if (last_) offset_ = last_->body.end() + paddingBytes(*last_);
    last_.reset();

    if (chunks_ == kMaxChunks) return std::optional<Chunk>();
    ++chunks_;
    const auto chunk = readHeader(offset_);
    if (chunk) last_ = *chunk;
    return chunk;
}

// The chunk that starts at `offset`, or none.
Result<std::optional<Chunk>> ChunkWalk::readHeader(std::uint64_t offset) {
    std::array<std::byte, kMaxHeaderBytes> room;
    const auto header = std::span(room).first(headerBytes(kind_));
    const auto got = source_.readAt(offset, header);
    if (!got) return got.failure();
    if (*got < header.size()) return std::optional<Chunk>();

    ByteCursor cursor(header);
    Chunk chunk;
    if (kind_ == ChunkKind::kWave64) {
        chunk.identifier = codeOfGuid(cursor.take(16));
        const auto bytes = cursor.littleEndian<std::uint64_t>();
        chunk.statedBytes = bytes - std::min<std::uint64_t>(bytes, header.size());
    } else {
        chunk.identifier = cursor.bigEndian<std::uint32_t>();
        chunk.statedBytes = kind_ == ChunkKind::kCaf   ? cursor.bigEndian<std::uint64_t>()
                            : kind_ == ChunkKind::kIff ? cursor.bigEndian<std::uint32_t>()
                                                       : cursor.littleEndian<std::uint32_t>();
    }
    chunk.body = clampedTo(source_.sizeBytes(), {offset + header.size(), chunk.statedBytes});
    return std::optional<Chunk>(chunk);
}

void ChunkWalk::resize(Chunk& chunk, std::uint64_t bytes) {
    chunk.statedBytes = bytes;
    chunk.body = clampedTo(source_.sizeBytes(), {chunk.body.offset, bytes});
    last_ = chunk;
}

// Some writers of RIFF and IFF forget the pad byte. The next chunk then follows at once: an
// identifier, and a size that fits the file.
std::uint64_t ChunkWalk::paddingBytes(const Chunk& chunk) {
    if (kind_ == ChunkKind::kWave64) return (0 - chunk.body.end()) % 8;
    if (kind_ == ChunkKind::kCaf || chunk.body.bytes % 2 == 0) return 0;
    const auto next = readHeader(chunk.body.end());
    const bool isPadded = !next || !*next || !isIdentifier((*next)->identifier) ||
                          (*next)->body.bytes < (*next)->statedBytes;
    return isPadded ? 1 : 0;
}

void TagChunks::add(const TagChunk& chunk) {
    const bool isTag = isId3(chunk.identifier);
    if (chunks_.size() >= kMaxTagChunks || (isTag && id3Tags_ >= kMaxTagsInARow)) return;
    chunks_.push_back(chunk);
    if (isTag) ++id3Tags_;
}

}  // namespace atdp::services
