// What an ID3v2 tag says.
#pragma once

#include "services/tags/id3v2_frames.h"
#include "services/text_map.h"

namespace atdp::services {

// Several values of one frame come as "A; B", genres by name.
struct Id3v2Tag {
    TextMap texts;     // under the identifiers of 2.4, whatever the tag's version
    TextMap comments;  // under their descriptions
};

// Reads a tag of which `body` is there after the header. Of several frames with one name the first
// counts.
Id3v2Tag readId3v2Tag(const Id3v2Header& header, Bytes body);

}  // namespace atdp::services
