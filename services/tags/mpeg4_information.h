#pragma once

#include "services/io/byte_source.h"
#include "services/text_map.h"

namespace atdp::services {

// The information dictionary of an MPEG-4 or QuickTime file, from the item list in its movie's user
// data. Of several items for one entry the first counts; what cannot be read is left out.
TextMap readMpeg4Information(ByteSource& source);

}  // namespace atdp::services
