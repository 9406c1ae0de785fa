// Wave64 (Sony Pictures Digital), WAVE with 64-bit sizes and GUIDs in place of codes.
#pragma once

#include "services/containers/sound_description.h"
#include "services/io/byte_cursor.h"

namespace atdp::services {

// True when the file's first 40 bytes are those of such a form.
bool isWave64(Bytes head);

// Describes the sound. kDamaged without a usable format or data chunk.
Result<SoundDescription> describeWave64(ByteSource& source);

}  // namespace atdp::services
