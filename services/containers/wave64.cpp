#include "services/containers/wave64.h"

#include <algorithm>
#include <array>
#include <optional>

#include "services/containers/chunk_walk.h"
#include "services/containers/wave_format.h"

namespace atdp::services {
namespace {

constexpr std::size_t kFormHeaderBytes = 40;  // GUID, size, and the GUID of what it holds
constexpr std::uint32_t kSummaryList = 0xBC94'5F92;

struct Wave64Chunks {
    std::optional<WaveFormat> format;
    std::optional<ByteRange> data;
    TagChunks tagChunks;
};

// The sound runs to the end of the file where a writer that could not go back left its size open:
// all ones, or 0 in a form whose own size ends before the sound.
bool isOpen(const Chunk& chunk, std::uint64_t formBytes) {
    return chunk.statedBytes == 0 && formBytes <= chunk.body.offset;
}

Result<Wave64Chunks> collectChunks(ByteSource& source, std::uint64_t formBytes) {
    ChunkWalk walk(source, kFormHeaderBytes, ChunkKind::kWave64);
    Wave64Chunks chunks;
    for (;;) {
        const auto next = walk.next();
        if (!next) return next.failure();
        if (!*next) return chunks;
        Chunk chunk = **next;
        if (chunk.identifier == fourCharCode("fmt ") && !chunks.format) {
            const auto format = readWaveFormat(source, chunk);
            if (!format) return format.failure();
            chunks.format = *format;
        } else if (chunk.identifier == fourCharCode("data") && !chunks.data) {
            if (isOpen(chunk, formBytes)) walk.resize(chunk, source.sizeBytes());
            chunks.data = chunk.body;
        } else if (chunk.identifier == fourCharCode("list")) {
            chunks.tagChunks.add({fourCharCode("LIST"), chunk.body});
        } else if (chunk.identifier == kSummaryList) {
            chunks.tagChunks.add({kWave64Summary, chunk.body});
        } else if (isId3(chunk.identifier)) {
            chunks.tagChunks.add({chunk.identifier, chunk.body});
        }
    }
}

}  // namespace

bool isWave64(Bytes head) {
    constexpr std::array<unsigned char, 16> kRiff = {
        'r', 'i', 'f', 'f', 0x2E, 0x91, 0xCF, 0x11, 0xA5, 0xD6, 0x28, 0xDB, 0x04, 0xC1, 0x00, 0x00};
    constexpr std::array<unsigned char, 16> kWave = {
        'w', 'a', 'v', 'e', 0xF3, 0xAC, 0xD3, 0x11, 0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A};
    return head.size() >= kFormHeaderBytes &&
           std::ranges::equal(head.first(16), std::as_bytes(std::span(kRiff))) &&
           std::ranges::equal(head.subspan(24, 16), std::as_bytes(std::span(kWave)));
}

Result<SoundDescription> describeWave64(ByteSource& source) {
    std::array<std::byte, kFormHeaderBytes> head{};
    const auto got = source.readAt(0, head);
    if (!got) return got.failure();
    auto chunks = collectChunks(source, loadLittleEndian<std::uint64_t>(head.data() + 16));
    if (!chunks) return chunks.failure();
    if (!chunks->format || !chunks->data) return Failure::kDamaged;
    auto sound = describeWaveFormat(source, kAudioFileWave64Type, *chunks->format, *chunks->data);
    if (sound) sound->tagChunks = chunks->tagChunks.take();
    return sound;
}

}  // namespace atdp::services
