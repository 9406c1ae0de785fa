#include <algorithm>
#include <bit>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include "platform/string_encoding.h"
#include "services/io/byte_cursor.h"
#include "services/limits.h"
#include "services/tags/information.h"
#include "services/tags/information_parts.h"
#include "services/tags/key_texts.h"
#include "services/text/utf16.h"

namespace atdp::services {
namespace {

// Text that does not state its encoding, up to its first NUL.
std::optional<std::string> guessedText(Bytes bytes) {
    bytes = bytes.first(std::min(bytes.size(), kMaxTagEntryBytes));
    const NSStringEncoding encoding = estimateStringEncoding(bytes);
    const auto end = std::find(bytes.begin(), bytes.end(), std::byte{0});
    return stringWithBytes({bytes.begin(), end}, encoding);
}

void addText(TextMap& information, const char* name, Bytes bytes) {
    auto text = guessedText(bytes);
    if (text && !text->empty()) information.emplace(name, std::move(*text));
}

// Codes of texts (Microsoft's Multimedia Programming Interface, 1991, and what programs have added
// since).
constexpr std::pair<std::uint32_t, const char*> kInfoNames[] = {
    {fourCharCode("IART"), "artist"},       {fourCharCode("INAM"), "title"},
    {fourCharCode("IPRD"), "album"},        {fourCharCode("ITRK"), "track number"},
    {fourCharCode("IPRT"), "track number"}, {fourCharCode("IGNR"), "genre"},
    {fourCharCode("ICRD"), "year"},         {fourCharCode("ICMT"), "comments"},
    {fourCharCode("IMUS"), "composer"}};

// The sub-chunks of a LIST of type INFO.
void addInfoList(TextMap& information, Bytes list) {
    ByteCursor cursor(list);
    if (cursor.bigEndian<std::uint32_t>() != fourCharCode("INFO")) return;
    while (cursor.remainingBytes() >= 8) {
        const auto identifier = cursor.bigEndian<std::uint32_t>();
        const auto bytes = cursor.littleEndian<std::uint32_t>();
        if (bytes > cursor.remainingBytes()) return;
        const Bytes text = cursor.take(bytes);
        for (const auto& [code, name] : kInfoNames)
            if (code == identifier) addText(information, name, text);
        if (bytes % 2 != 0) cursor.skip(1);
    }
}

// The summary list of Wave64: a count, then codes, sizes and texts in UTF-16.
void addSummaryList(TextMap& information, Bytes list) {
    ByteCursor cursor(list);
    cursor.skip(4);
    while (cursor.remainingBytes() >= 8) {
        const auto identifier = cursor.bigEndian<std::uint32_t>();
        const auto bytes = cursor.littleEndian<std::uint32_t>();
        if (bytes > cursor.remainingBytes()) return;
        const Bytes value = cursor.take(bytes);
        for (const auto& [code, name] : kInfoNames) {
            if (code != identifier) continue;
            std::string text = fromUtf16(value.first(std::min(value.size(), kMaxTagEntryBytes)),
                                         std::endian::little);
            text.resize(std::min(text.find('\0'), text.size()));
            if (!text.empty()) information.emplace(name, std::move(text));
        }
    }
}

void addId3Tag(TextMap& information, Bytes tag) {
    const auto header = readId3v2Header(tag);
    if (header)
        information.merge(informationOf(readId3v2Tag(*header, tag.subspan(kId3v2HeaderBytes))));
}

void addOther(TextMap& information, std::uint32_t identifier, Bytes body) {
    if (identifier == fourCharCode("LIST"))
        addInfoList(information, body);
    else if (identifier == fourCharCode("NAME"))
        addText(information, "title", body);
    else if (identifier == fourCharCode("AUTH"))
        addText(information, "artist", body);
    else if (identifier == fourCharCode("ANNO"))
        addText(information, "comments", body);
    else if (identifier == fourCharCode("info"))
        addCafStrings(information, body);
    else if (identifier == kWave64Summary)
        addSummaryList(information, body);
    else if (identifier == kAuAnnotation)
        addAuAnnotation(information, body);
}

}  // namespace

TextMap readChunkInformation(ByteSource& source, const std::vector<TagChunk>& chunks) {
    TextMap information;
    for (const TagChunk& chunk : chunks)
        if (isId3(chunk.identifier)) addId3Tag(information, readTagBytes(source, chunk.body));
    for (const TagChunk& chunk : chunks)
        if (!isId3(chunk.identifier))
            addOther(information, chunk.identifier, readTagBytes(source, chunk.body));
    shortenYear(information);
    return information;
}

}  // namespace atdp::services
