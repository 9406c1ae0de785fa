#include "services/tags/information.h"

#include <cstddef>
#include <utility>

#include "services/limits.h"
#include "services/tags/information_parts.h"
#include "services/tags/trailing_tags.h"
#include "services/text/utf8.h"

namespace atdp::services {
namespace {

// Some writers put another tag before the one that is there.
TextMap readLeadingTags(ByteSource& source) {
    TextMap information;
    std::uint64_t offset = 0;
    for (std::size_t tags = 0; tags < kMaxTagsInARow; ++tags) {
        const auto header = readId3v2Header(readTagBytes(source, {offset, kId3v2HeaderBytes}));
        if (!header) break;
        const auto body = readTagBytes(source, {offset + kId3v2HeaderBytes, header->bodyBytes});
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
    return offset >= 3 && isApeMark(readTagBytes(source, {offset - 3, 8}));
}

TextMap readApeTagBefore(ByteSource& source, std::uint64_t end) {
    if (end < kApeFooterBytes) return {};
    const std::uint64_t footerOffset = end - kApeFooterBytes;
    const auto footer = readTagBytes(source, {footerOffset, kApeFooterBytes});
    if (footer.size() < kApeFooterBytes || !isApeMark(footer)) return {};
    const auto bytes = loadLittleEndian<std::uint32_t>(footer.data() + 12);  // with the footer
    if (bytes < kApeFooterBytes || bytes > end) return {};
    return readApeItems(readTagBytes(source, {end - bytes, bytes - kApeFooterBytes}));
}

TextMap readTrailingTags(ByteSource& source) {
    const std::uint64_t end = source.sizeBytes();
    TextMap id3v1;
    if (end >= kId3v1Bytes && !isInsideApeMark(source, end - kId3v1Bytes))
        id3v1 = readId3v1Tag(readTagBytes(source, {end - kId3v1Bytes, kId3v1Bytes}));
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
    shortenYear(information);
    return information;
}

}  // namespace atdp::services
