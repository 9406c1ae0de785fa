#pragma once

#include <cstdint>

#include "platform/core_audio_types.h"

namespace atdp::test {

// What a client asks a converting reader for: packed native 32-bit floats.
inline AudioStreamBasicDescription clientFormat(double rate, std::uint32_t channels) {
    AudioStreamBasicDescription format{};
    format.mSampleRate = rate;
    format.mFormatID = kAudioFormatLinearPCM;
    format.mFormatFlags = kAudioFormatFlagIsFloat | kAudioFormatFlagIsPacked;
    format.mChannelsPerFrame = channels;
    format.mBitsPerChannel = 32;
    return format;
}

}  // namespace atdp::test
