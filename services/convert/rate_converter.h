#pragma once

#include <soxr.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "services/codecs/packet_decoder.h"
#include "services/convert/frame_window.h"
#include "services/convert/rate_ratio.h"

namespace atdp::services {

// Sound of a source at another rate, band-limited. The first frame is at the time of the source's
// first; behind the source's last frame there is silence.
//
// The sound is converted in segments of some seconds, each for itself: the resampler starts afresh
// a little before the segment, at a frame that both rates have in common. So what a frame's samples
// are does not depend on where playing began, to the last bit.
//
// Where the source cannot be read, the sound of the packet at hand and of the frames that the
// filters hold is not delivered either. Starting afresh allocates, once a segment.
class RateConverter final : public PacketDecoder {
 public:
    // The source must outlive the converter and be read by nobody else. Rates in Hz. Throws
    // std::bad_alloc.
    RateConverter(FrameReader& source, std::uint32_t channels, double inRate, double outRate);

    std::uint32_t framesPerPacket() const { return packetFrames_; }

    const float* decode(std::uint64_t packet) override;

 private:
    struct ResamplerDelete {
        void operator()(soxr_t resampler) const { soxr_delete(resampler); }
    };

    bool goTo(std::uint64_t frame);
    bool resetResampler();
    bool startSegment(std::uint64_t segment);
    bool skip(std::uint64_t frames);
    bool resample(float* samples, std::size_t frames);
    bool giveUp();

    FrameWindow source_;
    std::uint32_t channels_;
    RateRatio ratio_;
    RateRatio segment_;  // frames of a segment, at both rates
    RateRatio lead_;     // frames before it that the resampler is given first
    std::uint32_t packetFrames_;
    std::unique_ptr<soxr, ResamplerDelete> resampler_;  // null after a failure
    bool isFresh_ = true;                               // it was given nothing yet
    std::vector<float> packet_;                         // the samples of one
    std::vector<float> skipped_;                        // room for frames that nobody hears
    std::uint64_t position_ = 0;                        // the next frame to come out
    std::uint64_t segmentEnd_ = 0;  // the frame where the segment that it comes from ends
};

}  // namespace atdp::services
