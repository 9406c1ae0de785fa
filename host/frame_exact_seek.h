// Where to send a decoder so that a certain frame can be reached.
//
// A decoder moves to a time, and works out the frame from it in single precision. Some five minutes
// into a file neighbouring times that it can tell apart are more than a frame apart, so a frame
// is reached by landing at or a little before it and dropping what comes too early.
#pragma once

#include <cstdint>

#include "decoder/protocols.h"

namespace atdp::host {

struct SeekPoint {
    std::uint64_t nanoseconds;  // what to give to seek()
    std::uint64_t frame;        // where the decoder lands
};

// The latest point that lands at or before `frame`, at `rate` frames a second.
SeekPoint seekPointBefore(std::uint64_t frame, float rate);

// The same for an open decoder of that class, at the rate that it delivers. It keeps away from
// where the class repeats frames after a seek, so some seconds of sound may come before `frame`.
SeekPoint seekPointFor(const DecoderClass& decoderClass, AudioFileDecoder& decoder,
                       std::uint64_t frame);

}  // namespace atdp::host
