#pragma once

#include <cstdint>

#include "services/result.h"

namespace atdp::services {

// Decoded sound: interleaved 32-bit floats at the file's own rate and channel count. One thread at
// a time.
class FrameReader {
 public:
    virtual ~FrameReader() = default;

    // Decodes the next frames to `samples` and answers how many: fewer than asked for only at the
    // end of data or where the bytes after them cannot be read. kUnreadable when not one frame can
    // be; the position then stays, and a later call tries again.
    virtual Result<std::uint32_t> read(float* samples, std::uint32_t frames) = 0;

    // Goes to a frame; past the end is the end.
    virtual void seek(std::uint64_t frame) = 0;
};

}  // namespace atdp::services
