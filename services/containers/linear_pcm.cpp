#include "services/containers/linear_pcm.h"

#include "services/limits.h"

namespace atdp::services {
namespace {

std::uint32_t formatFlags(const LinearPcm& pcm) {
    std::uint32_t flags = pcm.bitsPerChannel == 8 * pcm.bytesPerSample
                              ? kAudioFormatFlagIsPacked
                              : kAudioFormatFlagIsAlignedHigh;
    if (pcm.isFloat)
        flags |= kAudioFormatFlagIsFloat;
    else if (pcm.isSigned)
        flags |= kAudioFormatFlagIsSignedInteger;
    if (pcm.isBigEndian && pcm.bytesPerSample > 1) flags |= kAudioFormatFlagIsBigEndian;
    return flags;
}

}  // namespace

// Written so that a rate that is not a number fails.
bool isPlausible(double rate, std::uint32_t channels) {
    return rate >= kMinFileRate && rate <= kMaxFileRate && channels >= 1 &&
           channels <= kMaxChannels;
}

Result<SoundDescription> describeLinearPcm(std::uint32_t fileType, const LinearPcm& pcm,
                                           ByteRange data) {
    if (!isPlausible(pcm.rate, pcm.channels)) return Failure::kDamaged;
    if (pcm.bitsPerChannel == 0 || pcm.bytesPerSample == 0 || pcm.bytesPerSample > 8 ||
        pcm.bitsPerChannel > 8 * pcm.bytesPerSample)
        return Failure::kDamaged;

    const std::uint32_t bytesPerFrame = pcm.bytesPerSample * pcm.channels;
    SoundDescription sound;
    sound.fileType = fileType;
    sound.frames = data.bytes / bytesPerFrame;
    sound.data = {data.offset, sound.frames * bytesPerFrame};
    sound.format = {.mSampleRate = pcm.rate,
                    .mFormatID = kAudioFormatLinearPCM,
                    .mFormatFlags = formatFlags(pcm),
                    .mBytesPerPacket = bytesPerFrame,
                    .mFramesPerPacket = 1,
                    .mBytesPerFrame = bytesPerFrame,
                    .mChannelsPerFrame = pcm.channels,
                    .mBitsPerChannel = pcm.bitsPerChannel,
                    .mReserved = 0};
    return sound;
}

Result<SoundDescription> describeUndecoded(std::uint32_t fileType, std::uint32_t formatID,
                                           double rate, std::uint32_t channels, ByteRange data) {
    if (!isPlausible(rate, channels)) return Failure::kDamaged;
    SoundDescription sound;
    sound.fileType = fileType;
    sound.data = data;
    sound.format.mSampleRate = rate;
    sound.format.mFormatID = formatID;
    sound.format.mChannelsPerFrame = channels;
    return sound;
}

}  // namespace atdp::services
