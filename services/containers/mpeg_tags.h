// The tags that stand before and after the sound of an MPEG file, found by their sizes alone.
#pragma once

#include "services/io/byte_cursor.h"
#include "services/io/byte_source.h"

namespace atdp::services {

// The bytes of a tag that starts with `head` (32 bytes or more): ID3v2 with its footer, ID3v1, or
// APE with its header; 0 when there is none.
std::uint64_t bytesOfTagAt(Bytes head);

// The file without the tags at its end: ID3v1, APE, Lyrics3 and appended ID3v2, in any order. A tag
// that claims more than is there is taken for what can be seen of it. As many tags are taken off as
// limits.h allows.
Result<std::uint64_t> endBeforeTags(ByteSource& source, std::uint64_t start, std::uint64_t end);

}  // namespace atdp::services
