// Title and artist from the ID3v2 tags of a WAVE file.
#pragma once

#include "metadata/metadata_list.h"
#include "platform/audio_file.h"

namespace atdp {

// Appends what the tags in the file's 'id3 ' chunks hold, the first tag first, where the list has
// no such key yet. A tag that cannot be read or converted adds nothing. Throws std::bad_alloc.
void checkID3v2Tag(AudioFileID file, MetadataList& list);

}  // namespace atdp
