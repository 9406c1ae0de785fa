// Writes WAV files, as RF64 when they outgrow what WAV can count.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "host/output_file.h"
#include "host/sample_encoding.h"

namespace atdp::host {

// The largest frame that the header can describe.
inline constexpr std::uint32_t kMostWavFrameBytes = 0xFFFF;

class WavWriter {
 public:
    // Writes the header. Where it cannot be completed later, as in a pipe, its sizes stay unknown
    // (all bits set).
    WavWriter(OutputFile& output, SampleEncoding encoding, float rate, std::uint32_t channels);

    // Whole frames in the writer's encoding.
    void write(std::span<const std::byte> frames);

    // Completes the file.
    void finish();

 private:
    std::vector<std::byte> header(bool sizesKnown) const;

    OutputFile& output_;
    SampleEncoding encoding_;
    std::uint32_t rate_;
    std::uint32_t channels_;
    std::uint64_t dataBytes_ = 0;
};

}  // namespace atdp::host
