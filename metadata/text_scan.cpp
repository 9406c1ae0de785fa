#include "metadata/text_scan.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace atdp {
namespace {

constexpr std::string_view kBlanks[] = {"\t",     " ",      "\u00A0", "\u1680", "\u2000", "\u2001",
                                        "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007",
                                        "\u2008", "\u2009", "\u200A", "\u202F", "\u205F", "\u3000"};
constexpr std::string_view kLineEnds[] = {"\n", "\v", "\f", "\r", "\u0085", "\u2028", "\u2029"};

// Bytes of the character of that set which the text starts with; 0 when it is none of them.
template <class Set>
std::size_t atFront(const Set& set, std::string_view text) {
    for (const std::string_view character : set)
        if (text.starts_with(character)) return character.size();
    return 0;
}

template <class Set>
std::size_t atBack(const Set& set, std::string_view text) {
    for (const std::string_view character : set)
        if (text.ends_with(character)) return character.size();
    return 0;
}

}  // namespace

std::string_view trimmedBlanks(std::string_view text) {
    while (const std::size_t bytes = atFront(kBlanks, text)) text.remove_prefix(bytes);
    while (const std::size_t bytes = atBack(kBlanks, text)) text.remove_suffix(bytes);
    return text;
}

std::string_view withoutLeadingSpace(std::string_view text) {
    while (const std::size_t bytes = atFront(kBlanks, text) + atFront(kLineEnds, text))
        text.remove_prefix(bytes);
    return text;
}

std::optional<std::uint64_t> scanHexadecimal(std::string_view text, std::uint64_t greatest) {
    text = withoutLeadingSpace(text);
    if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (error == std::errc::invalid_argument) return std::nullopt;
    return error == std::errc{} ? std::min(value, greatest) : greatest;
}

std::int64_t integerValue(std::string_view text) {
    using Limits = std::numeric_limits<std::int64_t>;
    text = withoutLeadingSpace(text);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return 0;
    }
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range)
        return text.starts_with('-') ? Limits::min() : Limits::max();
    return value;
}

}  // namespace atdp
