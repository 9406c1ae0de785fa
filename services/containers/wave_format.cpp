#include "services/containers/wave_format.h"

#include <algorithm>
#include <array>

#include "services/containers/linear_pcm.h"
#include "services/containers/mpeg.h"
#include "services/io/byte_cursor.h"
#include "services/io/read_start.h"

namespace atdp::services {
namespace {

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

std::uint32_t formatForTag(std::uint16_t tag) {
    return tag == kTagULaw   ? kAudioFormatULaw
           : tag == kTagALaw ? kAudioFormatALaw
                             : kFormatForTag + tag;
}

Result<SoundDescription> describeByTag(ByteSource& source, std::uint32_t fileType,
                                       const WaveFormat& format, ByteRange data) {
    switch (format.tag) {
        case kTagPcm:
        case kTagFloat:
            return describePcm(fileType, format, data);
        case kTagMpeg:
        case kTagMpegLayer3:
            return describeMpegData(source, fileType, data);
        default:
            return describeUndecoded(fileType, formatForTag(format.tag), format.rate,
                                     format.channels, data);
    }
}

}  // namespace

Result<std::optional<WaveFormat>> readWaveFormat(ByteSource& source, const Chunk& chunk) {
    std::array<std::byte, 40> room;
    const auto body = readStart(source, chunk.body, room);
    if (!body) return body.failure();
    return parseFormat(*body);
}

Result<SoundDescription> describeWaveFormat(ByteSource& source, std::uint32_t fileType,
                                            const WaveFormat& format, ByteRange data) {
    auto sound = describeByTag(source, fileType, format, data);
    if (sound) sound->channelMask = format.channelMask;
    return sound;
}

}  // namespace atdp::services
