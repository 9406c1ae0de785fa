// ID3 tags as dictionaries.
#pragma once

#include "metadata/byte_block.h"
#include "platform/core_foundation.h"

namespace atdp {

// What the platform's converter makes of the tag; null when it refuses it or there is none.
ScopedCFDictionary tagDictionary(const ByteBlock& tag);

}  // namespace atdp
