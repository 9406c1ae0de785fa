#pragma once

#include "bench/player.h"

namespace atdp::bench {

enum class BareLoop { kCopy, kSigned16, kSigned16Swapped };

// No decoder at all: blocks of 64 KiB are read from a file, and their bytes copied, or 16-bit
// samples of either byte order in them converted with vector instructions. Headers are sound like
// the rest. What a decoder can at best come near. `read` gives a block at a time, whatever it is
// asked for, and counts frames of stereo.
std::unique_ptr<Player> openBareLoop(const std::string& path, BareLoop loop);

}  // namespace atdp::bench
