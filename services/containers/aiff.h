// AIFF (Audio Interchange File Format 1.3) and AIFF-C.
#pragma once

#include "services/containers/sound_description.h"
#include "services/io/byte_cursor.h"

namespace atdp::services {

// True when the file's first 12 bytes are those of such a form.
bool isAiff(Bytes head);

// Describes the sound. kDamaged without a usable common chunk, or without a
// sound data chunk where there are frames.
Result<SoundDescription> describeAiff(ByteSource& source);

}  // namespace atdp::services
