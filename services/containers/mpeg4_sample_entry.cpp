#include "services/containers/mpeg4_sample_entry.h"

#include <array>
#include <bit>

#include "platform/core_audio_types.h"
#include "services/containers/linear_pcm.h"
#include "services/containers/mpeg4_atoms.h"
#include "services/io/read_start.h"
#include "services/limits.h"

namespace atdp::services {
namespace {

constexpr std::size_t kEntryBytes = 28;       // of an entry of version 0
constexpr std::size_t kEntryBytesMore = 16;   // in version 1
constexpr std::size_t kEntryBytesMore2 = 36;  // in version 2

// ISO 14496-12 counts versions at the description, QuickTime at the entry.
std::optional<SampleEntry> parseEntry(const Atom& atom, Bytes body, bool isQuickTime) {
    ByteCursor cursor(body);
    SampleEntry entry;
    entry.code = atom.type;
    cursor.skip(8);
    const auto version = cursor.bigEndian<std::uint16_t>();
    cursor.skip(6);
    entry.channels = cursor.bigEndian<std::uint16_t>();
    cursor.skip(6);
    entry.rate = cursor.bigEndian<std::uint32_t>() / 65536.0;
    std::size_t entryBytes = kEntryBytes;
    if (isQuickTime && version == 1) {
        entryBytes += kEntryBytesMore;
    } else if (isQuickTime && version == 2) {
        entryBytes += kEntryBytesMore2;
        cursor.skip(4);
        entry.rate = std::bit_cast<double>(cursor.bigEndian<std::uint64_t>());
        entry.channels = cursor.bigEndian<std::uint32_t>();
    }
    if (cursor.failed() || atom.body.bytes < entryBytes) return std::nullopt;
    entry.extensions = {atom.body.offset + entryBytes, atom.body.bytes - entryBytes};
    return entry;
}

// QuickTime puts what a decoder needs into an atom of its own.
Result<std::optional<ByteRange>> findExtension(ByteSource& source, const SampleEntry& entry,
                                               std::uint32_t type) {
    const auto found = findAtom(source, entry.extensions, {type});
    if (!found || *found) return found;
    return findAtom(source, entry.extensions, {fourCharCode("wave"), type});
}

// The configuration in the body of its atom: after version and flags, as it is, or in the atoms
// that the first files wrapped it in.
Bytes cookieIn(Bytes body) {
    constexpr std::size_t kPlainBytes = 24;
    constexpr std::size_t kVersionBytes = 4;
    if (body.size() <= kPlainBytes) return body;
    const auto type = loadBigEndian<std::uint32_t>(body.data() + 4);
    const bool isWrapped = type == fourCharCode("frma") || type == fourCharCode("alac");
    return isWrapped ? body : body.subspan(kVersionBytes);
}

// Takes the head of a descriptor, whose size has seven bits a byte, and answers its tag.
std::uint8_t takeDescriptorHead(ByteCursor& cursor) {
    constexpr int kMaxSizeBytes = 4;
    const auto tag = cursor.bigEndian<std::uint8_t>();
    for (int i = 0; i < kMaxSizeBytes; ++i)
        if (cursor.bigEndian<std::uint8_t>() < 0x80) break;
    return tag;
}

std::uint8_t parseObjectType(Bytes body) {
    constexpr std::uint8_t kStreamTag = 3, kDecoderTag = 4;
    ByteCursor cursor(body);
    cursor.skip(4);  // version and flags
    if (takeDescriptorHead(cursor) != kStreamTag) return 0;
    cursor.skip(2);
    const auto flags = cursor.bigEndian<std::uint8_t>();
    if ((flags & 0x80) != 0) cursor.skip(2);
    if ((flags & 0x40) != 0) cursor.skip(cursor.bigEndian<std::uint8_t>());
    if ((flags & 0x20) != 0) cursor.skip(2);
    if (takeDescriptorHead(cursor) != kDecoderTag) return 0;
    return cursor.bigEndian<std::uint8_t>();
}

}  // namespace

Result<std::optional<SampleEntry>> readSampleEntry(ByteSource& source, ByteRange description) {
    constexpr std::uint64_t kHeadBytes = 8;  // version, flags and count
    std::array<std::byte, kEntryBytes + kEntryBytesMore2> room;
    const auto head = readStart(source, description, room);
    if (!head) return head.failure();
    if (head->size() < kHeadBytes) return std::optional<SampleEntry>();
    const bool isQuickTime = head->front() == std::byte{0};
    AtomWalk walk(source, {description.offset + kHeadBytes, description.bytes - kHeadBytes});
    const auto atom = walk.next();
    if (!atom) return atom.failure();
    if (!*atom) return std::optional<SampleEntry>();
    const auto body = readStart(source, (*atom)->body, room);
    if (!body) return body.failure();
    return parseEntry(**atom, *body, isQuickTime);
}

Result<std::optional<AlacConfig>> readAlacConfig(ByteSource& source, const SampleEntry& entry) {
    const auto range = findExtension(source, entry, fourCharCode("alac"));
    if (!range) return range.failure();
    if (!*range) return std::optional<AlacConfig>();
    std::array<std::byte, 64> room;
    const auto body = readStart(source, **range, room);
    if (!body) return body.failure();
    const auto config = parseAlacConfig(cookieIn(*body));
    return config && isPlausible(config->sampleRate, config->channels) ? config : std::nullopt;
}

Result<std::uint8_t> readObjectType(ByteSource& source, const SampleEntry& entry) {
    const auto range = findExtension(source, entry, fourCharCode("esds"));
    if (!range) return range.failure();
    if (!*range) return std::uint8_t{0};
    std::array<std::byte, 512> room;
    const auto body = readStart(source, **range, room);
    if (!body) return body.failure();
    return parseObjectType(*body);
}

}  // namespace atdp::services
