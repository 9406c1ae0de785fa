// Bytes in a charset that the C library knows, to UTF-8.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace atdp::services {

// None where a byte does not belong to the charset, where the last character is cut, or where the
// machine has no conversion of that name. Nothing is skipped or replaced. The charset must be one
// that holds no characters back for what may follow them. Time and memory are in proportion to the
// bytes. Any thread.
std::optional<std::string> fromCharset(std::string_view bytes, const char* charset);

}  // namespace atdp::services
