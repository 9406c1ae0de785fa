// The outline of the first and the last second of a sound.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <vector>

namespace atdp::host {

struct SampleRange {
    float lowest;
    float highest;
};

// The samples of some frames in a row.
struct EnvelopeStep {
    std::uint64_t firstFrame;
    std::vector<SampleRange> channels;
};

// Memory is bounded, however long the sound and however high its rate.
class EdgeEnvelope {
 public:
    // Keeps the outline of at most `channels` channels.
    EdgeEnvelope(float rate, std::uint32_t channels);

    // The next frames, interleaved, with `channels` samples each.
    void add(std::span<const float> samples, std::uint32_t channels);

    std::uint64_t frames() const { return frames_; }  // added so far
    std::uint32_t channels() const { return channels_; }

    // Frames of a step; of the last step there may be fewer.
    std::uint64_t stepFrames() const { return stepFrames_; }

    // The steps that have a frame of that second, in order. Those of short sounds are in both.
    const std::deque<EnvelopeStep>& firstSecond() const { return first_; }
    const std::deque<EnvelopeStep>& lastSecond() const { return last_; }

 private:
    void addFrame(std::span<const float> frame);

    std::uint32_t channels_;
    std::uint64_t stepFrames_;
    std::size_t secondSteps_;
    std::uint64_t frames_ = 0;
    std::deque<EnvelopeStep> first_;
    std::deque<EnvelopeStep> last_;
};

}  // namespace atdp::host
