// ASCII in which escapes stand for other characters.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace atdp::services {

// `\\` is a backslash, `\351` the character of that octal number up to \377, `\u00e9` a UTF-16
// unit; two units can make a pair. None where a byte is not ASCII, a backslash starts anything
// else, or a surrogate stands alone.
std::optional<std::string> fromNonLossyAscii(std::string_view bytes);

}  // namespace atdp::services
