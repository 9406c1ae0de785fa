// A file in memory, opened through the platform's services.
#pragma once

#include <span>
#include <string>

#include "fuzz/memory_file.h"
#include "platform/audio_file.h"

namespace atdp::fuzz {

class OpenAudioFile {
 public:
    explicit OpenAudioFile(std::span<const std::uint8_t> bytes) : memory_(bytes) {
        const std::string path = memory_.path();
        const ScopedCFURL url(CFURLCreateFromFileSystemRepresentation(
            kCFAllocatorDefault, reinterpret_cast<const std::uint8_t*>(path.data()),
            static_cast<long>(path.size()), false));
        AudioFileOpenURL(url.get(), kAudioFileReadPermission, 0, &file_);
    }
    OpenAudioFile(const OpenAudioFile&) = delete;
    OpenAudioFile& operator=(const OpenAudioFile&) = delete;
    ~OpenAudioFile() {
        if (file_ != nullptr) require(AudioFileClose(file_) == noErr, "a file can be closed");
    }

    const MemoryFile& bytes() const { return memory_; }
    AudioFileID get() const { return file_; }  // null where nobody recognises it

 private:
    MemoryFile memory_;
    AudioFileID file_ = nullptr;
};

}  // namespace atdp::fuzz
