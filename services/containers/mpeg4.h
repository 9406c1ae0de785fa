// MPEG-4 (ISO 14496-12) and QuickTime files: their first sound track.
#pragma once

#include "services/containers/sound_description.h"
#include "services/io/byte_cursor.h"

namespace atdp::services {

// Whether a file may be one, from its first 8 bytes.
bool mayBeMpeg4(Bytes head);

// Looks at what describes the sound, not at the tables of its packets. kUnknownFileType when there
// is neither a file type nor a movie. MPEG audio is given as such only where it can be decoded.
Result<SoundDescription> describeMpeg4(ByteSource& source);

bool isMpeg4(const SoundDescription& sound);

}  // namespace atdp::services
