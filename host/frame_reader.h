// Takes the frames of an open file one request at a time.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/opened_file.h"

namespace atdp::host {

class FrameReader {
 public:
    // Asks for `requestFrames` at a time, or for what the decoder prefers when it is 0. The file
    // must be freshly opened, deliver what it is to deliver, and outlive the reader.
    FrameReader(OpenedFile& file, ModuleLog& log, std::uint32_t requestFrames = 0);

    std::uint32_t channels() const { return channels_; }
    float rate() const { return rate_; }  // Hz, of the frames delivered

    // How many frames the decoder says it has to deliver, give or take its rounding. It counts
    // frames that are cut at the ends.
    double fileFrames() const;

    // Makes this frame the next one delivered, counted from the start of the sound at the rate
    // of delivery. Past the end nothing is delivered. Decodes some seconds at most. Throws Failure
    // when the file cannot be decoded there.
    void startAt(std::uint64_t frame);

    // The next frames, interleaved, valid until the next call; empty at the end. Throws Failure
    // when the file cannot be decoded further, after the frames before that have been delivered.
    std::span<const float> next();

 private:
    OpenedFile& file_;
    ModuleLog& log_;
    std::uint32_t channels_;
    float rate_;
    std::vector<float> samples_;
    std::span<const float> pending_;  // delivered by the decoder, not yet by next()
    std::int32_t result_ = DECODER_RESULT_OK;
    bool started_ = false;  // the decoder is no longer where it was opened
    bool ended_ = false;
};

}  // namespace atdp::host
