// What a container says of the sound in a file.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/core_audio_types.h"
#include "services/io/byte_source.h"

namespace atdp::services {

// Codes of what has none in its file: the summary list of Wave64, the annotation of AU.
inline constexpr std::uint32_t kWave64Summary = fourCharCode("w64s");
inline constexpr std::uint32_t kAuAnnotation = fourCharCode(".snd");

// A chunk that says something of the sound: 'LIST' and 'id3 ' of WAVE and Wave64, the text chunks
// of AIFF, 'info' of CAF. Only the first few ID3 tags of a file are among them, since each costs as
// much as a whole tag.
struct TagChunk {
    std::uint32_t identifier;
    ByteRange body;
};

// Whether chunks of that name hold an ID3 tag; writers disagree about the case.
constexpr bool isId3(std::uint32_t identifier) {
    return identifier == fourCharCode("id3 ") || identifier == fourCharCode("ID3 ");
}

struct SoundDescription {
    std::uint32_t fileType = 0;            // kAudioFile...Type
    AudioStreamBasicDescription format{};  // the file's own format
    std::uint32_t channelMask = 0;         // speakers (bits of WAVEFORMATEXTENSIBLE); 0: not told
    ByteRange data;                        // where the sound's bytes are, within the file

    // Frames of linear PCM from the start to the end of data. Compressed sound has to be walked
    // over to tell.
    std::uint64_t frames = 0;

    std::vector<TagChunk> tagChunks;  // in file order

    ByteRange id3Tag;  // the ID3v2 tag at the start of an MPEG file; empty where there is none
};

}  // namespace atdp::services
