#include "services/containers/au.h"

#include <algorithm>
#include <array>
#include <limits>

#include "services/containers/linear_pcm.h"

namespace atdp::services {
namespace {

constexpr std::uint64_t kHeaderBytes = 24;

// The marks that files start with: that of Sun and that of DEC, which SoX writes in front of
// little-endian sound.
constexpr std::uint32_t kBigEndianMarks[] = {fourCharCode(".snd"), fourCharCode(".sd\0")};
constexpr std::uint32_t kLittleEndianMarks[] = {fourCharCode("dns."), fourCharCode("\0ds.")};

bool isOneOf(std::span<const std::uint32_t> marks, std::uint32_t mark) {
    return std::ranges::find(marks, mark) != marks.end();
}

// Encodings.
enum : std::uint32_t {
    kULaw = 1,
    kLinear8 = 2,
    kLinear16 = 3,
    kLinear24 = 4,
    kLinear32 = 5,
    kFloat32 = 6,
    kFloat64 = 7,
    kALaw = 27,
};

struct AuHeader {
    bool isBigEndian = true;
    std::uint32_t dataOffset = 0;
    std::uint32_t dataBytes = 0;
    std::uint32_t encoding = 0;
    std::uint32_t rate = 0;  // Hz
    std::uint32_t channels = 0;
};

AuHeader parseHeader(Bytes bytes) {
    ByteCursor cursor(bytes);
    AuHeader header;
    header.isBigEndian = isOneOf(kBigEndianMarks, cursor.bigEndian<std::uint32_t>());
    const auto next = [&] {
        return header.isBigEndian ? cursor.bigEndian<std::uint32_t>()
                                  : cursor.littleEndian<std::uint32_t>();
    };
    header.dataOffset = next();
    header.dataBytes = next();
    header.encoding = next();
    header.rate = next();
    header.channels = next();
    return header;
}

// All that follows the header, where its size was not known when that was written: all ones, or 0
// of writers that never came back. Nothing else follows in such a file.
ByteRange soundOf(const AuHeader& header, std::uint64_t fileBytes) {
    constexpr std::uint32_t kUnknown = 0xFFFF'FFFF;
    const bool isKnown = header.dataBytes != kUnknown && header.dataBytes != 0;
    const std::uint64_t bytes =
        isKnown ? header.dataBytes : std::numeric_limits<std::uint64_t>::max();
    return clampedTo(fileBytes, {header.dataOffset, bytes});
}

Result<SoundDescription> describePcm(const AuHeader& header, ByteRange data) {
    LinearPcm pcm;
    pcm.rate = header.rate;
    pcm.channels = header.channels;
    pcm.isFloat = header.encoding >= kFloat32;
    pcm.bytesPerSample = header.encoding == kFloat64   ? 8
                         : header.encoding == kFloat32 ? 4
                                                       : header.encoding - kLinear8 + 1;
    pcm.bitsPerChannel = 8 * pcm.bytesPerSample;
    pcm.isBigEndian = header.isBigEndian;
    return describeLinearPcm(kAudioFileNextType, pcm, data);
}

Result<SoundDescription> describeEncoding(const AuHeader& header, ByteRange data) {
    if (header.encoding >= kLinear8 && header.encoding <= kFloat64)
        return describePcm(header, data);
    if (header.encoding != kULaw && header.encoding != kALaw) return Failure::kUnsupportedFormat;
    const std::uint32_t format = header.encoding == kULaw ? kAudioFormatULaw : kAudioFormatALaw;
    return describeUndecoded(kAudioFileNextType, format, header.rate, header.channels, data);
}

}  // namespace

bool isAu(Bytes head) {
    const auto mark = ByteCursor(head).bigEndian<std::uint32_t>();
    return isOneOf(kBigEndianMarks, mark) || isOneOf(kLittleEndianMarks, mark);
}

Result<SoundDescription> describeAu(ByteSource& source) {
    std::array<std::byte, kHeaderBytes> bytes;
    const auto got = source.readAt(0, bytes);
    if (!got) return got.failure();
    if (*got < bytes.size()) return Failure::kDamaged;
    const AuHeader header = parseHeader(bytes);
    if (header.dataOffset < kHeaderBytes || header.dataOffset > source.sizeBytes())
        return Failure::kDamaged;
    auto sound = describeEncoding(header, soundOf(header, source.sizeBytes()));
    if (sound && header.dataOffset > kHeaderBytes)
        sound->tagChunks = {{kAuAnnotation, {kHeaderBytes, header.dataOffset - kHeaderBytes}}};
    return sound;
}

}  // namespace atdp::services
