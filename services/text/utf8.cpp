#include "services/text/utf8.h"

#include <algorithm>
#include <array>

namespace atdp::services {
namespace {

// The bytes of the UTF-8 character that `text` starts with, 0 where it starts with none.
std::size_t utf8CharacterBytes(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    if (lead < 0x80) return 1;
    const std::size_t bytes = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < bytes) return 0;
    char32_t character = lead & (0x7FU >> bytes);
    for (const char byte : text.substr(1, bytes - 1)) {
        if ((byte & 0xC0) != 0x80) return 0;
        character = character << 6 | (byte & 0x3FU);
    }
    constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
    const bool valid =
        character >= kSmallest[bytes] && character < 0x110000 && !isSurrogate(character);
    return valid ? bytes : 0;
}

}  // namespace

void appendUtf8(std::string& text, char32_t character) {
    const auto continuation = [&](int shift) {
        text += static_cast<char>(0x80 | (character >> shift & 0x3F));
    };
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += static_cast<char>(0xC0 | character >> 6);
        continuation(0);
    } else if (character < 0x10000) {
        text += static_cast<char>(0xE0 | character >> 12);
        continuation(6);
        continuation(0);
    } else {
        text += static_cast<char>(0xF0 | character >> 18);
        continuation(12);
        continuation(6);
        continuation(0);
    }
}

bool isAscii(std::string_view bytes) {
    return std::ranges::all_of(
        bytes, [](char character) { return static_cast<unsigned char>(character) < 0x80; });
}

bool isUtf8(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t characterBytes = utf8CharacterBytes(bytes);
        if (characterBytes == 0) return false;
        bytes.remove_prefix(characterBytes);
    }
    return true;
}

std::string_view withoutUtf8Mark(std::string_view bytes) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (bytes.starts_with(kMark)) bytes.remove_prefix(kMark.size());
    return bytes;
}

}  // namespace atdp::services
