#include "services/tags/text.h"

#include <algorithm>
#include <array>

namespace atdp::services {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kByteOrderMark = 0xFEFF;
constexpr char32_t kSwappedByteOrderMark = 0xFFFE;
constexpr std::string_view kUtf8ByteOrderMark = "\xEF\xBB\xBF";

// Windows-1252 from 0x80 to 0x9F; the rest is as in ISO-8859-1.
constexpr std::array<char16_t, 32> kWindows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void append(std::string& text, char32_t character) {
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

bool isHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
bool isLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

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
    const bool valid = character >= kSmallest[bytes] && character < 0x110000 &&
                       !isHighSurrogate(character) && !isLowSurrogate(character);
    return valid ? bytes : 0;
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t bytes = utf8CharacterBytes(text);
        if (bytes == 0) return false;
        text.remove_prefix(bytes);
    }
    return true;
}

}  // namespace

std::string fromUtf8OrWindows1252(std::string_view bytes) {
    if (bytes.starts_with(kUtf8ByteOrderMark)) bytes.remove_prefix(kUtf8ByteOrderMark.size());
    if (isUtf8(bytes)) return std::string(bytes);
    std::string text;
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        append(text, byte >= 0x80 && byte < 0xA0 ? kWindows1252[byte - 0x80U] : byte);
    }
    return text;
}

std::string fromUtf16(Bytes bytes, std::endian order) {
    std::string text;
    char32_t high = 0;  // a high surrogate that waits for its low one
    for (; bytes.size() >= 2; bytes = bytes.subspan(2)) {
        const char32_t unit = order == std::endian::big
                                  ? loadBigEndian<std::uint16_t>(bytes.data())
                                  : loadLittleEndian<std::uint16_t>(bytes.data());
        if (high != 0 && isLowSurrogate(unit)) {
            append(text, 0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00));
            high = 0;
            continue;
        }
        if (high != 0) append(text, kReplacement);
        high = isHighSurrogate(unit) ? unit : 0;
        if (unit == kSwappedByteOrderMark)
            order = order == std::endian::big ? std::endian::little : std::endian::big;
        else if (high == 0 && unit != kByteOrderMark)
            append(text, isLowSurrogate(unit) ? kReplacement : unit);
    }
    if (high != 0) append(text, kReplacement);
    return text;
}

std::string joinedValues(std::string_view values) {
    std::string joined;
    while (!values.empty()) {
        const std::string_view value = values.substr(0, values.find('\0'));
        if (!value.empty()) joined += (joined.empty() ? "" : "; ") + std::string(value);
        values.remove_prefix(std::min(value.size() + 1, values.size()));
    }
    return joined;
}

}  // namespace atdp::services
