#include "host/edge_envelope.h"

#include <algorithm>
#include <cmath>

namespace atdp::host {
namespace {

constexpr double kStepsASecond = 600;  // at most; a pixel or less each

std::uint64_t wholeAtLeast1(double value) {
    return static_cast<std::uint64_t>(std::max(std::ceil(value), 1.0));
}

void widen(EnvelopeStep& step, std::span<const float> frame) {
    for (std::size_t channel = 0; channel < step.channels.size(); ++channel) {
        SampleRange& range = step.channels[channel];
        range.lowest = std::fmin(range.lowest, frame[channel]);  // passes over what is no number
        range.highest = std::fmax(range.highest, frame[channel]);
    }
}

EnvelopeStep newStep(std::uint64_t firstFrame, std::span<const float> frame) {
    EnvelopeStep step{firstFrame, {}};
    for (const float sample : frame) {
        const float value = std::isnan(sample) ? 0 : sample;
        step.channels.push_back({value, value});
    }
    return step;
}

}  // namespace

EdgeEnvelope::EdgeEnvelope(float rate, std::uint32_t channels)
    : channels_(channels),
      stepFrames_(wholeAtLeast1(double{rate} / kStepsASecond)),
      secondSteps_(wholeAtLeast1(double{rate} / static_cast<double>(stepFrames_))) {}

void EdgeEnvelope::add(std::span<const float> samples, std::uint32_t channels) {
    for (; !samples.empty(); samples = samples.subspan(channels)) {
        addFrame(samples.first(channels_));
    }
}

void EdgeEnvelope::addFrame(std::span<const float> frame) {
    const std::uint64_t step = frames_ / stepFrames_;
    if (frames_ % stepFrames_ == 0) {
        last_.push_back(newStep(frames_, frame));
        if (last_.size() > secondSteps_ + 1) last_.pop_front();  // the first one is in it partly
        if (step < secondSteps_) first_.push_back(last_.back());
    }
    widen(last_.back(), frame);
    if (step < secondSteps_) widen(first_.back(), frame);
    ++frames_;
}

}  // namespace atdp::host
