#pragma once

#include <cstdint>
#include <vector>

#include "services/codecs/alac_config.h"
#include "services/codecs/alac_kernels.h"

namespace atdp::services {

struct AlacOutput;

// The frames of a packet, from its first 8 bytes; config.frameLength where they do not tell.
std::uint32_t alacFramesIn(Bytes start, const AlacConfig& config);

// Decodes packets of Apple Lossless, each on its own. One thread at a time.
class AlacDecoder {
 public:
    explicit AlacDecoder(const AlacConfig& config, const AlacKernels& kernels = bestAlacKernels());

    // Decodes a packet to interleaved floats, value / 2^(bitDepth - 1), in the channel order of
    // WAVE. `samples` has room for config.frameLength frames. Answers how many frames there were,
    // 0 when the packet is damaged; `samples` may then hold anything.
    std::uint32_t decode(Bytes packet, float* samples);

 private:
    bool decodeElement(BitReader& bits, Bytes packet, unsigned channels, float* samples);
    bool readPlain(BitReader& bits, unsigned channels);
    bool readPredicted(BitReader& bits, unsigned channels, AlacOutput& output);

    AlacConfig config_;
    const AlacKernels& kernels_;
    std::vector<std::int32_t> pairs_;  // of the element at hand
    std::uint32_t frames_ = 0;         // of the packet at hand; 0 before its first element
    unsigned channelsDone_ = 0;        // of the packet at hand
};

}  // namespace atdp::services
