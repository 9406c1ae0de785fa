// AU, the sound files of Sun and NeXT (.au, .snd), in both byte orders.
#pragma once

#include "services/containers/sound_description.h"
#include "services/io/byte_cursor.h"

namespace atdp::services {

// True when the file's first 4 bytes are those of such a file.
bool isAu(Bytes head);

// Describes the sound. kDamaged where the header is cut short or contradicts itself,
// kUnsupportedFormat for encodings without a code here.
Result<SoundDescription> describeAu(ByteSource& source);

}  // namespace atdp::services
