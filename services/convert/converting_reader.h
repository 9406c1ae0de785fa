#pragma once

#include <cstdint>
#include <memory>
#include <utility>

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

    // Accepts packed native 32-bit float linear PCM of 1 to kMaxChannels channels, at the file's
    // rate or one within the bounds of limits.h, and answers noErr; any other format answers a
    // status and leaves the one in force. The position is kept: the frame at the same time is next,
    // or the nearest to it. Throws std::bad_alloc, and then leaves all as it was.
    OSStatus setClientFormat(const AudioStreamBasicDescription& format);

    // As FrameReader: `samples` has room for `*frames` frames of the client format. False too where
    // no client format has been set.
    bool read(float* samples, std::uint32_t* frames) {
        if (stages_.last == nullptr || !stages_.last->read(samples, frames)) return false;
        position_ += *frames;
        return true;
    }
    OSStatus seek(std::int64_t frame);

 private:
    // What the file's frames go through, each stage reading the one before it.
    struct Stages {
        std::unique_ptr<FrameReader> fewerChannels;
        std::unique_ptr<FrameReader> rate;
        std::unique_ptr<FrameReader> moreChannels;
        FrameReader* last = nullptr;
    };

    Result<Stages> makeStages(double rate, std::uint32_t channels);

    std::shared_ptr<SoundFile> file_;
    std::unique_ptr<FrameReader> fileFrames_;  // made when the first client format is set
    Stages stages_;
    AudioStreamBasicDescription clientFormat_{};
    std::uint64_t position_ = 0;  // in frames of the client format; past the end as it was asked
};

}  // namespace atdp::services
