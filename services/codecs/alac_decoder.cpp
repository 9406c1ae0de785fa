#include "services/codecs/alac_decoder.h"

#include <array>

#include "services/codecs/alac_output.h"
#include "services/limits.h"

namespace atdp::services {
namespace {

enum Element : unsigned {
    kSingleChannel = 0,
    kChannelPair = 1,
    kLowFrequency = 3,
    kData = 4,
    kFill = 6,
};

// Where the channels of a packet belong in the order of WAVE. They come center first, then pairs
// from front to back, then what is alone in the back and the low frequencies.
constexpr std::array<std::array<std::uint8_t, kMaxAlacChannels>, kMaxAlacChannels> kPlaces{{
    {0},                       // C
    {0, 1},                    // L R
    {2, 0, 1},                 // C L R
    {2, 0, 1, 3},              // C L R Cs
    {2, 0, 1, 3, 4},           // C L R Ls Rs
    {2, 0, 1, 4, 5, 3},        // C L R Ls Rs LFE
    {2, 0, 1, 4, 5, 6, 3},     // C L R Ls Rs Cs LFE
    {2, 6, 7, 0, 1, 4, 5, 3},  // C Lc Rc L R Ls Rs LFE
}};

void skipData(BitReader& bits) {
    bits.read(4);  // instance
    const bool isAligned = bits.read(1) != 0;
    std::uint32_t bytes = bits.read(8);
    if (bytes == 255) bytes += bits.read(8);
    if (isAligned) bits.skip((0 - bits.position()) % 8);
    bits.skip(std::uint64_t{8} * bytes);
}

void skipFill(BitReader& bits) {
    std::uint32_t bytes = bits.read(4);
    if (bytes == 15) bytes += bits.read(8) - 1;
    bits.skip(std::uint64_t{8} * bytes);
}

// What stands in front of the samples of one or two channels.
struct ElementHead {
    bool isReservedClear = false;
    unsigned lowBytes = 0;  // of a sample, stored apart
    bool isPlain = false;
    std::uint32_t frames = 0;
};

ElementHead readElementHead(BitReader& bits, std::uint32_t frameLength) {
    ElementHead head;
    bits.read(4);  // instance
    head.isReservedClear = bits.read(12) == 0;
    const bool hasFrames = bits.read(1) != 0;
    head.lowBytes = bits.read(2);
    head.isPlain = bits.read(1) != 0;
    head.frames = hasFrames ? bits.read(32) : frameLength;
    return head;
}

struct Channel {
    AlacPredictor predictor;
    std::uint32_t meanFactor = 0;  // in quarters of the configuration's
};

Channel readChannel(BitReader& bits) {
    Channel channel;
    channel.predictor.hasSumPass = bits.read(4) != 0;
    channel.predictor.shift = bits.read(4);
    channel.meanFactor = bits.read(3);
    channel.predictor.order = bits.read(5);
    for (unsigned k = 0; k < channel.predictor.order; ++k)
        channel.predictor.taps[k] = static_cast<std::int16_t>(bits.read(16));
    return channel;
}

}  // namespace

std::uint32_t alacFramesIn(Bytes start, const AlacConfig& config) {
    BitReader bits(start);
    const std::uint32_t element = bits.read(3);
    const bool hasSamples =
        element == kSingleChannel || element == kChannelPair || element == kLowFrequency;
    const std::uint32_t frames = readElementHead(bits, config.frameLength).frames;
    const bool isKnown = hasSamples && !bits.isPastEnd();
    return isKnown && frames > 0 && frames < config.frameLength ? frames : config.frameLength;
}

AlacDecoder::AlacDecoder(const AlacConfig& config, const AlacKernels& kernels)
    : config_(config), kernels_(kernels), pairs_(std::size_t{2} * config.frameLength) {}

std::uint32_t AlacDecoder::decode(Bytes packet, float* samples) {
    BitReader bits(packet);
    frames_ = 0;
    channelsDone_ = 0;
    while (channelsDone_ < config_.channels) {
        const std::uint32_t element = bits.read(3);
        if (bits.isPastEnd()) return 0;
        if (element == kSingleChannel || element == kLowFrequency) {
            if (!decodeElement(bits, packet, 1, samples)) return 0;
        } else if (element == kChannelPair) {
            if (!decodeElement(bits, packet, 2, samples)) return 0;
        } else if (element == kData) {
            skipData(bits);
        } else if (element == kFill) {
            skipFill(bits);
        } else {
            return 0;  // the end comes too early, or an element that nothing makes
        }
    }
    return frames_;
}

bool AlacDecoder::decodeElement(BitReader& bits, Bytes packet, unsigned channels, float* samples) {
    if (channels > config_.channels - channelsDone_) return false;
    const ElementHead head = readElementHead(bits, config_.frameLength);
    if (!head.isReservedClear || head.frames == 0 || head.frames > config_.frameLength)
        return false;
    if (channelsDone_ > 0 && head.frames != frames_) return false;
    frames_ = head.frames;
    AlacOutput output{.channels = channels, .bitDepth = config_.bitDepth};
    output.lowBytes = head.isPlain ? 0 : head.lowBytes;
    if (!(head.isPlain ? readPlain(bits, channels) : readPredicted(bits, channels, output)))
        return false;
    writeAlacSamples(output, packet, pairs_.data(), frames_, samples, config_.channels,
                     &kPlaces[config_.channels - 1][channelsDone_]);
    channelsDone_ += channels;
    return true;
}

bool AlacDecoder::readPlain(BitReader& bits, unsigned channels) {
    const std::size_t step = channels == 1 ? 2 : 1;
    for (std::size_t i = 0; i < std::size_t{frames_} * channels; ++i)
        pairs_[step * i] = static_cast<std::int32_t>(bits.read(config_.bitDepth));
    return !bits.isPastEnd();
}

bool AlacDecoder::readPredicted(BitReader& bits, unsigned channels, AlacOutput& output) {
    const unsigned lowBits = 8 * output.lowBytes;
    if (output.lowBytes > 2 || lowBits >= config_.bitDepth) return false;
    // The difference of two channels needs one bit more than they.
    const unsigned width = config_.bitDepth - lowBits + channels - 1;
    output.mixShift = bits.read(8);
    output.mixWeight = static_cast<std::int32_t>(bits.read(8) << 24) >> 24;  // has a sign
    if (width > 32 || output.mixShift > 31) return false;

    std::array<AlacPredictor, 2> predictors;
    std::array<AlacCoding, 2> codings;
    for (unsigned c = 0; c < channels; ++c) {
        const Channel channel = readChannel(bits);
        predictors[c] = channel.predictor;
        codings[c] = {config_.initialMean, config_.meanFactor * channel.meanFactor / 4,
                      config_.maxCodeBits, width};
    }
    output.lowBytesBit = bits.position();
    bits.skip(std::uint64_t{lowBits} * channels * frames_);
    for (unsigned c = 0; c < channels; ++c)
        if (!kernels_.readResiduals(bits, codings[c], pairs_.data() + c, frames_)) return false;
    kernels_.predict(pairs_.data(), frames_, channels, predictors, width);
    return true;
}

}  // namespace atdp::services
