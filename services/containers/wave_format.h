// The format chunk ('fmt ') of RIFF/WAVE and Wave64.
#pragma once

#include <cstdint>
#include <optional>

#include "services/containers/chunk_walk.h"
#include "services/containers/sound_description.h"

namespace atdp::services {

struct WaveFormat {
    std::uint16_t tag = 0;
    std::uint16_t channels = 0;
    std::uint32_t rate = 0;  // Hz
    std::uint16_t frameBytes = 0;
    std::uint16_t containerBits = 0;
    std::uint16_t validBits = 0;
    std::uint32_t channelMask = 0;
};

// Plain or extensible; none where the chunk is too short.
Result<std::optional<WaveFormat>> readWaveFormat(ByteSource& source, const Chunk& chunk);

// The sound in `data`, which is that of the file's data chunk. kDamaged where it cannot be of that
// format.
Result<SoundDescription> describeWaveFormat(ByteSource& source, std::uint32_t fileType,
                                            const WaveFormat& format, ByteRange data);

}  // namespace atdp::services
