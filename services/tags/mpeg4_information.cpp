#include "services/tags/mpeg4_information.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/core_audio_types.h"
#include "services/containers/mpeg4_atoms.h"
#include "services/io/block_cache.h"
#include "services/io/byte_cursor.h"
#include "services/limits.h"
#include "services/tags/genres.h"
#include "services/tags/text.h"
#include "services/text/utf16.h"
#include "services/text/utf8.h"

namespace atdp::services {
namespace {

constexpr std::uint64_t kMetaHeadBytes = 4;  // version and flags, which QuickTime leaves out

std::vector<std::byte> read(ByteSource& source, ByteRange range) {
    std::vector<std::byte> bytes(range.bytes);
    const auto got = source.readAt(range.offset, bytes);
    bytes.resize(got ? *got : 0);
    return bytes;
}

// The item list, where there is one.
std::optional<ByteRange> findItems(ByteSource& source) {
    const auto meta = findAtom(source, {0, source.sizeBytes()},
                               {fourCharCode("moov"), fourCharCode("udta"), fourCharCode("meta")});
    if (!meta || !*meta) return std::nullopt;
    ByteRange atoms = **meta;
    const auto head = read(source, {atoms.offset, std::min(atoms.bytes, kMetaHeadBytes)});
    // Zeros are version and flags; a size is another number.
    const bool hasHead = std::ranges::count(head, std::byte{0}) == kMetaHeadBytes;
    if (hasHead) atoms = {atoms.offset + kMetaHeadBytes, atoms.bytes - kMetaHeadBytes};
    const auto items = findAtom(source, atoms, {fourCharCode("ilst")});
    return items ? *items : std::nullopt;
}

// A pair such as track and tracks, as "3" or "3/12".
std::string pairText(Bytes value) {
    ByteCursor cursor(value);
    cursor.skip(2);
    const auto number = cursor.bigEndian<std::uint16_t>();
    const auto total = cursor.bigEndian<std::uint16_t>();
    if (number == 0) return {};
    return std::to_string(number) + (total == 0 ? "" : "/" + std::to_string(total));
}

std::string genreText(Bytes value) {
    ByteCursor cursor(value);
    const auto number = cursor.bigEndian<std::uint16_t>();  // from 1 on
    return number == 0 ? std::string() : genreOfNumber(number - 1);
}

// A signed number of any size up to 8 bytes.
std::string numberText(Bytes value) {
    if (value.empty() || value.size() > sizeof(std::int64_t)) return {};
    const bool isNegative = (value.front() & std::byte{0x80}) != std::byte{0};
    std::uint64_t number = isNegative ? ~std::uint64_t{0} : 0;
    for (const std::byte byte : value) number = number << 8 | std::to_integer<std::uint64_t>(byte);
    return std::to_string(static_cast<std::int64_t>(number));
}

// The type indicators of a value.
enum : std::uint32_t {
    kBinary = 0,
    kUtf8 = 1,
    kUtf16 = 2,
    kUtf8Sorting = 4,
    kUtf16Sorting = 5,
    kNumber = 21
};

std::string valueText(std::uint32_t item, std::uint32_t type, Bytes value) {
    switch (type) {
        case kUtf16:
        case kUtf16Sorting:
            return fromUtf16(value, std::endian::big);
        case kNumber:
            return numberText(value);
        case kBinary:
            if (item == fourCharCode("trkn")) return pairText(value);
            if (item == fourCharCode("gnre")) return genreText(value);
            [[fallthrough]];  // text of writers that do not care
        case kUtf8:
        case kUtf8Sorting:
            return fromUtf8OrWindows1252(charactersOf(value));
        default:
            return {};  // pictures and the like
    }
}

// The name of an item in the information dictionary, or null.
const char* nameOfItem(std::uint32_t item) {
    switch (item) {
        case fourCharCode("\xA9nam"):
            return "title";
        case fourCharCode(
            "\xA9"
            "ART"):
            return "artist";
        case fourCharCode(
            "\xA9"
            "alb"):
            return "album";
        case fourCharCode("trkn"):
            return "track number";
        case fourCharCode("\xA9gen"):
        case fourCharCode("gnre"):
            return "genre";
        case fourCharCode(
            "\xA9"
            "day"):
            return "year";
        case fourCharCode(
            "\xA9"
            "cmt"):
            return "comments";
        case fourCharCode("\xA9wrt"):
            return "composer";
        default:
            return nullptr;
    }
}

// Each value of an item is in an atom of its own, after its type indicator and a locale.
std::string itemText(ByteSource& source, const Atom& item) {
    constexpr std::uint64_t kValueHeadBytes = 8;
    std::string values;
    AtomWalk walk(source, item.body);
    for (auto atom = walk.next(); atom && *atom; atom = walk.next()) {
        const ByteRange body = (*atom)->body;
        if ((*atom)->type != fourCharCode("data") || body.bytes < kValueHeadBytes) continue;
        if (body.bytes > kMaxTagEntryBytes - std::min(kMaxTagEntryBytes, values.size())) continue;
        const auto bytes = read(source, body);
        if (bytes.size() < body.bytes) continue;
        const auto type = loadBigEndian<std::uint32_t>(bytes.data());
        values += valueText(item.type, type, Bytes(bytes).subspan(kValueHeadBytes)) + '\0';
    }
    return joinedValues(values);
}

}  // namespace

TextMap readMpeg4Information(ByteSource& source) {
    BlockCache headers(source);
    TextMap information;
    const auto items = findItems(headers);
    if (!items) return information;
    AtomWalk walk(headers, *items);
    for (auto atom = walk.next(); atom && *atom; atom = walk.next()) {
        const char* name = nameOfItem((*atom)->type);
        if (name == nullptr || information.contains(name)) continue;
        const std::string text = itemText(headers, **atom);
        if (!text.empty())
            information.emplace(name, name == std::string_view("year") ? yearOf(text) : text);
    }
    return information;
}

}  // namespace atdp::services
