// Where to send a decoder so that a certain frame can be reached.
//
// A decoder moves to a time, and works out the frame from it in single precision. Some five minutes
// into a file neighbouring times that it can tell apart are more than a frame apart, so a frame
// is reached by landing at or a little before it and dropping what comes too early.
#pragma once

#include <cstdint>

namespace atdp::host {

struct SeekPoint {
    std::uint64_t nanoseconds;  // what to give to seek()
    std::uint64_t frame;        // where the decoder lands
};

// The latest point that lands at or before `frame`, at `rate` frames a second.
SeekPoint seekPointBefore(std::uint64_t frame, float rate);

}  // namespace atdp::host
