#include "services/sound_file.h"

#include <utility>

#include "services/codecs/pcm_reader.h"
#include "services/containers/recognition.h"
#include "services/io/file_source.h"

namespace atdp::services {

Result<std::shared_ptr<SoundFile>> SoundFile::open(const std::string& path) {
    auto source = openFileSource(path);
    if (!source) return source.failure();
    const auto description = describeSound(**source);
    if (!description) return description.failure();
    return std::shared_ptr<SoundFile>(new SoundFile(std::move(*source), *description));
}

Result<std::uint64_t> SoundFile::lengthInFrames() {
    if (!isPacketStream(description_)) return description_.frames;
    const auto stream = packetStream();
    if (!stream) return stream.failure();
    return (*stream)->layout.frames;
}

Result<std::optional<AudioFilePacketTableInfo>> SoundFile::gaplessCounts() {
    if (!isPacketStream(description_)) return std::optional<AudioFilePacketTableInfo>();
    const auto stream = packetStream();
    if (!stream) return stream.failure();
    return (*stream)->gaplessCounts;
}

Result<std::unique_ptr<FrameReader>> SoundFile::makeReader() {
    if (isPacketStream(description_)) return makePacketReader();
    if (const PcmConversion conversion = pcmConversionFor(description_.format))
        return std::unique_ptr<FrameReader>(std::make_unique<PcmReader>(
            source_, description_.data, description_.format, conversion));
    return Failure::kUnsupportedFormat;
}

Result<const PacketStream*> SoundFile::packetStream() {
    if (!packetStream_) {
        auto found = findPacketStream(source_, description_);
        if (!found) return found.failure();
        packetStream_ = std::move(*found);
    }
    return &*packetStream_;
}

Result<std::unique_ptr<FrameReader>> SoundFile::makePacketReader() {
    const auto stream = packetStream();
    if (!stream) return stream.failure();
    auto decoder = (*stream)->makeDecoder();
    if (!decoder) return decoder.failure();
    return std::unique_ptr<FrameReader>(
        std::make_unique<PacketReader>(std::move(*decoder), (*stream)->layout));
}

}  // namespace atdp::services
