// The information dictionary: "artist", "title", "album", "track number" (as "3" or "3/12"), and
// where known "genre", "year", "comments", "composer".
#pragma once

#include <vector>

#include "services/containers/sound_description.h"
#include "services/io/byte_source.h"
#include "services/text_map.h"

namespace atdp::services {

// Of an MPEG audio file. Each entry comes from the first tag that has it: ID3v2 tags at the start,
// then an APE and an ID3v1 tag at the end. What cannot be read is left out. Only the tags
// themselves are read, however large the file is.
TextMap readMpegInformation(ByteSource& source);

// Of a file with chunks, by those that hold tags: ID3v2 first, then the others in file order.
TextMap readChunkInformation(ByteSource& source, const std::vector<TagChunk>& chunks);

}  // namespace atdp::services
