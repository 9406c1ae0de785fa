// The chunks of RIFF files and their relatives: an identifier, a size, a body, and padding.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "services/containers/sound_description.h"
#include "services/io/byte_source.h"

namespace atdp::services {

enum class ChunkKind {
    kRiff,    // a 32-bit size, little-endian; a pad byte where it is odd
    kIff,     // the same, big-endian
    kCaf,     // a 64-bit size, big-endian; no padding
    kWave64,  // a GUID, and a 64-bit size that counts the header too; padded to 8 bytes
};

struct Chunk {
    // Four-character code. Of Wave64 the start of the GUID, and 0 where the rest is not known.
    std::uint32_t identifier = 0;
    std::uint64_t statedBytes = 0;  // the size of the body that the header states
    ByteRange body;                 // clamped to the file
};

// The chunks from an offset to the end of the file, which is taken over the size of the enclosing
// form: writers that were interrupted leave that wrong.
class ChunkWalk {
 public:
    ChunkWalk(ByteSource& source, std::uint64_t offset, ChunkKind kind)
        : source_(source), offset_(offset), kind_(kind) {}

    // The next chunk, or none at the end of the file, or after as many chunks as limits.h allows.
    Result<std::optional<Chunk>> next();

    // Makes the last chunk that next() gave longer or shorter, where its size stands elsewhere.
    void resize(Chunk& chunk, std::uint64_t bytes);

 private:
    Result<std::optional<Chunk>> readHeader(std::uint64_t offset);
    std::uint64_t paddingBytes(const Chunk& chunk);

    ByteSource& source_;
    std::uint64_t offset_;
    ChunkKind kind_;
    std::optional<Chunk> last_;
    std::size_t chunks_ = 0;
};

// The chunks that say something of the sound, as many as limits.h allows.
class TagChunks {
 public:
    void add(const TagChunk& chunk);
    std::vector<TagChunk> take() { return std::move(chunks_); }

 private:
    std::vector<TagChunk> chunks_;
    std::size_t id3Tags_ = 0;  // among them
};

}  // namespace atdp::services
