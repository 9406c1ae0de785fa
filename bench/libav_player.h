#pragma once

#include "bench/player.h"

namespace atdp::bench {

// libavformat and libavcodec, on one thread, with interleaved floats made of what they give. A seek
// in layer III begins so many packets early that the samples are those of a straight run in any
// file.
std::unique_ptr<Player> openWithLibav(const std::string& path);

// The same with seeks that begin three packets early, enough for the files that are made here.
std::unique_ptr<Player> openWithHastyLibav(const std::string& path);

}  // namespace atdp::bench
