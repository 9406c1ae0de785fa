#include "services/tags/information.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "services/limits.h"
#include "services/tags/id3v2_tag.h"
#include "services/tags/text.h"
#include "services/tags/trailing_tags.h"

namespace atdp::services {
namespace {

// What is there of a range, and of that no more than is looked at of a tag.
std::vector<std::byte> read(ByteSource& source, ByteRange range) {
    range = clampedTo(source.sizeBytes(), range);
    std::vector<std::byte> bytes(std::min<std::uint64_t>(range.bytes, kMaxTagBytes));
    if (bytes.empty()) return bytes;
    const auto got = source.readAt(range.offset, bytes);
    bytes.resize(got ? *got : 0);
    return bytes;
}

// The comment that a person wrote: the one without a description, else the first that is not a
// record of a program.
std::string commentOf(const TextMap& comments) {
    for (const auto& [description, text] : comments)  // in order, the empty one first
        if (!description.starts_with("iTun")) return text;
    return {};
}

// The year of a date such as 2004-05-06; what does not start as one stays as it is.
std::string yearOf(const std::string& date) {
    constexpr std::size_t kDigits = 4;
    const bool isDate = date.size() > kDigits && date.find_first_not_of("0123456789") == kDigits;
    return isDate ? date.substr(0, kDigits) : date;
}

TextMap informationOf(const Id3v2Tag& tag) {
    constexpr const char* kNames[][2] = {
        {"TPE1", "artist"}, {"TIT2", "title"}, {"TALB", "album"},   {"TRCK", "track number"},
        {"TCON", "genre"},  {"TDRC", "year"},  {"TCOM", "composer"}};
    TextMap information;
    for (const auto& [identifier, name] : kNames)
        if (const auto text = tag.texts.find(identifier); text != tag.texts.end())
            information.emplace(name, text->second);
    if (std::string comment = commentOf(tag.comments); !comment.empty())
        information.emplace("comments", std::move(comment));
    return information;
}

// Some writers put another tag before the one that is there.
TextMap readLeadingTags(ByteSource& source) {
    TextMap information;
    std::uint64_t offset = 0;
    for (std::size_t tags = 0; tags < kMaxTagsInARow; ++tags) {
        const auto header = readId3v2Header(read(source, {offset, kId3v2HeaderBytes}));
        if (!header) break;
        const auto body = read(source, {offset + kId3v2HeaderBytes, header->bodyBytes});
        information.merge(informationOf(readId3v2Tag(*header, body)));
        offset += header->tagBytes();
    }
    return information;
}

bool isApeMark(Bytes bytes) {
    return charactersOf(bytes).starts_with("APETAGEX");
}

// The mark of an APE tag holds the mark of ID3v1.
bool isInsideApeMark(ByteSource& source, std::uint64_t offset) {
    return offset >= 3 && isApeMark(read(source, {offset - 3, 8}));
}

TextMap readApeTagBefore(ByteSource& source, std::uint64_t end) {
    if (end < kApeFooterBytes) return {};
    const std::uint64_t footerOffset = end - kApeFooterBytes;
    const auto footer = read(source, {footerOffset, kApeFooterBytes});
    if (footer.size() < kApeFooterBytes || !isApeMark(footer)) return {};
    const auto bytes = loadLittleEndian<std::uint32_t>(footer.data() + 12);  // with the footer
    if (bytes < kApeFooterBytes || bytes > end) return {};
    return readApeItems(read(source, {end - bytes, bytes - kApeFooterBytes}));
}

TextMap readTrailingTags(ByteSource& source) {
    const std::uint64_t end = source.sizeBytes();
    TextMap id3v1;
    if (end >= kId3v1Bytes && !isInsideApeMark(source, end - kId3v1Bytes))
        id3v1 = readId3v1Tag(read(source, {end - kId3v1Bytes, kId3v1Bytes}));
    TextMap information = readApeTagBefore(source, end);
    if (information.empty() && end >= kId3v1Bytes)
        information = readApeTagBefore(source, end - kId3v1Bytes);
    information.merge(std::move(id3v1));
    return information;
}

}  // namespace

TextMap readMpegInformation(ByteSource& source) {
    TextMap information = readLeadingTags(source);
    information.merge(readTrailingTags(source));
    if (const auto year = information.find("year"); year != information.end())
        year->second = yearOf(year->second);
    return information;
}

}  // namespace atdp::services
