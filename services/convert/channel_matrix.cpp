#include "services/convert/channel_matrix.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <initializer_list>
#include <optional>

namespace atdp::services {
namespace {

// Speakers, by their bit in a channel mask.
enum Speaker : std::uint8_t {
    kFrontLeft,
    kFrontRight,
    kFrontCenter,
    kLowFrequency,
    kBackLeft,
    kBackRight,
    kFrontLeftOfCenter,
    kFrontRightOfCenter,
    kBackCenter,
    kSideLeft,
    kSideRight,
    kTopCenter,
    kTopFrontLeft,
    kTopFrontCenter,
    kTopFrontRight,
    kTopBackLeft,
    kTopBackCenter,
    kTopBackRight,
    kSpeakers,
};

constexpr std::uint32_t bits(std::initializer_list<Speaker> speakers) {
    std::uint32_t mask = 0;
    for (const Speaker speaker : speakers) mask |= 1U << speaker;
    return mask;
}

constexpr std::uint32_t kStereo = bits({kFrontLeft, kFrontRight});
constexpr std::uint32_t kFront = kStereo | bits({kFrontCenter});
constexpr std::uint32_t kBacks = bits({kBackLeft, kBackRight});
constexpr std::uint32_t kSides = bits({kSideLeft, kSideRight});
constexpr std::uint32_t kLow = bits({kLowFrequency});

// The usual layout of 1 to 8 channels.
constexpr std::array<std::uint32_t, 8> kUsualMasks = {
    bits({kFrontCenter}),
    kStereo,
    kFront,
    kStereo | kBacks,
    kFront | kBacks,
    kFront | kLow | kBacks,
    kFront | kLow | kSides | bits({kBackCenter}),
    kFront | kLow | kBacks | kSides,
};

std::uint32_t usualMask(std::uint32_t channels) {
    return channels <= kUsualMasks.size() ? kUsualMasks[channels - 1] : 0;
}

// The speaker of each channel; none for channels that the mask has no bit for.
std::vector<std::optional<Speaker>> speakers(std::uint32_t mask, std::uint32_t channels) {
    std::vector<std::optional<Speaker>> all(channels);
    std::uint32_t channel = 0;
    for (int bit = 0; bit < kSpeakers && channel < channels; ++bit)
        if ((mask >> bit & 1) != 0) all[channel++] = static_cast<Speaker>(bit);
    return all;
}

// Where the sound of a speaker goes that is not there: to one or two others, at a gain.
struct Share {
    std::uint32_t mask;
    float gain;
};

constexpr float kMinus3dB = 0.70710678F;
constexpr float kMinus6dB = 0.5F;

// The ways to share out a speaker's sound, best first, after ITU-R BS.775 where it tells.
std::array<Share, 3> shares(Speaker speaker) {
    switch (speaker) {
        case kFrontCenter:
            return {{{kStereo, kMinus3dB}}};
        case kBackLeft:
            return {{{bits({kSideLeft}), kMinus3dB}, {bits({kFrontLeft}), kMinus3dB}}};
        case kBackRight:
            return {{{bits({kSideRight}), kMinus3dB}, {bits({kFrontRight}), kMinus3dB}}};
        case kSideLeft:
            return {{{bits({kBackLeft}), kMinus3dB}, {bits({kFrontLeft}), kMinus3dB}}};
        case kSideRight:
            return {{{bits({kBackRight}), kMinus3dB}, {bits({kFrontRight}), kMinus3dB}}};
        case kBackCenter:
        case kTopBackCenter:
            return {{{kBacks, kMinus3dB}, {kSides, kMinus3dB}, {kStereo, kMinus6dB}}};
        case kFrontLeftOfCenter:
        case kTopFrontLeft:
            return {{{bits({kFrontLeft}), kMinus3dB}}};
        case kFrontRightOfCenter:
        case kTopFrontRight:
            return {{{bits({kFrontRight}), kMinus3dB}}};
        case kTopBackLeft:
            return {{{bits({kBackLeft}), kMinus3dB}, {bits({kFrontLeft}), kMinus3dB}}};
        case kTopBackRight:
            return {{{bits({kBackRight}), kMinus3dB}, {bits({kFrontRight}), kMinus3dB}}};
        case kTopFrontCenter:
        case kTopCenter:
            return {{{kStereo, kMinus6dB}}};
        default:
            return {};  // low frequencies are left out; the front pair is always there
    }
}

// Gains in rows, one for each channel that goes out.
class Matrix {
 public:
    Matrix(std::uint32_t in, std::uint32_t out) : in_(in), gains_(std::size_t{in} * out) {}

    float& at(std::uint32_t out, std::uint32_t in) { return gains_[std::size_t{out} * in_ + in]; }

    // Scales all so that full scale on every channel stays full scale at most.
    void preventClipping() {
        float most = 1;
        for (auto row = gains_.begin(); row != gains_.end(); row += in_) {
            float sum = 0;
            for (std::uint32_t i = 0; i < in_; ++i) sum += row[i];
            most = std::max(most, sum);
        }
        for (float& gain : gains_) gain /= most;
    }

    std::vector<ChannelGain> terms() const {
        std::vector<ChannelGain> terms;
        for (std::size_t i = 0; i < gains_.size(); ++i)
            if (gains_[i] != 0)
                terms.push_back({static_cast<std::uint32_t>(i % in_),
                                 static_cast<std::uint32_t>(i / in_), gains_[i]});
        return terms;
    }

 private:
    std::uint32_t in_;
    std::vector<float> gains_;
};

// Which channel of a layout is a speaker's.
std::uint32_t channelOf(std::uint32_t mask, int speaker) {
    return static_cast<std::uint32_t>(std::popcount(mask & ((1U << speaker) - 1)));
}

void addSpeaker(Matrix& matrix, std::uint32_t in, Speaker speaker, std::uint32_t layout) {
    Share share{1U << speaker, 1};
    if ((layout & share.mask) == 0) {
        const auto ways = shares(speaker);
        const auto isThere = [layout](const Share& way) { return (layout & way.mask) == way.mask; };
        share = *std::find_if(ways.begin(), ways.end(), isThere);
    }
    for (int bit = 0; bit < kSpeakers; ++bit)
        if ((share.mask >> bit & 1) != 0) matrix.at(channelOf(layout, bit), in) += share.gain;
}

Matrix downmix(std::uint32_t channelMask, std::uint32_t in, std::uint32_t out) {
    const auto from = speakers(channelMask, in);
    const std::uint32_t layout = usualMask(out);
    Matrix matrix(in, out);
    for (std::uint32_t channel = 0; channel < in; ++channel) {
        if (from[channel] && layout != 0)
            addSpeaker(matrix, channel, *from[channel], layout);
        else
            matrix.at(channel % out, channel) = 1;  // nobody knows where it belongs
    }
    matrix.preventClipping();
    return matrix;
}

Matrix meanOfStereo(std::uint32_t channelMask, std::uint32_t in) {
    Matrix stereo = downmix(channelMask, in, 2);
    Matrix mono(in, 1);
    for (std::uint32_t channel = 0; channel < in; ++channel)
        mono.at(0, channel) = (stereo.at(0, channel) + stereo.at(1, channel)) / 2;
    return mono;
}

}  // namespace

std::vector<ChannelGain> channelGains(std::uint32_t channelMask, std::uint32_t in,
                                      std::uint32_t out) {
    if (in > out) {
        if (channelMask == 0 || in == 2) channelMask = usualMask(in);
        return (out == 1 ? meanOfStereo(channelMask, in) : downmix(channelMask, in, out)).terms();
    }
    std::vector<ChannelGain> gains;
    for (std::uint32_t channel = 0; channel < (in == 1 ? out : in); ++channel)
        gains.push_back({in == 1 ? 0 : channel, channel, 1});
    return gains;
}

}  // namespace atdp::services
