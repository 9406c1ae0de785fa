#include "services/convert/rate_converter.h"

#include <algorithm>
#include <limits>
#include <new>

namespace atdp::services {
namespace {

// Frames at the lower of both rates. A lead of that length fills the resampler's filters to 28
// bits; segments are long enough that leads cost little, and short enough that a seek into one
// does.
constexpr std::uint32_t kLeadFrames = 256;
constexpr std::uint32_t kSegmentFrames = 131'072;

constexpr std::uint64_t kNowhere = std::numeric_limits<std::uint64_t>::max();

// As many whole periods of the ratio as have at least `frames` at the lower rate.
RateRatio periods(RateRatio ratio, std::uint32_t frames) {
    const std::uint32_t period = std::min(ratio.in, ratio.out);
    const std::uint32_t count = (frames + period - 1) / period;
    return {count * ratio.in, count * ratio.out};
}

// Precision of 28 bits and linear phase. Ratios of large terms want the precise clock: without it
// they drift by some frames an hour.
soxr_t makeResampler(RateRatio ratio, std::uint32_t channels) {
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, SOXR_HI_PREC_CLOCK);
    soxr_error_t error = nullptr;
    soxr_t resampler =
        soxr_create(ratio.in, ratio.out, channels, &error, nullptr, &quality, nullptr);
    if (resampler == nullptr) throw std::bad_alloc();
    return resampler;
}

}  // namespace

RateConverter::RateConverter(FrameReader& source, std::uint32_t channels, RateRatio ratio)
    : source_(source, channels),
      channels_(channels),
      segment_(periods(ratio, kSegmentFrames)),
      lead_(periods(ratio, kLeadFrames)),
      resampler_(makeResampler(ratio, channels)),
      skipped_(std::size_t{kRatePacketFrames} * channels) {}

bool RateConverter::decode(std::uint64_t packet, float* samples) {
    if (!goTo(packet * kRatePacketFrames)) return false;
    std::size_t done = 0;
    while (done < kRatePacketFrames) {
        if (position_ == segmentEnd_ && !startSegment(position_ / segment_.out)) return false;
        const auto frames = static_cast<std::size_t>(
            std::min<std::uint64_t>(kRatePacketFrames - done, segmentEnd_ - position_));
        if (!resample(samples + done * channels_, frames)) return false;
        done += frames;
    }
    return true;
}

bool RateConverter::goTo(std::uint64_t frame) {
    if (frame == position_) return true;
    const bool isAhead = position_ < frame && frame < segmentEnd_;
    if (!isAhead && !startSegment(frame / segment_.out)) return false;
    return skip(frame - position_);
}

bool RateConverter::startSegment(std::uint64_t segment) {
    const RateRatio lead = segment == 0 ? RateRatio{0, 0} : lead_;
    soxr_clear(resampler_.get());
    source_.goTo(segment * segment_.in - lead.in);
    position_ = segment * segment_.out - lead.out;
    segmentEnd_ = (segment + 1) * segment_.out;
    return skip(lead.out);
}

bool RateConverter::skip(std::uint64_t frames) {
    while (frames > 0) {
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(frames, kRatePacketFrames));
        if (!resample(skipped_.data(), count)) return false;
        frames -= count;
    }
    return true;
}

// After a failure the resampler has lost its place, and the next packet starts a segment.
bool RateConverter::resample(float* samples, std::size_t frames) {
    while (frames > 0) {
        std::size_t taken = 0;
        std::size_t given = 0;
        if (source_.fill()) {
            const auto input = source_.samples();
            soxr_process(resampler_.get(), input.data(), input.size() / channels_, &taken, samples,
                         frames, &given);
        }
        if (taken == 0 && given == 0) {  // the source cannot be read, or memory has run out
            position_ = kNowhere;
            segmentEnd_ = 0;
            return false;
        }
        source_.take(taken);
        samples += given * channels_;
        frames -= given;
        position_ += given;
    }
    return true;
}

}  // namespace atdp::services
