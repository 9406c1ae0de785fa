#include "services/tags/trailing_tags.h"

#include <strings.h>

#include <string>
#include <string_view>

#include "services/limits.h"
#include "services/tags/genres.h"
#include "services/tags/text.h"
#include "services/text/utf8.h"

namespace atdp::services {
namespace {

void add(TextMap& texts, const char* name, const std::string& text) {
    if (!text.empty()) texts.emplace(name, text);
}

// A full field may end within a character of UTF-8, which the rest of it still is.
std::string_view withoutTornCharacter(std::string_view text) {
    for (std::size_t torn = 1; torn <= 3 && torn < text.size() && !isUtf8(text); ++torn) {
        const std::string_view whole = text.substr(0, text.size() - torn);
        if (isUtf8(whole) && !isAscii(whole)) return whole;
    }
    return text;
}

// A field of fixed width, padded with NULs or blanks.
std::string fixedText(Bytes field) {
    std::string_view text = charactersOf(field);
    text = text.substr(0, text.find('\0'));
    if (text.size() == field.size()) text = withoutTornCharacter(text);
    return fromUtf8OrWindows1252(text.substr(0, text.find_last_not_of(' ') + 1));
}

constexpr std::size_t kMaxKeyBytes = 255;  // of an APE item

// An item's key up to its NUL; a longer one than there can be is cut.
std::string takeKey(ByteCursor& cursor) {
    std::string key;
    while (!cursor.failed() && key.size() <= kMaxKeyBytes) {
        const auto character = static_cast<char>(cursor.bigEndian<std::uint8_t>());
        if (character == '\0') break;
        key += character;
    }
    return key;
}

// The name of an APE item in the information dictionary, or null.
const char* nameOfItem(const std::string& key) {
    constexpr const char* kNames[][2] = {{"Artist", "artist"},    {"Title", "title"},
                                         {"Album", "album"},      {"Track", "track number"},
                                         {"Genre", "genre"},      {"Year", "year"},
                                         {"Comment", "comments"}, {"Composer", "composer"}};
    for (const auto& [itemKey, name] : kNames)
        if (strcasecmp(key.c_str(), itemKey) == 0) return name;
    return nullptr;
}

}  // namespace

TextMap readId3v1Tag(Bytes tag) {
    TextMap texts;
    if (tag.size() != kId3v1Bytes || !charactersOf(tag).starts_with("TAG")) return texts;
    add(texts, "title", fixedText(tag.subspan(3, 30)));
    add(texts, "artist", fixedText(tag.subspan(33, 30)));
    add(texts, "album", fixedText(tag.subspan(63, 30)));
    add(texts, "year", fixedText(tag.subspan(93, 4)));
    const int track = std::to_integer<int>(tag[126]);
    const bool hasTrack = tag[125] == std::byte{0} && track != 0;
    if (hasTrack) add(texts, "track number", std::to_string(track));
    add(texts, "comments", fixedText(tag.subspan(97, hasTrack ? 28 : 30)));
    add(texts, "genre", genreOfNumber(std::to_integer<int>(tag[127])));
    return texts;
}

TextMap readApeItems(Bytes items) {
    constexpr std::uint32_t kKindMask = 6;  // of the flags; 0 is text
    TextMap texts;
    ByteCursor cursor(items);
    while (cursor.remainingBytes() > 0) {
        const auto valueBytes = cursor.littleEndian<std::uint32_t>();
        const auto flags = cursor.littleEndian<std::uint32_t>();
        const std::string key = takeKey(cursor);
        const Bytes value = cursor.take(valueBytes);
        if (cursor.failed() || key.size() > kMaxKeyBytes) break;
        const char* name = nameOfItem(key);
        const bool isText = (flags & kKindMask) == 0;
        if (name != nullptr && isText && value.size() <= kMaxTagEntryBytes)
            add(texts, name, joinedValues(fromUtf8OrWindows1252(charactersOf(value))));
    }
    return texts;
}

}  // namespace atdp::services
