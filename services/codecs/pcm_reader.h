#pragma once

#include <cstddef>
#include <memory>

#include "services/codecs/frame_reader.h"
#include "services/codecs/pcm_conversion.h"
#include "services/io/block_reader.h"

namespace atdp::services {

// Reads linear PCM a block at a time and converts it on the way out.
class PcmReader final : public FrameReader {
 public:
    // `data` holds whole frames. `conversion` must not be null.
    PcmReader(std::shared_ptr<ByteSource> source, ByteRange data,
              const AudioStreamBasicDescription& format, PcmConversion conversion);

    bool read(float* samples, std::uint32_t* frames) override;
    void seek(std::uint64_t frame) override;

 private:
    BlockReader blocks_;
    ByteRange data_;
    std::uint32_t bytesPerFrame_;
    std::uint32_t channels_;
    PcmConversion conversion_;
    std::uint64_t position_;  // byte offset in the file of the next frame
};

}  // namespace atdp::services
