// The tags at the end of an MPEG audio file. Both answer under the names of the information
// dictionary, with nothing where there is no such tag.
#pragma once

#include "services/io/byte_cursor.h"
#include "services/text_map.h"

namespace atdp::services {

inline constexpr std::size_t kId3v1Bytes = 128;
inline constexpr std::size_t kApeFooterBytes = 32;

// ID3v1 and 1.1.
TextMap readId3v1Tag(Bytes tag);

// The items of an APE tag, version 1 or 2, without its header and footer.
TextMap readApeItems(Bytes items);

}  // namespace atdp::services
