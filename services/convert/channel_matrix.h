#pragma once

#include <cstdint>
#include <vector>

namespace atdp::services {

// One term of a sum: so much of a channel that comes in goes to one that comes out.
struct ChannelGain {
    std::uint32_t in;
    std::uint32_t out;
    float gain;
};

// How sound of `in` channels is heard on `out` channels, both from 1 to kMaxChannels:
//   mono           goes to every channel
//   fewer to more  every channel keeps its place, and those behind them are silent
//   more to fewer  channels that have no place among those left are shared out among these: center
//                  and surrounds at -3 dB, low frequencies not at all; all is scaled so that full
//                  scale cannot clip. Mono is the mean of what stereo would be.
// `channelMask` says which speakers the channels that come in are for, lowest bit first, in the
// bits of WAVEFORMATEXTENSIBLE; 0 is the usual order for the count. Layouts of 1 to 8 channels that
// go out have the usual order:
//   C | L R | L R C | L R BL BR | L R C BL BR | L R C LFE BL BR | L R C LFE BC SL SR |
//   L R C LFE BL BR SL SR
std::vector<ChannelGain> channelGains(std::uint32_t channelMask, std::uint32_t in,
                                      std::uint32_t out);

}  // namespace atdp::services
