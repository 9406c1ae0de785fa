#include "services/tags/key_texts.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "services/limits.h"
#include "services/tags/text.h"
#include "services/text/utf8.h"

namespace atdp::services {
namespace {

// Keys, those of the dictionary among them. The others are FFmpeg's.
constexpr std::pair<std::string_view, const char*> kNames[] = {
    {"artist", "artist"},      {"title", "title"},
    {"album", "album"},        {"track number", "track number"},
    {"track", "track number"}, {"genre", "genre"},
    {"year", "year"},          {"date", "year"},
    {"comments", "comments"},  {"comment", "comments"},
    {"composer", "composer"},
};

// Of ASCII, whatever language the player is set to.
char lowerCase(char character) {
    const bool isCapital = character >= 'A' && character <= 'Z';
    return isCapital ? static_cast<char>(character - 'A' + 'a') : character;
}

// The names are in lower case; that of a key tells nothing.
bool isSameKey(std::string_view key, std::string_view name) {
    return std::ranges::equal(key, name, {}, lowerCase);
}

void addText(TextMap& information, std::string_view key, std::string_view value) {
    if (value.empty()) return;
    for (const auto& [known, name] : kNames)
        if (isSameKey(key, known))
            information.emplace(name, fromUtf8OrWindows1252(value.substr(0, kMaxTagEntryBytes)));
}

// What comes before the next mark, which is taken too; all that is left where there is none.
std::string_view takeUntil(std::string_view& text, char mark) {
    const std::size_t bytes = std::min(text.find(mark), text.size());
    const std::string_view taken = text.substr(0, bytes);
    text.remove_prefix(std::min(bytes + 1, text.size()));
    return taken;
}

}  // namespace

void addCafStrings(TextMap& information, Bytes strings) {
    constexpr std::size_t kCountBytes = 4;
    std::string_view rest = charactersOf(strings);
    rest.remove_prefix(std::min(kCountBytes, rest.size()));
    for (std::size_t i = 0; i < kMaxTagEntries && !rest.empty(); ++i) {
        const std::string_view key = takeUntil(rest, '\0');
        addText(information, key, takeUntil(rest, '\0'));
    }
}

void addAuAnnotation(TextMap& information, Bytes annotation) {
    std::string_view lines = charactersOf(annotation);
    lines = takeUntil(lines, '\0');
    for (std::size_t i = 0; i < kMaxTagEntries && !lines.empty(); ++i) {
        std::string_view line = takeUntil(lines, '\n');
        const std::string_view key = takeUntil(line, '=');
        addText(information, key, line);
    }
}

}  // namespace atdp::services
