// RIFF/WAVE, and its 64-bit forms RF64 (EBU Tech 3306) and BW64 (ITU-R BS.2088).
#pragma once

#include "services/containers/sound_description.h"
#include "services/io/byte_cursor.h"

namespace atdp::services {

// True when the file's first 12 bytes are those of such a form.
bool isWave(Bytes head);

// Describes the sound. kDamaged without a usable format or data chunk.
Result<SoundDescription> describeWave(ByteSource& source);

}  // namespace atdp::services
