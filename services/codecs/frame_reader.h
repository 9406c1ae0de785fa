#pragma once

#include <cstdint>

namespace atdp::services {

// Sound as it is delivered: interleaved 32-bit floats, all at one rate and channel count. One
// thread at a time.
class FrameReader {
 public:
    virtual ~FrameReader() = default;

    // Decodes the next `*frames` frames to `samples` and writes back how many there were: fewer
    // only at the end of data or where the bytes after them cannot be read. False when not one
    // frame can be read; the position then stays, and a later call tries again. (A Result would
    // cost more than the one frame that a small read delivers: it is put together in memory.)
    virtual bool read(float* samples, std::uint32_t* frames) = 0;

    // Goes to a frame; past the end is the end.
    virtual void seek(std::uint64_t frame) = 0;
};

}  // namespace atdp::services
