#pragma once

#include <cstdint>
#include <optional>

#include "platform/core_audio_types.h"
#include "services/io/byte_cursor.h"

namespace atdp::services {

// What a decoder of Apple Lossless has to know before the first packet.
struct AlacConfig {
    std::uint32_t frameLength = 0;     // frames of every packet but the last
    std::uint32_t bitDepth = 0;        // 16, 20, 24 or 32
    std::uint32_t meanFactor = 0;      // how fast the mean of the residuals adapts, in 1/512
    std::uint32_t initialMean = 0;     // of the residuals, in 1/512
    std::uint32_t maxCodeBits = 0;     // limit of the Golomb parameter
    std::uint32_t channels = 0;        // 1 to 8
    std::uint32_t maxPacketBytes = 0;  // 0: not known
    std::uint32_t averageBitRate = 0;  // bit/s, 0: not known
    std::uint32_t sampleRate = 0;      // Hz
};

// Reads a "magic cookie": the bare configuration or one in the atoms that old files wrap it in. A
// channel layout may follow it.
std::optional<AlacConfig> parseAlacConfig(Bytes cookie);

// The format of such a stream.
AudioStreamBasicDescription alacFormat(const AlacConfig& config);

// The speakers that so many channels (1 to kMaxAlacChannels) are for, as SoundDescription tells
// them; the decoder delivers the channels in the order of these bits.
std::uint32_t alacChannelMask(std::uint32_t channels);

}  // namespace atdp::services
