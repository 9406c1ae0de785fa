#pragma once

#include "bench/player.h"

namespace atdp::bench {

// libmpg123 with the fastest of its decoders for this processor. It reads the file itself.
std::unique_ptr<Player> openWithMpg123(const std::string& path);

// The same, and the exact length is known: the file was walked over.
std::unique_ptr<Player> openAndScanWithMpg123(const std::string& path);

}  // namespace atdp::bench
