#include "services/text/utf16.h"

#include "services/text/utf8.h"

namespace atdp::services {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kByteOrderMark = 0xFEFF;
constexpr char32_t kSwappedByteOrderMark = 0xFFFE;

std::endian swapped(std::endian order) {
    return order == std::endian::big ? std::endian::little : std::endian::big;
}

char32_t firstUnit(Bytes bytes, std::endian order) {
    return order == std::endian::big ? loadBigEndian<std::uint16_t>(bytes.data())
                                     : loadLittleEndian<std::uint16_t>(bytes.data());
}

struct Utf16Character {
    char32_t value = 0;
    std::size_t bytes = 2;
};

// The character that the bytes, at least two, start with; a lone surrogate stands for itself.
Utf16Character firstCharacter(Bytes bytes, std::endian order) {
    const char32_t high = firstUnit(bytes, order);
    if (high < 0xD800 || high >= 0xDC00 || bytes.size() < 4) return {high};
    const char32_t low = firstUnit(bytes.subspan(2), order);
    if (low < 0xDC00 || low >= 0xE000) return {high};
    return {0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00), 4};
}

bool startsWithMark(Bytes bytes, std::endian order) {
    return bytes.size() >= 2 && firstUnit(bytes, order) == kByteOrderMark;
}

}  // namespace

std::endian utf16Order(Bytes bytes) {
    constexpr std::endian kNative = std::endian::native;
    return startsWithMark(bytes, swapped(kNative)) ? swapped(kNative) : kNative;
}

std::optional<std::string> fromValidUtf16(Bytes bytes, std::endian order) {
    if (bytes.size() % 2 != 0) return std::nullopt;
    if (startsWithMark(bytes, order)) bytes = bytes.subspan(2);
    std::string text;
    while (!bytes.empty()) {
        const Utf16Character character = firstCharacter(bytes, order);
        if (isSurrogate(character.value)) return std::nullopt;
        appendUtf8(text, character.value);
        bytes = bytes.subspan(character.bytes);
    }
    return text;
}

std::string fromUtf16(Bytes bytes, std::endian order) {
    std::string text;
    while (bytes.size() >= 2) {
        const Utf16Character character = firstCharacter(bytes, order);
        bytes = bytes.subspan(character.bytes);
        if (character.value == kSwappedByteOrderMark)
            order = swapped(order);
        else if (character.value != kByteOrderMark)
            appendUtf8(text, isSurrogate(character.value) ? kReplacement : character.value);
    }
    return text;
}

}  // namespace atdp::services
