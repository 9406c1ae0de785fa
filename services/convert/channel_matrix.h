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
//   stereo to mono is the mean
//   more to fewer  channels whose speaker is not among those left are shared out among these:
//   center
//                  and surrounds at -3 dB, what lies between left and right of the back or the top
//                  at -6 dB to each of the front pair (ITU-R BS.775), low frequencies not at all;
//                  all is scaled so that full scale cannot clip. Mono is the mean of what stereo
//                  would be.
// `channelMask` says which speakers more than two channels that come in are for, lowest bit first,
// in the bits of WAVEFORMATEXTENSIBLE; 0 is the usual order for the count. Channels without a
// speaker, and layouts of more than 8 channels that go out, are dealt round by number. Layouts of 1
// to 8 channels that go out have the usual order:
//   C | L R | L R C | L R BL BR | L R C BL BR | L R C LFE BL BR | L R C LFE BC SL SR |
//   L R C LFE BL BR SL SR
std::vector<ChannelGain> channelGains(std::uint32_t channelMask, std::uint32_t in,
                                      std::uint32_t out);

}  // namespace atdp::services
