#include "services/convert/rate_converter.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <mutex>
#include <new>

namespace atdp::services {
namespace {

// Frames at the lower of both rates. A lead of that length fills the resampler's filters to 28
// bits; segments are long enough that leads cost little, and short enough that a seek into one
// does.
constexpr std::uint32_t kLeadFrames = 256;
constexpr std::uint32_t kMinSegmentFrames = 1024;
constexpr std::uint32_t kMaxSegmentFrames = 262'144;

// Samples of a segment and of a packet at the higher rate, so that rates far apart and many
// channels do not make a frame cost seconds. The same bound holds for the terms of a ratio, which
// are the least that a segment can have.
constexpr std::uint32_t kMaxSegmentSamples = 1U << 23;
constexpr std::uint32_t kMaxPacketSamples = 1U << 20;

constexpr std::uint32_t kMinPacketFrames = 16;
constexpr std::uint32_t kMaxPacketFrames = 4096;

constexpr std::uint64_t kNowhere = std::numeric_limits<std::uint64_t>::max();

// As many whole periods of the ratio as have at least `frames` at the lower rate.
RateRatio periods(RateRatio ratio, std::uint32_t frames) {
    const std::uint32_t period = std::min(ratio.in, ratio.out);
    const std::uint32_t count = (frames + period - 1) / period;
    return {count * ratio.in, count * ratio.out};
}

RateRatio segmentOf(RateRatio ratio, std::uint32_t channels) {
    const std::uint32_t factor = std::max(ratio.in / ratio.out, ratio.out / ratio.in);
    return periods(ratio, std::clamp(kMaxSegmentSamples / (channels * factor), kMinSegmentFrames,
                                     kMaxSegmentFrames));
}

std::uint32_t packetFramesOf(RateRatio ratio, std::uint32_t channels) {
    const std::uint32_t factor = std::max(ratio.in / ratio.out, 1U);
    return std::clamp(kMaxPacketSamples / (channels * factor), kMinPacketFrames, kMaxPacketFrames);
}

// libsoxr does not survive memory running out while it starts a conversion: what it is about to
// take is tried first.
bool hasMemoryToStart(std::uint32_t channels) {
    constexpr std::size_t kBytesPerChannel = 512 * 1024;
    const std::unique_ptr<std::byte[]> trial(new (std::nothrow)
                                                 std::byte[kBytesPerChannel * (channels + 1)]);
    return trial != nullptr;
}

// The first resampler makes tables for all, which libsoxr does without a lock: two threads that
// make their first at once could get wrong samples.
constinit std::mutex makingResampler;

// Precision of 28 bits and linear phase. Ratios of large terms want the precise clock: without it
// they drift by some frames an hour. Null where memory runs out.
soxr_t makeResampler(RateRatio ratio, std::uint32_t channels) {
    if (!hasMemoryToStart(channels)) return nullptr;
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, SOXR_HI_PREC_CLOCK);
    const std::lock_guard lock(makingResampler);
    return soxr_create(ratio.in, ratio.out, channels, nullptr, nullptr, &quality, nullptr);
}

}  // namespace

RateConverter::RateConverter(FrameReader& source, std::uint32_t channels, double inRate,
                             double outRate)
    : source_(source, channels),
      channels_(channels),
      ratio_(rateRatio(inRate, outRate, kMaxSegmentSamples / std::max(channels, 2U))),
      segment_(segmentOf(ratio_, channels)),
      lead_(periods(ratio_, kLeadFrames)),
      packetFrames_(packetFramesOf(ratio_, channels)),
      resampler_(makeResampler(ratio_, channels)),
      packet_(std::size_t{packetFrames_} * channels),
      skipped_(std::size_t{kMaxPacketFrames} * channels) {
    if (!resampler_) throw std::bad_alloc();
}

const float* RateConverter::decode(std::uint64_t packet) {
    if (!goTo(packet * packetFrames_)) return nullptr;
    std::size_t done = 0;
    while (done < packetFrames_) {
        if (position_ == segmentEnd_ && !startSegment(position_ / segment_.out)) return nullptr;
        const auto frames = static_cast<std::size_t>(
            std::min<std::uint64_t>(packetFrames_ - done, segmentEnd_ - position_));
        if (!resample(packet_.data() + done * channels_, frames)) return nullptr;
        done += frames;
    }
    return packet_.data();
}

bool RateConverter::goTo(std::uint64_t frame) {
    if (frame == position_) return true;
    const bool isAhead = position_ < frame && frame < segmentEnd_;
    if (!isAhead && !startSegment(frame / segment_.out)) return false;
    return skip(frame - position_);
}

bool RateConverter::resetResampler() {
    if (!resampler_)
        resampler_.reset(makeResampler(ratio_, channels_));
    else if (!hasMemoryToStart(channels_) || (!isFresh_ && soxr_clear(resampler_.get()) != nullptr))
        resampler_.reset();
    isFresh_ = resampler_ != nullptr;
    return isFresh_;
}

bool RateConverter::startSegment(std::uint64_t segment) {
    const RateRatio lead = segment == 0 ? RateRatio{0, 0} : lead_;
    if (!resetResampler()) return giveUp();
    source_.goTo(segment * segment_.in - lead.in);
    position_ = segment * segment_.out - lead.out;
    segmentEnd_ = (segment + 1) * segment_.out;
    source_.keepFrom((segment + 1) * segment_.in - lead_.in);
    return skip(lead.out);
}

bool RateConverter::skip(std::uint64_t frames) {
    while (frames > 0) {
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(frames, kMaxPacketFrames));
        if (!resample(skipped_.data(), count)) return false;
        frames -= count;
    }
    return true;
}

bool RateConverter::resample(float* samples, std::size_t frames) {
    while (frames > 0) {
        std::size_t taken = 0;
        std::size_t given = 0;
        if (!source_.fill()) return giveUp();
        const auto input = source_.samples();
        isFresh_ = false;
        const soxr_error_t error =
            soxr_process(resampler_.get(), input.data(), input.size() / channels_, &taken, samples,
                         frames, &given);
        if (error != nullptr || (taken == 0 && given == 0)) {
            resampler_.reset();
            return giveUp();
        }
        source_.take(taken);
        samples += given * channels_;
        frames -= given;
        position_ += given;
    }
    return true;
}

// The place is lost: the next packet starts a segment.
bool RateConverter::giveUp() {
    position_ = kNowhere;
    segmentEnd_ = 0;
    return false;
}

}  // namespace atdp::services
