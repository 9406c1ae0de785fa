#include "services/containers/aiff.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "services/containers/chunk_walk.h"
#include "services/containers/linear_pcm.h"
#include "services/io/read_start.h"

namespace atdp::services {
namespace {

constexpr std::uint64_t kFormHeaderBytes = 12;
constexpr std::uint32_t kUncompressed = fourCharCode("NONE");
constexpr std::uint64_t kSoundHeaderBytes = 8;  // offset and block size in front of the sound

struct CommonChunk {
    std::uint16_t channels = 0;
    std::uint32_t frames = 0;
    std::uint16_t bits = 0;
    double rate = 0;
    std::uint32_t compression = kUncompressed;
};

struct AiffChunks {
    std::optional<CommonChunk> common;
    std::optional<ByteRange> sound;
    TagChunks tagChunks;
};

// An 80-bit extended number (IEEE 754, 15 bits of exponent, explicit integer bit). Rates are
// positive and finite; anything else becomes 0, which no file may state.
double extendedToDouble(ByteCursor& cursor) {
    const auto exponent = cursor.bigEndian<std::uint16_t>();
    const auto mantissa = cursor.bigEndian<std::uint64_t>();
    if (exponent >= 0x7FFF) return 0;
    return std::ldexp(static_cast<double>(mantissa), exponent - 16383 - 63);
}

std::optional<CommonChunk> parseCommon(Bytes body, bool compressed) {
    ByteCursor cursor(body);
    CommonChunk common;
    common.channels = cursor.bigEndian<std::uint16_t>();
    common.frames = cursor.bigEndian<std::uint32_t>();
    common.bits = cursor.bigEndian<std::uint16_t>();
    common.rate = extendedToDouble(cursor);
    if (compressed) common.compression = cursor.bigEndian<std::uint32_t>();
    if (cursor.failed()) return std::nullopt;
    return common;
}

Result<std::optional<CommonChunk>> readCommon(ByteSource& source, const Chunk& chunk,
                                              bool compressed) {
    std::array<std::byte, 22> room;
    const auto body = readStart(source, chunk.body, room);
    if (!body) return body.failure();
    return parseCommon(*body, compressed);
}

// The sound after the header of its chunk and the offset stated there.
Result<ByteRange> readSound(ByteSource& source, const Chunk& chunk) {
    std::array<std::byte, 4> offset{};
    const auto got = source.readAt(chunk.body.offset, offset);
    if (!got) return got.failure();
    const std::uint64_t skipped = kSoundHeaderBytes + loadBigEndian<std::uint32_t>(offset.data());
    if (skipped > chunk.body.bytes) return ByteRange{chunk.body.end(), 0};
    return ByteRange{chunk.body.offset + skipped, chunk.body.bytes - skipped};
}

// A writer that could not go back leaves the sound chunk's size 0 or all ones, and the form's size
// too; the sound then runs to the end of the file.
bool isStreamed(const Chunk& chunk, std::uint32_t formBytes) {
    constexpr std::uint32_t kUnknownSize = 0xFFFF'FFFF;
    if (chunk.statedBytes == kUnknownSize) return true;
    return chunk.statedBytes <= kSoundHeaderBytes &&
           (formBytes == kUnknownSize || std::uint64_t{formBytes} + 8 <= chunk.body.offset);
}

bool isTagChunk(std::uint32_t identifier) {
    return identifier == fourCharCode("NAME") || identifier == fourCharCode("AUTH") ||
           identifier == fourCharCode("ANNO") || identifier == fourCharCode("ID3 ");
}

Result<AiffChunks> collectChunks(ByteSource& source, std::uint32_t formBytes, bool compressed) {
    ChunkWalk walk(source, kFormHeaderBytes, ChunkKind::kIff);
    AiffChunks chunks;
    for (;;) {
        auto next = walk.next();
        if (!next) return next.failure();
        if (!*next) return chunks;
        Chunk chunk = **next;
        if (chunk.identifier == fourCharCode("COMM") && !chunks.common) {
            const auto common = readCommon(source, chunk, compressed);
            if (!common) return common.failure();
            chunks.common = *common;
        } else if (chunk.identifier == fourCharCode("SSND") && !chunks.sound) {
            if (isStreamed(chunk, formBytes)) walk.resize(chunk, source.sizeBytes());
            const auto sound = readSound(source, chunk);
            if (!sound) return sound.failure();
            chunks.sound = *sound;
        } else if (isTagChunk(chunk.identifier)) {
            chunks.tagChunks.add({chunk.identifier, chunk.body});
        }
    }
}

// The layout for a compression type that is linear PCM; none for real compression. Whole bytes,
// samples at the high end of them, big-endian unless the type says otherwise.
std::optional<LinearPcm> linearPcmFor(const CommonChunk& common) {
    LinearPcm pcm;
    pcm.rate = common.rate;
    pcm.channels = common.channels;
    pcm.bitsPerChannel = common.bits;
    pcm.isBigEndian = true;
    switch (common.compression) {
        case kUncompressed:
        case fourCharCode("twos"):
            break;
        case fourCharCode("sowt"):
            pcm.isBigEndian = false;
            break;
        case fourCharCode("raw "):
            pcm.isSigned = false;
            break;
        case fourCharCode("in24"):
            pcm.bitsPerChannel = 24;
            break;
        case fourCharCode("in32"):
            pcm.bitsPerChannel = 32;
            break;
        case fourCharCode("fl32"):
        case fourCharCode("FL32"):
            pcm.bitsPerChannel = 32;
            pcm.isFloat = true;
            break;
        case fourCharCode("fl64"):
        case fourCharCode("FL64"):
            pcm.bitsPerChannel = 64;
            pcm.isFloat = true;
            break;
        default:
            return std::nullopt;
    }
    pcm.bytesPerSample = (pcm.bitsPerChannel + 7) / 8;
    return pcm;
}

// G.711 goes under its lower-case code, whichever case the file has.
std::uint32_t formatForCompression(std::uint32_t compression) {
    if (compression == fourCharCode("ULAW")) return kAudioFormatULaw;
    if (compression == fourCharCode("ALAW")) return kAudioFormatALaw;
    return compression;
}

Result<SoundDescription> describeFormat(std::uint32_t fileType, const CommonChunk& common,
                                        ByteRange data) {
    const auto pcm = linearPcmFor(common);
    if (!pcm)
        return describeUndecoded(fileType, formatForCompression(common.compression), common.rate,
                                 common.channels, data);
    // The frame count ends the sound where the chunk is longer; 0 is a writer that never came back
    // to fill it in.
    if (common.frames > 0)
        data.bytes = std::min(data.bytes,
                              std::uint64_t{common.frames} * pcm->channels * pcm->bytesPerSample);
    return describeLinearPcm(fileType, *pcm, data);
}

}  // namespace

bool isAiff(Bytes head) {
    ByteCursor cursor(head);
    const auto form = cursor.bigEndian<std::uint32_t>();
    cursor.skip(4);
    const auto kind = cursor.bigEndian<std::uint32_t>();
    return form == fourCharCode("FORM") &&
           (kind == kAudioFileAIFFType || kind == kAudioFileAIFCType);
}

Result<SoundDescription> describeAiff(ByteSource& source) {
    std::array<std::byte, kFormHeaderBytes> head{};
    const auto got = source.readAt(0, head);
    if (!got) return got.failure();
    ByteCursor cursor(head);
    cursor.skip(4);
    const auto formBytes = cursor.bigEndian<std::uint32_t>();
    const auto fileType = cursor.bigEndian<std::uint32_t>();

    auto chunks = collectChunks(source, formBytes, fileType == kAudioFileAIFCType);
    if (!chunks) return chunks.failure();
    if (!chunks->common) return Failure::kDamaged;
    const CommonChunk& common = *chunks->common;
    if (!chunks->sound && common.frames > 0) return Failure::kDamaged;
    const ByteRange data = chunks->sound.value_or(ByteRange{});
    auto sound = describeFormat(fileType, common, data);
    if (sound) sound->tagChunks = chunks->tagChunks.take();
    return sound;
}

}  // namespace atdp::services
