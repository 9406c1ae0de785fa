// Which frames of an MPEG-4 or QuickTime track are sound.
#pragma once

#include <cstdint>

#include "services/containers/mpeg4_sample_table.h"

namespace atdp::services {

struct SoundSpan {
    std::uint64_t primingFrames = 0;  // before the sound
    std::uint64_t validFrames = 0;
};

// Goes by the durations in the sample table, the media header and the edit list, each as far as the
// packets bear it out; without them all packets are sound. `framesPerPacket` and `rate` are those
// of the encoding.
Result<SoundSpan> findSoundSpan(ByteSource& source, ByteRange movie, ByteRange track,
                                const SampleTable& table, std::uint32_t framesPerPacket,
                                std::uint32_t rate);

}  // namespace atdp::services
