// The chunks of RIFF and IFF files: an identifier, a 32-bit size, a body, and a pad byte where the
// size is odd.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "services/containers/sound_description.h"
#include "services/io/byte_source.h"

namespace atdp::services {

enum class ByteOrder { kLittleEndian, kBigEndian };

struct Chunk {
    std::uint32_t identifier = 0;   // four-character code
    std::uint64_t statedBytes = 0;  // the size that the header states
    ByteRange body;                 // clamped to the file
};

// The chunks from an offset to the end of the file, which is taken over the size of the enclosing
// form: writers that were interrupted leave that wrong.
class ChunkWalk {
 public:
    ChunkWalk(ByteSource& source, std::uint64_t offset, ByteOrder order)
        : source_(source), offset_(offset), order_(order) {}

    // The next chunk, or none at the end of the file, or after as many chunks as limits.h allows.
    Result<std::optional<Chunk>> next();

    // Makes the last chunk that next() gave longer or shorter, where its size stands elsewhere.
    void resize(Chunk& chunk, std::uint64_t bytes);

 private:
    Result<std::optional<Chunk>> readHeader(std::uint64_t offset);
    bool isPadded(const Chunk& chunk);

    ByteSource& source_;
    std::uint64_t offset_;
    ByteOrder order_;
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
