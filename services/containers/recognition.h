#pragma once

#include "services/containers/sound_description.h"

namespace atdp::services {

// Finds out from the content alone what a file is, and describes its sound. kUnknownFileType when
// no container claims it.
Result<SoundDescription> describeSound(ByteSource& source);

}  // namespace atdp::services
