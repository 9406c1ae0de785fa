// CAF (Apple's Core Audio Format, version 1).
#pragma once

#include "services/codecs/lossless_track.h"
#include "services/containers/sound_description.h"
#include "services/io/byte_cursor.h"

namespace atdp::services {

// True when the file's first 6 bytes are those of such a file.
bool startsAsCaf(Bytes head);

// Describes the sound. kDamaged without a usable description or a data chunk, and where Apple
// Lossless lacks its cookie or its packet table.
Result<SoundDescription> describeCaf(ByteSource& source);

bool isCaf(const SoundDescription& sound);

// Reads the packet table of a file that was described as Apple Lossless.
Result<LosslessTrack> readCafLosslessTrack(ByteSource& source);

}  // namespace atdp::services
