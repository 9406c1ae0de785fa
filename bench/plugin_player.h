#pragma once

#include "bench/player.h"

namespace atdp::bench {

// Loads the module, so that opening a file does not have to.
void preparePlugin();

// Our own decoders, as any host uses them: the module is loaded from beside the program. `rate` in
// Hz of what is delivered; 0: the file's own.
std::unique_ptr<Player> openWithPlugin(const std::string& path, float rate = 0);

}  // namespace atdp::bench
