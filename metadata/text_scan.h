// White space and numbers at the front of text, as the platform's own scanning takes them. Text is
// UTF-8.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace atdp {

// Without the blanks (tab, and Unicode's space separators) at both ends; line ends stay.
std::string_view trimmedBlanks(std::string_view text);

// Without the blanks and line ends at the front.
std::string_view withoutLeadingSpace(std::string_view text);

// The hexadecimal number at the front, after any space and 0x, up to the first other character; a
// number above `greatest` gives `greatest`. None without a digit.
std::optional<std::uint64_t> scanHexadecimal(std::string_view text, std::uint64_t greatest);

// The decimal integer at the front, after any space and a sign; the nearest one where it does not
// fit, 0 where there is none.
std::int64_t integerValue(std::string_view text);

}  // namespace atdp
