// What the platform itself knows of a file's tags.
#pragma once

#include "metadata/metadata_list.h"
#include "platform/audio_file.h"

namespace atdp {

// Appends what the file's information dictionary holds, key by key where the list has no such key
// yet; nothing when the file has no dictionary. Throws std::bad_alloc.
void getAudioFilePropertyInfo(AudioFileID file, MetadataList& list);

}  // namespace atdp
