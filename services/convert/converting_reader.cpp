#include "services/convert/converting_reader.h"

#include <utility>

namespace atdp::services {
namespace {

bool isPackedNativeFloat(const AudioStreamBasicDescription& format) {
    return format.mFormatID == kAudioFormatLinearPCM &&
           format.mFormatFlags == (kAudioFormatFlagIsFloat | kAudioFormatFlagIsPacked) &&
           format.mBitsPerChannel == 32;
}

// Hosts know rates in single precision.
bool isSameRate(double rate, double fileRate) {
    return static_cast<float>(rate) == static_cast<float>(fileRate);
}

}  // namespace

OSStatus ConvertingReader::setClientFormat(const AudioStreamBasicDescription& format) {
    const AudioStreamBasicDescription& fileFormat = file_->description().format;
    if (!isPackedNativeFloat(format) || !isSameRate(format.mSampleRate, fileFormat.mSampleRate) ||
        format.mChannelsPerFrame != fileFormat.mChannelsPerFrame)
        return kStatusUnsupportedFormat;
    if (!frames_) {
        auto reader = file_->makeReader();
        if (!reader) return statusFor(reader.failure());
        frames_ = std::move(*reader);
    }
    clientFormat_ = format;
    return noErr;
}

OSStatus ConvertingReader::seek(std::int64_t frame) {
    if (frame < 0) return kStatusInvalidSeek;
    if (!frames_) return kStatusUnsupportedFormat;
    frames_->seek(static_cast<std::uint64_t>(frame));
    return noErr;
}

}  // namespace atdp::services
