// A sound file opened for reading.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "services/codecs/frame_reader.h"
#include "services/containers/sound_description.h"
#include "services/packet_stream.h"

namespace atdp::services {

// One thread at a time. Opening looks at the headers only; the packets of a compressed stream are
// found when somebody first asks for what depends on them.
class SoundFile {
 public:
    static Result<std::shared_ptr<SoundFile>> open(const std::string& path);

    const SoundDescription& description() const { return description_; }
    ByteSource& source() const { return *source_; }

    // Frames that a reader delivers, at the file's rate. 0 where the encoding is not decoded.
    Result<std::uint64_t> lengthInFrames();

    // What a reader cuts at both ends; none where the file does not tell.
    Result<std::optional<AudioFilePacketTableInfo>> gaplessCounts();

    // A new reader of the file's frames, at the first; kUnsupportedFormat when the encoding is not
    // decoded. It shares the file with others and may outlive this object.
    Result<std::unique_ptr<FrameReader>> makeReader();

 private:
    SoundFile(std::shared_ptr<ByteSource> source, const SoundDescription& description)
        : source_(std::move(source)), description_(description) {}

    Result<const PacketStream*> packetStream();
    Result<std::unique_ptr<FrameReader>> makePacketReader();

    std::shared_ptr<ByteSource> source_;
    SoundDescription description_;
    std::optional<PacketStream> packetStream_;  // once it is found
};

}  // namespace atdp::services
