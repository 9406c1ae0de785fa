#include "services/containers/wave.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "services/containers/chunk_walk.h"
#include "services/containers/linear_pcm.h"
#include "services/containers/mpeg.h"

namespace atdp::services {
namespace {

constexpr std::uint64_t kFormHeaderBytes = 12;
constexpr std::uint32_t kUnknownSize = 0xFFFF'FFFF;  // of a stream, or stated in the ds64 chunk
constexpr std::uint64_t kToTheEnd = std::numeric_limits<std::uint64_t>::max();

// Format tags of the fmt chunk (RFC 2361).
constexpr std::uint16_t kTagPcm = 0x0001;
constexpr std::uint16_t kTagFloat = 0x0003;
constexpr std::uint16_t kTagALaw = 0x0006;
constexpr std::uint16_t kTagULaw = 0x0007;
constexpr std::uint16_t kTagMpeg = 0x0050;  // layers I and II
constexpr std::uint16_t kTagMpegLayer3 = 0x0055;
constexpr std::uint16_t kTagExtensible = 0xFFFE;

// Codecs without a code of their own: 'ms' and the tag.
constexpr std::uint32_t kFormatForTag = 0x6D73'0000;

struct WaveFormat {
    std::uint16_t tag = 0;
    std::uint16_t channels = 0;
    std::uint32_t rate = 0;
    std::uint16_t frameBytes = 0;
    std::uint16_t containerBits = 0;
    std::uint16_t validBits = 0;
    std::uint32_t channelMask = 0;
};

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

// The tag that a sub-format's identifier stands for: it starts with the tag, and ends in the bytes
// of all Microsoft formats or of the ambisonic ones. Foreign identifiers give the extensible tag.
std::uint16_t tagOfSubFormat(Bytes identifier) {
    constexpr std::array<unsigned char, 12> kMicrosoft = {0x00, 0x00, 0x10, 0x00, 0x80, 0x00,
                                                          0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};
    constexpr std::array<unsigned char, 12> kAmbisonic = {0x21, 0x07, 0xD3, 0x11, 0x86, 0x44,
                                                          0xC8, 0xC1, 0xCA, 0x00, 0x00, 0x00};
    ByteCursor cursor(identifier);
    const auto tag = cursor.littleEndian<std::uint16_t>();
    const auto zero = cursor.littleEndian<std::uint16_t>();
    const Bytes tail = cursor.take(kMicrosoft.size());
    const auto endsIn = [tail](const auto& known) {
        return std::equal(tail.begin(), tail.end(), std::as_bytes(std::span(known)).begin());
    };
    const bool isKnown =
        !cursor.failed() && zero == 0 && (endsIn(kMicrosoft) || endsIn(kAmbisonic));
    return isKnown ? tag : kTagExtensible;
}

std::optional<WaveFormat> parseFormat(Bytes body) {
    ByteCursor cursor(body);
    WaveFormat format;
    format.tag = cursor.littleEndian<std::uint16_t>();
    format.channels = cursor.littleEndian<std::uint16_t>();
    format.rate = cursor.littleEndian<std::uint32_t>();
    cursor.skip(4);  // bytes per second
    format.frameBytes = cursor.littleEndian<std::uint16_t>();
    format.containerBits = cursor.littleEndian<std::uint16_t>();
    format.validBits = format.containerBits;
    if (format.tag == kTagExtensible) {
        cursor.skip(2);  // bytes that follow
        const auto validBits = cursor.littleEndian<std::uint16_t>();
        if (validBits != 0) format.validBits = validBits;
        format.channelMask = cursor.littleEndian<std::uint32_t>();
        format.tag = tagOfSubFormat(cursor.take(16));
    }
    if (cursor.failed()) return std::nullopt;
    return format;
}

Result<std::optional<WaveFormat>> readFormat(ByteSource& source, const Chunk& chunk) {
    std::array<std::byte, 40> body;
    const std::size_t bytes = std::min<std::uint64_t>(body.size(), chunk.body.bytes);
    const auto got = source.readAt(chunk.body.offset, std::span(body).first(bytes));
    if (!got) return got.failure();
    return parseFormat(std::span(body).first(*got));
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
    return identifier == fourCharCode("LIST") || identifier == fourCharCode("id3 ") ||
           identifier == fourCharCode("ID3 ");
}

Result<WaveChunks> collectChunks(ByteSource& source, std::uint32_t formBytes, bool largeForm) {
    ChunkWalk walk(source, kFormHeaderBytes, ByteOrder::kLittleEndian);
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
            const auto format = readFormat(source, chunk);
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

// Whether samples of that many bits are kept in containers of that many bytes. Apart from the
// smallest container, only 24 bits in 32-bit words are met, as sound cards deliver them.
bool agree(std::uint32_t bits, std::uint32_t bytesPerSample) {
    return (bits + 7) / 8 == bytesPerSample || (bits == 24 && bytesPerSample == 4);
}

Result<SoundDescription> describePcm(std::uint32_t fileType, const WaveFormat& format,
                                     ByteRange data) {
    if (format.channels == 0 || format.frameBytes % format.channels != 0) return Failure::kDamaged;
    LinearPcm pcm;
    pcm.rate = format.rate;
    pcm.channels = format.channels;
    pcm.bytesPerSample = format.frameBytes / format.channels;
    pcm.isFloat = format.tag == kTagFloat;
    pcm.isSigned = pcm.bytesPerSample > 1;  // 8 bits are unsigned in WAVE
    pcm.bitsPerChannel = pcm.isFloat ? format.containerBits : format.validBits;
    if (!agree(format.containerBits, pcm.bytesPerSample) ||
        (pcm.isFloat && format.containerBits != 8 * pcm.bytesPerSample))
        return Failure::kDamaged;
    return describeLinearPcm(fileType, pcm, data);
}

// Codecs that this system names but does not decode.
Result<SoundDescription> describeOther(std::uint32_t fileType, const WaveFormat& format,
                                       ByteRange data) {
    if (!isPlausible(format.rate, format.channels)) return Failure::kDamaged;
    SoundDescription sound;
    sound.fileType = fileType;
    sound.data = data;
    sound.format.mSampleRate = format.rate;
    sound.format.mChannelsPerFrame = format.channels;
    sound.format.mFormatID = format.tag == kTagULaw   ? kAudioFormatULaw
                             : format.tag == kTagALaw ? kAudioFormatALaw
                                                      : kFormatForTag + format.tag;
    return sound;
}

// The sound of a file whose chunks are known.
Result<SoundDescription> describeFormat(ByteSource& source, std::uint32_t fileType,
                                        const WaveFormat& format, ByteRange data) {
    switch (format.tag) {
        case kTagPcm:
        case kTagFloat:
            return describePcm(fileType, format, data);
        case kTagMpeg:
        case kTagMpegLayer3: {
            const auto sound = describeMpegData(source, fileType, data);
            if (sound || sound.failure() != Failure::kUnknownFileType) return sound;
            return Failure::kDamaged;
        }
        default:
            return describeOther(fileType, format, data);
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
    auto sound = describeFormat(source, fileType, *chunks->format, *chunks->data);
    if (!sound) return sound;
    sound->channelMask = chunks->format->channelMask;
    sound->tagChunks = chunks->tagChunks.take();
    return sound;
}

}  // namespace atdp::services
