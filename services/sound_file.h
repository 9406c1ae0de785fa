// A sound file opened for reading.
#pragma once

#include <memory>
#include <string>

#include "services/codecs/frame_reader.h"
#include "services/containers/sound_description.h"

namespace atdp::services {

class SoundFile {
 public:
    static Result<std::shared_ptr<SoundFile>> open(const std::string& path);

    const SoundDescription& description() const { return description_; }

    // A new reader of the file's frames, at the first; kUnsupportedFormat when the encoding is not
    // decoded. It shares the file with others and may outlive this object.
    Result<std::unique_ptr<FrameReader>> makeReader() const;

 private:
    SoundFile(std::shared_ptr<ByteSource> source, const SoundDescription& description)
        : source_(std::move(source)), description_(description) {}

    std::shared_ptr<ByteSource> source_;
    SoundDescription description_;
};

}  // namespace atdp::services
