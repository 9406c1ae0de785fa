// What a file in memory is described as.
#pragma once

#include <cctype>
#include <string>

#include "services/containers/recognition.h"
#include "tests/support/memory_source.h"

namespace atdp::test {

inline services::Result<services::SoundDescription> describe(const std::string& bytes) {
    MemorySource source(bytes);
    return services::describeSound(source);
}

// A code as its four characters, or as a number where they are none.
inline std::string codeText(std::uint32_t code) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(code >> shift & 0xFF);
    for (const char character : text)
        if (std::isprint(static_cast<unsigned char>(character)) == 0) return std::to_string(code);
    return text;
}

// What it is described as in one line: file type, format and its flags; bits, bytes a frame, frames
// a packet; channels, Hz, frames.
inline std::string descriptionOf(const std::string& bytes) {
    const auto sound = describe(bytes);
    if (!sound) return "refused";
    const AudioStreamBasicDescription& format = sound->format;
    std::string text = codeText(sound->fileType) + ' ' + codeText(format.mFormatID);
    for (const std::uint64_t number :
         {std::uint64_t{format.mFormatFlags}, std::uint64_t{format.mBitsPerChannel},
          std::uint64_t{format.mBytesPerFrame}, std::uint64_t{format.mFramesPerPacket},
          std::uint64_t{format.mChannelsPerFrame}, static_cast<std::uint64_t>(format.mSampleRate),
          sound->frames})
        text += ' ' + std::to_string(number);
    return text;
}

// Why it is not; kNotFound where it is.
inline services::Failure refusal(const std::string& bytes) {
    const auto sound = describe(bytes);
    return sound ? services::Failure::kNotFound : sound.failure();
}

}  // namespace atdp::test
