#include "services/tags/information_parts.h"

#include <algorithm>
#include <string>
#include <utility>

#include "services/limits.h"
#include "services/tags/text.h"

namespace atdp::services {
namespace {

// The comment that a person wrote: the one without a description, else the first that is not a
// record of a program.
std::string commentOf(const TextMap& comments) {
    for (const auto& [description, text] : comments)  // in order, the empty one first
        if (!description.starts_with("iTun")) return text;
    return {};
}

}  // namespace

std::vector<std::byte> readTagBytes(ByteSource& source, ByteRange range) {
    range = clampedTo(source.sizeBytes(), range);
    std::vector<std::byte> bytes(std::min<std::uint64_t>(range.bytes, kMaxTagBytes));
    if (bytes.empty()) return bytes;
    const auto got = source.readAt(range.offset, bytes);
    bytes.resize(got ? *got : 0);
    return bytes;
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

void shortenYear(TextMap& information) {
    if (const auto year = information.find("year"); year != information.end())
        year->second = yearOf(year->second);
}

}  // namespace atdp::services
