#include "services/containers/caf.h"

#include <algorithm>
#include <array>
#include <bit>
#include <optional>
#include <utility>

#include "services/codecs/alac_decoder.h"
#include "services/containers/caf_packet_table.h"
#include "services/containers/chunk_walk.h"
#include "services/containers/linear_pcm.h"
#include "services/containers/mpeg.h"
#include "services/io/block_cache.h"
#include "services/io/read_start.h"

namespace atdp::services {
namespace {

constexpr std::uint64_t kFileHeaderBytes = 8;
constexpr std::uint64_t kEditCountBytes = 4;     // in front of the sound
constexpr Failure kGone = Failure::kUnreadable;  // it was there when the file was described

// The audio description ('desc').
struct CafFormat {
    double rate = 0;  // Hz
    std::uint32_t formatID = 0;
    std::uint32_t flags = 0;
    std::uint32_t bytesPerPacket = 0;   // 0: the packet table tells
    std::uint32_t framesPerPacket = 0;  // 0: the packet table tells
    std::uint32_t channels = 0;
    std::uint32_t bits = 0;
};

struct CafChunks {
    std::optional<CafFormat> format;
    std::optional<ByteRange> data;  // the sound alone
    std::optional<ByteRange> packetTable;
    ByteRange cookie;
    std::uint32_t channelMask = 0;
    TagChunks tagChunks;
};

Result<std::optional<CafFormat>> readFormat(ByteSource& source, ByteRange body) {
    std::array<std::byte, 32> room;
    const auto bytes = readStart(source, body, room);
    if (!bytes) return bytes.failure();
    ByteCursor cursor(*bytes);
    CafFormat format;
    format.rate = std::bit_cast<double>(cursor.bigEndian<std::uint64_t>());
    format.formatID = cursor.bigEndian<std::uint32_t>();
    format.flags = cursor.bigEndian<std::uint32_t>();
    format.bytesPerPacket = cursor.bigEndian<std::uint32_t>();
    format.framesPerPacket = cursor.bigEndian<std::uint32_t>();
    format.channels = cursor.bigEndian<std::uint32_t>();
    format.bits = cursor.bigEndian<std::uint32_t>();
    if (cursor.failed()) return std::optional<CafFormat>();
    return std::optional(format);
}

// The speakers of a channel layout: as bits, which are those of WAVE, or as the number of a layout.
// Of these, the ones that are in the order of the bits without being the usual layout for their
// count. 0 for all others, and for layouts that list their channels.
std::uint32_t maskOfLayout(std::uint32_t layout, std::uint32_t bitmap) {
    constexpr std::uint32_t kIsBitmap = 1 << 16;
    constexpr std::uint32_t kSpeakersOfWave = (1 << 18) - 1;
    switch (layout) {
        case kIsBitmap:
            return bitmap & kSpeakersOfWave;
        case 115 << 16 | 4:  // L R C Cs
            return 0x107;
        case 125 << 16 | 7:  // L R C LFE Ls Rs Cs
            return 0x13F;
        case 126 << 16 | 8:  // L R C LFE Ls Rs Lc Rc
            return 0xFF;
        case 131 << 16 | 3:  // L R Cs
            return 0x103;
        case 133 << 16 | 3:  // L R LFE
            return 0x0B;
        case 134 << 16 | 4:  // L R LFE Cs
            return 0x10B;
        case 135 << 16 | 5:  // L R LFE Ls Rs
            return 0x3B;
        case 136 << 16 | 4:  // L R C LFE
            return 0x0F;
        case 137 << 16 | 5:  // L R C LFE Cs
            return 0x10F;
        default:
            return 0;
    }
}

Result<std::uint32_t> readChannelMask(ByteSource& source, ByteRange body) {
    std::array<std::byte, 8> room;
    const auto bytes = readStart(source, body, room);
    if (!bytes) return bytes.failure();
    ByteCursor cursor(*bytes);
    const auto layout = cursor.bigEndian<std::uint32_t>();
    return maskOfLayout(layout, cursor.bigEndian<std::uint32_t>());
}

// A data chunk of size -1 runs to the end of the file, as all do that claim more than there is.
Result<CafChunks> collectChunks(ByteSource& source) {
    ChunkWalk walk(source, kFileHeaderBytes, ChunkKind::kCaf);
    CafChunks chunks;
    for (;;) {
        const auto next = walk.next();
        if (!next) return next.failure();
        if (!*next) return chunks;
        const auto& [identifier, statedBytes, body] = **next;
        if (identifier == fourCharCode("desc") && !chunks.format) {
            const auto format = readFormat(source, body);
            if (!format) return format.failure();
            chunks.format = *format;
        } else if (identifier == fourCharCode("data") && !chunks.data) {
            const std::uint64_t skipped = std::min(kEditCountBytes, body.bytes);
            chunks.data = {body.offset + skipped, body.bytes - skipped};
        } else if (identifier == fourCharCode("pakt") && !chunks.packetTable) {
            chunks.packetTable = body;
        } else if (identifier == fourCharCode("kuki") && chunks.cookie.bytes == 0) {
            chunks.cookie = body;
        } else if (identifier == fourCharCode("chan") && chunks.channelMask == 0) {
            const auto mask = readChannelMask(source, body);
            if (!mask) return mask.failure();
            chunks.channelMask = *mask;
        } else if (identifier == fourCharCode("info")) {
            chunks.tagChunks.add({identifier, body});
        }
    }
}

Result<SoundDescription> describePcm(const CafFormat& format, ByteRange data) {
    constexpr std::uint32_t kIsFloat = 1, kIsLittleEndian = 2;
    if (format.channels == 0 || format.bytesPerPacket % format.channels != 0 ||
        format.framesPerPacket != 1)
        return Failure::kDamaged;
    LinearPcm pcm;
    pcm.rate = format.rate;
    pcm.channels = format.channels;
    pcm.bitsPerChannel = format.bits;
    pcm.bytesPerSample = format.bytesPerPacket / format.channels;
    pcm.isFloat = (format.flags & kIsFloat) != 0;
    pcm.isBigEndian = (format.flags & kIsLittleEndian) == 0;
    if (pcm.isFloat && pcm.bitsPerChannel != 8 * std::uint64_t{pcm.bytesPerSample})
        return Failure::kDamaged;
    return describeLinearPcm(kAudioFileCAFType, pcm, data);
}

// The configuration of Apple Lossless; none where it is missing or cannot be.
Result<std::optional<AlacConfig>> readConfig(ByteSource& source, ByteRange cookie) {
    std::array<std::byte, 64> room;
    const auto bytes = readStart(source, cookie, room);
    if (!bytes) return bytes.failure();
    const auto config = parseAlacConfig(*bytes);
    return config && isPlausible(config->sampleRate, config->channels) ? config : std::nullopt;
}

Result<SoundDescription> describeLossless(ByteSource& source, const CafChunks& chunks) {
    const auto config = readConfig(source, chunks.cookie);
    if (!config) return config.failure();
    if (!*config || !chunks.packetTable) return Failure::kDamaged;
    SoundDescription sound;
    sound.fileType = kAudioFileCAFType;
    sound.format = alacFormat(**config);
    sound.channelMask = alacChannelMask((*config)->channels);
    sound.data = *chunks.data;
    return sound;
}

Result<SoundDescription> describeFormat(ByteSource& source, const CafChunks& chunks) {
    const CafFormat& format = *chunks.format;
    if (format.formatID == kAudioFormatLinearPCM) return describePcm(format, *chunks.data);
    if (format.formatID == kAudioFormatAppleLossless) return describeLossless(source, chunks);
    if (isMpegAudio(format.formatID))
        return describeMpegData(source, kAudioFileCAFType, *chunks.data);
    return describeUndecoded(kAudioFileCAFType, format.formatID, format.rate, format.channels,
                             *chunks.data);
}

// Frames of all packets. The last may have fewer than the others, which not every writer tells in
// the packet table; the packet itself does.
Result<std::uint64_t> totalFrames(ByteSource& source, const std::vector<PacketPlace>& packets,
                                  const AlacConfig& config) {
    if (packets.empty()) return std::uint64_t{0};
    const PacketPlace last = packets.back();
    std::array<std::byte, 8> room;
    const auto start = readStart(source, {last.offset(), last.bytes()}, room);
    if (!start) return start.failure();
    return (packets.size() - 1) * config.frameLength + alacFramesIn(*start, config);
}

}  // namespace

bool startsAsCaf(Bytes head) {
    constexpr std::uint16_t kVersion = 1;
    ByteCursor cursor(head);
    return cursor.bigEndian<std::uint32_t>() == kAudioFileCAFType &&
           cursor.bigEndian<std::uint16_t>() == kVersion;
}

Result<SoundDescription> describeCaf(ByteSource& source) {
    auto chunks = collectChunks(source);
    if (!chunks) return chunks.failure();
    if (!chunks->format || !chunks->data) return Failure::kDamaged;
    auto sound = describeFormat(source, *chunks);
    if (!sound) return sound;
    if (sound->channelMask == 0) sound->channelMask = chunks->channelMask;
    sound->tagChunks = chunks->tagChunks.take();
    return sound;
}

bool isCaf(const SoundDescription& sound) {
    return sound.fileType == kAudioFileCAFType;
}

Result<LosslessTrack> readCafLosslessTrack(ByteSource& source) {
    BlockCache headers(source);
    const auto chunks = collectChunks(headers);
    if (!chunks) return chunks.failure();
    const auto config = readConfig(headers, chunks->cookie);
    if (!config) return config.failure();
    if (!*config || !chunks->format || !chunks->data || !chunks->packetTable) return kGone;
    auto table = readCafPacketTable(source, *chunks->packetTable, *chunks->data,
                                    chunks->format->framesPerPacket == 0);
    if (!table) return table.failure();
    const auto total = totalFrames(source, table->packets, **config);
    if (!total) return total.failure();
    LosslessTrack track;
    track.config = **config;
    track.packets = std::move(table->packets);
    if (table->primingFrames > 0 && static_cast<std::uint64_t>(table->primingFrames) < *total)
        track.primingFrames = static_cast<std::uint64_t>(table->primingFrames);
    track.validFrames = *total - track.primingFrames;
    if (table->validFrames > 0)
        track.validFrames =
            std::min(track.validFrames, static_cast<std::uint64_t>(table->validFrames));
    return track;
}

}  // namespace atdp::services
