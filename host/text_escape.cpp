#include "host/text_escape.h"

#include <cstddef>
#include <cstdint>

namespace atdp::host {
namespace {

struct Character {
    std::uint32_t codePoint;
    std::size_t bytes;  // 0 when the text does not start with a valid character
};

constexpr Character kInvalid = {0, 0};

std::uint8_t byteAt(std::string_view text, std::size_t index) {
    return static_cast<std::uint8_t>(text[index]);
}

// The first character of a text that is not empty.
Character firstCharacter(std::string_view text) {
    const std::uint8_t lead = byteAt(text, 0);
    if (lead < 0x80) return {lead, 1};
    const std::size_t bytes = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < bytes) return kInvalid;

    std::uint32_t codePoint = lead & (0x7Fu >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) {
        if ((byteAt(text, i) & 0xC0) != 0x80) return kInvalid;
        codePoint = codePoint << 6 | (byteAt(text, i) & 0x3Fu);
    }
    const bool overlong = (bytes == 3 && codePoint < 0x800) || (bytes == 4 && codePoint < 0x10000);
    const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    if (overlong || surrogate || codePoint > 0x10FFFF) return kInvalid;
    return {codePoint, bytes};
}

// Control characters, and the two codes in the first 65,536 that XML forbids as no characters.
bool isUnprintable(std::uint32_t codePoint) {
    return codePoint < 0x20 || (codePoint >= 0x7F && codePoint < 0xA0) || codePoint == 0xFFFE ||
           codePoint == 0xFFFF;
}

void appendEscaped(std::string& to, std::string_view bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        to += "\\x";
        to += kDigits[byteAt(bytes, i) >> 4];
        to += kDigits[byteAt(bytes, i) & 0xF];
    }
}

std::string escaped(std::string_view text, bool escapeUnprintable) {
    std::string result;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        const std::string_view bytes = text.substr(0, character.bytes == 0 ? 1 : character.bytes);
        if (character.bytes == 0 || (escapeUnprintable && isUnprintable(character.codePoint))) {
            appendEscaped(result, bytes);
        } else {
            result += bytes;
        }
        text.remove_prefix(bytes.size());
    }
    return result;
}

}  // namespace

std::string validUtf8(std::string_view text) {
    return escaped(text, false);
}

std::string printableText(std::string_view text) {
    return escaped(text, true);
}

std::string xmlText(std::string_view text) {
    std::string result;
    for (const char character : printableText(text)) {
        switch (character) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            default:
                result += character;
        }
    }
    return result;
}

}  // namespace atdp::host
