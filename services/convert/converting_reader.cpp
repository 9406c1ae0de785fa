#include "services/convert/converting_reader.h"

#include <algorithm>
#include <utility>

#include "services/codecs/packet_reader.h"
#include "services/convert/channel_mixer.h"
#include "services/convert/rate_converter.h"
#include "services/limits.h"

namespace atdp::services {
namespace {

bool isPackedNativeFloat(const AudioStreamBasicDescription& format) {
    return format.mFormatID == kAudioFormatLinearPCM &&
           format.mFormatFlags == (kAudioFormatFlagIsFloat | kAudioFormatFlagIsPacked) &&
           format.mBitsPerChannel == 32 && format.mChannelsPerFrame >= 1 &&
           format.mChannelsPerFrame <= kMaxChannels;
}

// Hosts know rates in single precision.
bool isSameRate(double rate, double fileRate) {
    return static_cast<float>(rate) == static_cast<float>(fileRate);
}

// Written so that a rate that is not a number fails.
bool isConvertible(double rate, double fileRate) {
    return rate >= kMinClientRate && rate <= kMaxClientRate && rate <= fileRate * kMaxRateRatio &&
           fileRate <= rate * kMaxRateRatio;
}

// How many frames at one rate last as long as so many at another, to the nearest; halves round up.
std::uint64_t scaledFrames(std::uint64_t frames, double fromRate, double toRate) {
    if (isSameRate(fromRate, toRate)) return frames;
    const long double scaled = static_cast<long double>(frames) * toRate / fromRate;
    return static_cast<std::uint64_t>(std::min(scaled + 0.5L, 0x1p63L));
}

std::unique_ptr<FrameReader> makeMixer(FrameReader& source, std::uint32_t channelMask,
                                       std::uint32_t in, std::uint32_t out) {
    return std::make_unique<ChannelMixer>(source, in, out, channelGains(channelMask, in, out));
}

std::unique_ptr<FrameReader> makeRateReader(FrameReader& source, std::uint32_t channels,
                                            double inRate, double outRate, std::uint64_t frames) {
    auto converter = std::make_unique<RateConverter>(source, channels, inRate, outRate);
    const PacketLayout layout{
        .channels = channels, .framesPerPacket = converter->framesPerPacket(), .frames = frames};
    return std::make_unique<PacketReader>(std::move(converter), layout);
}

}  // namespace

OSStatus ConvertingReader::setClientFormat(const AudioStreamBasicDescription& format) {
    const double fileRate = file_->description().format.mSampleRate;
    const double rate = format.mSampleRate;
    if (!isPackedNativeFloat(format) ||
        !(isSameRate(rate, fileRate) || isConvertible(rate, fileRate)))
        return kStatusUnsupportedFormat;
    auto stages = makeStages(rate, format.mChannelsPerFrame);
    if (!stages) return statusFor(stages.failure());
    if (stages_.last != nullptr)
        position_ = scaledFrames(position_, clientFormat_.mSampleRate, rate);
    stages_ = std::move(*stages);
    clientFormat_ = format;
    stages_.last->seek(position_);
    return noErr;
}

// The rate is converted on as few channels as there are on either side.
Result<ConvertingReader::Stages> ConvertingReader::makeStages(double rate, std::uint32_t channels) {
    const SoundDescription& sound = file_->description();
    const double fileRate = sound.format.mSampleRate;
    const std::uint32_t fileChannels = sound.format.mChannelsPerFrame;
    if (!fileFrames_) {
        auto reader = file_->makeReader();
        if (!reader) return reader.failure();
        fileFrames_ = std::move(*reader);
    }
    Stages stages;
    stages.last = fileFrames_.get();
    if (channels < fileChannels) {
        stages.fewerChannels = makeMixer(*stages.last, sound.channelMask, fileChannels, channels);
        stages.last = stages.fewerChannels.get();
    }
    if (!isSameRate(rate, fileRate)) {
        const auto frames = file_->lengthInFrames();
        if (!frames) return frames.failure();
        stages.rate = makeRateReader(*stages.last, std::min(channels, fileChannels), fileRate, rate,
                                     scaledFrames(*frames, fileRate, rate));
        stages.last = stages.rate.get();
    }
    if (channels > fileChannels) {
        stages.moreChannels = makeMixer(*stages.last, sound.channelMask, fileChannels, channels);
        stages.last = stages.moreChannels.get();
    }
    return stages;
}

OSStatus ConvertingReader::seek(std::int64_t frame) {
    if (frame < 0) return kStatusInvalidSeek;
    if (stages_.last == nullptr) return kStatusUnsupportedFormat;
    position_ = static_cast<std::uint64_t>(frame);
    stages_.last->seek(position_);
    return noErr;
}

}  // namespace atdp::services
