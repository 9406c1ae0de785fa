// Title and artist from the INFO lists of a WAVE file.
#pragma once

#include <cstdint>

#include "metadata/metadata_list.h"
#include "platform/audio_file.h"

namespace atdp {

// The header of the first sub-chunk with that four-character code among those that start at
// `chunk`, of which `available` bytes are there. Null when there is none, or when it or one before
// it reaches past them. A header is the code and the 32-bit size of the data, little-endian; data
// of odd size is followed by a pad byte.
const std::uint8_t* findChunk(std::uint32_t code, const std::uint8_t* chunk,
                              std::uint32_t available);

// Appends what the file's INFO lists hold, the first list first, where the list has no such key
// yet. The encoding of each text is estimated. Throws std::bad_alloc.
void checkMetaDataAsWavFile(AudioFileID file, MetadataList& list);

}  // namespace atdp
