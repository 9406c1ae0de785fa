#include "services/tags/id3v2_frames.h"

#include <zlib.h>

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "services/limits.h"
#include "services/text/utf8.h"

namespace atdp::services {
namespace {

// Flags of a tag.
constexpr unsigned kUnsynchronised = 0x80;
constexpr unsigned kWholeTagCompressed = 0x40;  // in 2.2, where nobody ever said how
constexpr unsigned kHasExtendedHeader = 0x40;   // from 2.3 on
constexpr unsigned kHasFooter = 0x10;

struct StoredFrame {
    std::string_view identifier;
    unsigned formatFlags = 0;
    Bytes content;
};

// A number of 28 bits, seven a byte; none when a byte has its eighth bit set.
std::optional<std::uint32_t> synchsafe(const std::byte* bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const auto byte = std::to_integer<std::uint32_t>(bytes[i]);
        if (byte >= 0x80) return std::nullopt;
        value = value << 7 | byte;
    }
    return value;
}

// Takes out the zero bytes that a writer put after each 0xFF.
std::vector<std::byte> synchronised(Bytes bytes) {
    std::vector<std::byte> result;
    result.reserve(bytes.size());
    bool afterMark = false;
    for (const std::byte byte : bytes) {
        if (!afterMark || byte != std::byte{0}) result.push_back(byte);
        afterMark = byte == std::byte{0xFF};
    }
    return result;
}

Bytes withoutExtendedHeader(const Id3v2Header& header, Bytes body) {
    if ((header.flags & kHasExtendedHeader) == 0 || body.size() < 4) return body;
    // The size counts itself in 2.4 only.
    const std::uint64_t bytes = header.majorVersion == 4
                                    ? std::max(synchsafe(body.data()).value_or(4), 4U)
                                    : 4ULL + loadBigEndian<std::uint32_t>(body.data());
    return body.subspan(std::min<std::uint64_t>(bytes, body.size()));
}

bool startsWithIdentifier(Bytes bytes, std::size_t length) {
    return bytes.size() >= length && std::ranges::all_of(bytes.first(length), [](std::byte byte) {
               const auto character = std::to_integer<char>(byte);
               return (character >= 'A' && character <= 'Z') ||
                      (character >= '0' && character <= '9');
           });
}

// Whether a frame of that size is there and followed by another, padding or the end.
bool isSizeLikely(Bytes frame, std::uint32_t size) {
    if (size > frame.size() - 10) return false;
    const Bytes next = frame.subspan(std::size_t{10} + size);
    return next.empty() || next[0] == std::byte{0} || startsWithIdentifier(next, 4);
}

// Sizes of 2.4 are synchsafe, but a widespread writer stated them as plain numbers.
std::uint32_t frameSize24(Bytes frame) {
    const auto plain = loadBigEndian<std::uint32_t>(frame.data() + 4);
    const auto safe = synchsafe(frame.data() + 4);
    if (!safe) return plain;
    return isSizeLikely(frame, plain) && !isSizeLikely(frame, *safe) ? plain : *safe;
}

// Takes the next frame off `frames`; none at padding, at the end and where a frame is cut.
std::optional<StoredFrame> takeFrame(unsigned majorVersion, Bytes& frames) {
    const std::size_t headerBytes = majorVersion == 2 ? 6 : 10;
    const std::size_t identifierBytes = majorVersion == 2 ? 3 : 4;
    if (frames.size() < headerBytes) return std::nullopt;
    StoredFrame frame;
    frame.identifier = charactersOf(frames.first(identifierBytes));
    // A widespread writer put frames of 2.2 into tags of 2.3, with a NUL after the identifier.
    if (majorVersion == 3 && frame.identifier.ends_with('\0')) frame.identifier.remove_suffix(1);
    if (!startsWithIdentifier(frames, frame.identifier.size())) return std::nullopt;

    std::uint32_t size = 0;
    if (majorVersion == 2)
        size = loadBigEndian<std::uint32_t>(frames.data() + 2) & 0xFFFFFF;
    else
        size = majorVersion == 3 ? loadBigEndian<std::uint32_t>(frames.data() + 4)
                                 : frameSize24(frames);
    if (size > frames.size() - headerBytes) return std::nullopt;
    if (majorVersion > 2) frame.formatFlags = std::to_integer<unsigned>(frames[9]);
    frame.content = frames.subspan(headerBytes, size);
    frames = frames.subspan(headerBytes + size);
    return frame;
}

bool isComment(std::string_view identifier) {
    return identifier == "COM" || identifier == "COMM";
}

// The frames that somebody reads, by their names in 2.2 and since.
bool isWanted(std::string_view identifier) {
    constexpr std::string_view kNames[] = {"TT2",  "TIT2", "TP1",  "TPE1", "TAL", "TALB",
                                           "TRK",  "TRCK", "TCO",  "TCON", "TYE", "TYER",
                                           "TDRC", "TCM",  "TCOM", "COM",  "COMM"};
    return std::find(std::begin(kNames), std::end(kNames), identifier) != std::end(kNames);
}

// Genres are taken apart in a time that grows with the square of their length.
std::size_t maxContentBytes(std::string_view identifier) {
    return identifier.starts_with("TCO") && identifier != "TCOM" ? kMaxGenreBytes
                                                                 : kMaxTagEntryBytes;
}

// What the format flags of a frame stand for, in either version.
struct FrameFormat {
    bool isGrouped = false, isCompressed = false, isEncrypted = false;
    bool isUnsynchronised = false, statesLength = false;
};

FrameFormat formatOf(const Id3v2Header& header, unsigned flags) {
    const auto has = [flags](unsigned bit) { return (flags & bit) != 0; };
    if (header.majorVersion == 2) return {};
    if (header.majorVersion == 3) return {has(0x20), has(0x80), has(0x40), false, has(0x80)};
    return {has(0x40), has(0x08), has(0x04), has(0x02) || (header.flags & kUnsynchronised) != 0,
            has(0x08) || has(0x01)};
}

// Nothing when it does not fit into the length that the frame states.
std::vector<std::byte> inflated(Bytes compressed, std::uint32_t statedBytes) {
    std::vector<std::byte> result(statedBytes);
    uLongf bytes = statedBytes;
    const int status =
        uncompress(reinterpret_cast<Bytef*>(result.data()), &bytes,
                   reinterpret_cast<const Bytef*>(compressed.data()), compressed.size());
    result.resize(status == Z_OK ? bytes : 0);
    return result;
}

// What the frame held before its writer transformed it; nothing when that is not to be had, or
// more than `limit` bytes.
std::vector<std::byte> contentOf(const Id3v2Header& header, const StoredFrame& frame,
                                 std::size_t limit) {
    const FrameFormat format = formatOf(header, frame.formatFlags);
    if (frame.content.size() > limit || format.isEncrypted) return {};
    const std::vector<std::byte> stored =
        format.isUnsynchronised ? synchronised(frame.content)
                                : std::vector(frame.content.begin(), frame.content.end());
    ByteCursor cursor(stored);
    if (format.isGrouped && header.majorVersion == 4) cursor.skip(1);
    const Bytes length = cursor.take(format.statesLength ? 4 : 0);
    if (format.isGrouped && header.majorVersion == 3) cursor.skip(1);
    const Bytes content = cursor.take(cursor.remainingBytes());
    if (cursor.failed()) return {};
    if (!format.isCompressed) return {content.begin(), content.end()};

    const auto plain = loadBigEndian<std::uint32_t>(length.data());
    const std::uint32_t bytes =
        header.majorVersion == 4 ? synchsafe(length.data()).value_or(plain) : plain;
    return bytes <= limit ? inflated(content, bytes) : std::vector<std::byte>();
}

}  // namespace

std::uint64_t Id3v2Header::tagBytes() const {
    const bool hasFooter = majorVersion == 4 && (flags & kHasFooter) != 0;
    return std::uint64_t{bodyBytes} + kId3v2HeaderBytes * (hasFooter ? 2 : 1);
}

std::optional<Id3v2Header> readId3v2Header(Bytes tag) {
    if (tag.size() < kId3v2HeaderBytes || !charactersOf(tag).starts_with("ID3"))
        return std::nullopt;
    const auto major = std::to_integer<unsigned>(tag[3]);
    const auto bodyBytes = synchsafe(tag.data() + 6);
    if (major < 2 || major > 4 || tag[4] == std::byte{0xFF} || !bodyBytes) return std::nullopt;
    return Id3v2Header{major, std::to_integer<unsigned>(tag[5]), *bodyBytes};
}

std::vector<Id3v2Frame> readTextFrames(const Id3v2Header& header, Bytes body) {
    const unsigned version = header.majorVersion;
    if (version == 2 && (header.flags & kWholeTagCompressed) != 0) return {};
    body = body.first(std::min<std::size_t>(body.size(), header.bodyBytes));
    std::vector<std::byte> decoded;
    if (version < 4 && (header.flags & kUnsynchronised) != 0) {
        decoded = synchronised(body);
        body = decoded;
    }
    if (version > 2) body = withoutExtendedHeader(header, body);

    std::vector<Id3v2Frame> frames;
    std::set<std::string_view> texts;
    std::size_t room = kMaxTagTextBytes;
    for (std::size_t looked = 0; looked < kMaxTagEntries;) {
        const auto stored = takeFrame(version, body);
        if (!stored) break;
        if (!isWanted(stored->identifier) || texts.contains(stored->identifier)) continue;
        ++looked;
        std::vector<std::byte> content =
            contentOf(header, *stored, std::min(room, maxContentBytes(stored->identifier)));
        if (content.size() < 2) continue;  // an encoding without text
        room -= content.size();
        if (!isComment(stored->identifier)) texts.insert(stored->identifier);
        frames.push_back({std::string(stored->identifier), std::move(content)});
    }
    return frames;
}

}  // namespace atdp::services
