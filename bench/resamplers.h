#pragma once

#include "bench/player.h"

namespace atdp::bench {

// Sound of a stereo file held in memory, from 44.1 to 48 kHz, by the libraries called directly:
// libsoxr at the quality that the decoders ask of it, and the best of libsamplerate. `read` gives
// a packet of 2,048 frames or so at a time, whatever it is asked for.
std::unique_ptr<Player> openWithSoxr(const std::string& path);
std::unique_ptr<Player> openWithSamplerate(const std::string& path);

}  // namespace atdp::bench
