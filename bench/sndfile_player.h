#pragma once

#include "bench/player.h"

namespace atdp::bench {

std::unique_ptr<Player> openWithSndfile(const std::string& path);

}  // namespace atdp::bench
