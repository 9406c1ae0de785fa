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

    // Frames of linear PCM from the start to the end of data. Compressed sound has to be walked
    // over to tell.
    std::uint64_t frames = 0;

    ByteRange id3Tag;  // the ID3v2 tag at the start of an MPEG file; empty where there is none
};

}  // namespace atdp::services
