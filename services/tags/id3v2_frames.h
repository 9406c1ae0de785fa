// The frames of an ID3v2 tag (id3.org: ID3v2.2, 2.3 and 2.4), taken apart without believing what
// they claim.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "services/io/byte_cursor.h"

namespace atdp::services {

inline constexpr std::size_t kId3v2HeaderBytes = 10;

struct Id3v2Header {
    unsigned majorVersion = 0;  // 2 to 4
    unsigned flags = 0;
    std::uint32_t bodyBytes = 0;

    // With header and footer.
    std::uint64_t tagBytes() const;
};

// The header that `tag` starts with, or none when it is not the header of such a tag.
std::optional<Id3v2Header> readId3v2Header(Bytes tag);

// A frame whose content is as it was before unsynchronisation, compression and the like.
struct Id3v2Frame {
    std::string identifier;  // 3 characters in 2.2, else 4
    std::vector<std::byte> content;
};

// The text frames of a tag, each identifier's first, and its comments, as many as limits.h allows.
// Frames of other kinds, which
// may be large or hold further frames, are stepped over. `body` is what is there of the tag after
// its header; a frame that is cut ends the list.
std::vector<Id3v2Frame> readTextFrames(const Id3v2Header& header, Bytes body);

}  // namespace atdp::services
