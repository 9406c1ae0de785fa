#include "services/text/non_lossy_ascii.h"

#include <charconv>
#include <cstdint>
#include <span>

#include "services/text/utf16.h"
#include "services/text/utf8.h"

namespace atdp::services {
namespace {

// Takes a number of exactly so many digits, at most `largest`.
std::optional<char16_t> takeNumber(std::string_view& bytes, std::size_t digits, int base,
                                   char16_t largest) {
    if (bytes.size() < digits) return std::nullopt;
    const char* const end = bytes.data() + digits;
    std::uint16_t value = 0;
    if (std::from_chars(bytes.data(), end, value, base).ptr != end || value > largest)
        return std::nullopt;
    bytes.remove_prefix(digits);
    return value;
}

// Takes one UTF-16 unit, plain or escaped, from bytes that are ASCII and not empty.
std::optional<char16_t> takeUnit(std::string_view& bytes) {
    const auto take = [&] {
        const char character = bytes.front();
        bytes.remove_prefix(1);
        return static_cast<char16_t>(character);
    };
    const char16_t character = take();
    if (character != u'\\' || bytes.starts_with('\\')) {
        if (character == u'\\') take();
        return character;
    }
    if (!bytes.starts_with('u')) return takeNumber(bytes, 3, 8, 0xFF);
    take();
    return takeNumber(bytes, 4, 16, 0xFFFF);
}

}  // namespace

std::optional<std::string> fromNonLossyAscii(std::string_view bytes) {
    if (!isAscii(bytes)) return std::nullopt;
    std::u16string units;
    while (!bytes.empty()) {
        const std::optional<char16_t> unit = takeUnit(bytes);
        if (!unit) return std::nullopt;
        units += *unit;
    }
    return fromValidUtf16(std::as_bytes(std::span(units)), std::endian::native);
}

}  // namespace atdp::services
