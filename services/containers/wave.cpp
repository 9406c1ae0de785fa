#include "services/containers/wave.h"

#include <array>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "services/containers/chunk_walk.h"
#include "services/containers/wave_format.h"

namespace atdp::services {
namespace {

constexpr std::uint64_t kFormHeaderBytes = 12;
constexpr std::uint32_t kUnknownSize = 0xFFFF'FFFF;  // of a stream, or stated in the ds64 chunk
constexpr std::uint64_t kToTheEnd = std::numeric_limits<std::uint64_t>::max();

// What the walk over the chunks collects.
struct WaveChunks {
    std::optional<WaveFormat> format;
    std::optional<ByteRange> data;
    TagChunks tagChunks;
};

// Sizes of an RF64 or BW64 file that do not fit 32 bits.
struct LargeSizes {
    std::uint64_t formBytes = 0;
    std::uint64_t dataBytes = 0;
};

bool isLargeForm(std::uint32_t form) {
    return form == fourCharCode("RF64") || form == fourCharCode("BW64");
}

Result<LargeSizes> readLargeSizes(ByteSource& source, const Chunk& chunk) {
    std::array<std::byte, 16> body{};  // a table of further sizes follows
    const auto got = source.readAt(chunk.body.offset, body);
    if (!got) return got.failure();
    ByteCursor cursor(body);
    LargeSizes sizes;
    sizes.formBytes = cursor.littleEndian<std::uint64_t>();
    sizes.dataBytes = cursor.littleEndian<std::uint64_t>();
    return sizes;
}

// The size of the data chunk. A writer that cannot go back, such as a pipe's, leaves it 0 or all
// ones; the sound then runs to the end of the file. A size of 0 is true where the form's own size
// was filled in, and so covers more than the chunks before the data.
std::uint64_t dataBytes(const Chunk& chunk, std::uint64_t formBytes,
                        const std::optional<LargeSizes>& largeSizes) {
    std::uint64_t bytes = chunk.statedBytes;
    if (largeSizes && bytes == kUnknownSize) bytes = largeSizes->dataBytes;
    if (largeSizes && formBytes == kUnknownSize) formBytes = largeSizes->formBytes;
    const bool formIsOpen =
        formBytes == kUnknownSize || formBytes == kToTheEnd || formBytes + 8 <= chunk.body.offset;
    return bytes == kUnknownSize || (bytes == 0 && formIsOpen) ? kToTheEnd : bytes;
}

bool isTagChunk(std::uint32_t identifier) {
    return identifier == fourCharCode("LIST") || isId3(identifier);
}

Result<WaveChunks> collectChunks(ByteSource& source, std::uint32_t formBytes, bool largeForm) {
    ChunkWalk walk(source, kFormHeaderBytes, ChunkKind::kRiff);
    std::optional<LargeSizes> largeSizes;
    WaveChunks chunks;
    for (;;) {
        auto next = walk.next();
        if (!next) return next.failure();
        if (!*next) return chunks;
        Chunk chunk = **next;
        if (chunk.identifier == fourCharCode("ds64") && largeForm && !largeSizes) {
            const auto sizes = readLargeSizes(source, chunk);
            if (!sizes) return sizes.failure();
            largeSizes = *sizes;
        } else if (chunk.identifier == fourCharCode("fmt ") && !chunks.format) {
            const auto format = readWaveFormat(source, chunk);
            if (!format) return format.failure();
            chunks.format = *format;
        } else if (chunk.identifier == fourCharCode("data") && !chunks.data) {
            walk.resize(chunk, dataBytes(chunk, formBytes, largeSizes));
            chunks.data = chunk.body;
        } else if (isTagChunk(chunk.identifier)) {
            chunks.tagChunks.add({chunk.identifier, chunk.body});
        }
    }
}

}  // namespace

bool isWave(Bytes head) {
    ByteCursor cursor(head);
    const auto form = cursor.bigEndian<std::uint32_t>();
    cursor.skip(4);
    const auto kind = cursor.bigEndian<std::uint32_t>();
    return (form == fourCharCode("RIFF") || isLargeForm(form)) && kind == fourCharCode("WAVE");
}

Result<SoundDescription> describeWave(ByteSource& source) {
    std::array<std::byte, kFormHeaderBytes> head{};
    const auto got = source.readAt(0, head);
    if (!got) return got.failure();
    ByteCursor cursor(head);
    const bool largeForm = isLargeForm(cursor.bigEndian<std::uint32_t>());
    const auto formBytes = cursor.littleEndian<std::uint32_t>();

    auto chunks = collectChunks(source, formBytes, largeForm);
    if (!chunks) return chunks.failure();
    if (!chunks->format || !chunks->data) return Failure::kDamaged;
    const std::uint32_t fileType = largeForm ? kAudioFileRF64Type : kAudioFileWAVEType;
    auto sound = describeWaveFormat(source, fileType, *chunks->format, *chunks->data);
    if (!sound) return sound;
    sound->tagChunks = chunks->tagChunks.take();
    return sound;
}

}  // namespace atdp::services
