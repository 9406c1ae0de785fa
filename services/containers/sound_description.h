// What a container says of the sound in a file.
#pragma once

#include <cstdint>

#include "platform/core_audio_types.h"
#include "services/io/byte_source.h"

namespace atdp::services {

struct SoundDescription {
    std::uint32_t fileType = 0;            // kAudioFile...Type
    AudioStreamBasicDescription format{};  // the file's own format
    ByteRange data;                        // where the sound's bytes are, within the file

    // Frames from the start to the end of data; 0 for formats that are not decoded.
    std::uint64_t frames = 0;
};

}  // namespace atdp::services
