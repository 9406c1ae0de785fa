#pragma once

#include "bench/player.h"

namespace atdp::bench {

// libavformat and libavcodec, on one thread, with interleaved floats made of what they give.
std::unique_ptr<Player> openWithLibav(const std::string& path);

}  // namespace atdp::bench
