// Gapless counts that an encoder left in the comment "iTunSMPB" of a file's ID3 tag.
#pragma once

#include "platform/audio_file.h"

namespace atdp {

// Fills the record from the comment; false, with the record untouched, when the file has no tag or
// no such comment, when the comment is not as it should be, or when memory runs out. The numbers
// are the file's word and nothing more: they may be negative or beyond the file's length.
bool getAudioFilePacketTableInfoFromID3tag(AudioFilePacketTableInfo* table, AudioFileID file);

}  // namespace atdp
