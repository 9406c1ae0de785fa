#pragma once

#include <memory>

#include "services/codecs/frame_reader.h"
#include "services/sound_file.h"

namespace atdp::services {

// Frames of a sound file in the format that its client asks for.
class ConvertingReader {
 public:
    explicit ConvertingReader(std::shared_ptr<SoundFile> file) : file_(std::move(file)) {}

    SoundFile& file() const { return *file_; }

    // The format in force; all zeros until a client has set one.
    const AudioStreamBasicDescription& clientFormat() const { return clientFormat_; }

    // Accepts packed native 32-bit float linear PCM at the file's rate and channel count, and
    // answers noErr; any other format answers a status and leaves the one in force. The position
    // is kept.
    OSStatus setClientFormat(const AudioStreamBasicDescription& format);

    // As FrameReader: `samples` has room for `*frames` frames of the client format. False too where
    // no client format has been set.
    bool read(float* samples, std::uint32_t* frames) {
        return frames_ && frames_->read(samples, frames);
    }
    OSStatus seek(std::int64_t frame);

 private:
    std::shared_ptr<SoundFile> file_;
    std::unique_ptr<FrameReader> frames_;  // made when the first client format is set
    AudioStreamBasicDescription clientFormat_{};
};

}  // namespace atdp::services
