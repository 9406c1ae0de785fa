// UTF-16 to UTF-8.
#pragma once

#include <bit>
#include <optional>
#include <string>

#include "services/io/byte_cursor.h"

namespace atdp::services {

// The order that a byte order mark at the start tells, native order where there is none.
std::endian utf16Order(Bytes bytes);

// The text in that order, without a byte order mark at its start; none where the bytes are odd in
// number or a surrogate stands alone.
std::optional<std::string> fromValidUtf16(Bytes bytes, std::endian order);

// The text in the given order until a byte order mark says otherwise; marks are dropped wherever
// they stand. A lone surrogate becomes U+FFFD, a last odd byte is dropped.
std::string fromUtf16(Bytes bytes, std::endian order);

}  // namespace atdp::services
