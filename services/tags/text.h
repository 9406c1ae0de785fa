// The text of tags as UTF-8. A NUL stays where it is: what it ends or separates is the caller's to
// say.
#pragma once

#include <bit>
#include <string>
#include <string_view>

#include "services/io/byte_cursor.h"

namespace atdp::services {

// Text whose encoding is not known, or stated by writers that often put another one there: UTF-8
// where it is valid UTF-8, which text in other encodings is next to never, else Windows-1252. That
// is ISO-8859-1 with characters where the latter has controls; its five undefined bytes stay
// controls.
std::string fromUtf8OrWindows1252(std::string_view bytes);

// UTF-16, in the given order until a byte order mark says otherwise; marks are dropped wherever
// they stand. A lone surrogate becomes U+FFFD, a last odd byte is dropped.
std::string fromUtf16(Bytes bytes, std::endian order);

// The values that NULs separate, without empty ones, as "A; B".
std::string joinedValues(std::string_view values);

inline std::string_view charactersOf(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace atdp::services
