#include "services/sound_file.h"

#include <utility>

#include "services/codecs/mpeg_decoder.h"
#include "services/codecs/pcm_reader.h"
#include "services/containers/mpeg.h"
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
    if (!isMpeg()) return description_.frames;
    const auto layout = mpegLayout();
    if (!layout) return layout.failure();
    return layout->frames;
}

Result<std::optional<AudioFilePacketTableInfo>> SoundFile::gaplessCounts() {
    std::optional<AudioFilePacketTableInfo> counts;
    if (!isMpeg()) return counts;
    const auto layout = mpegLayout();
    if (!layout) return layout.failure();
    if (mpegPackets_->hasGaplessCounts)
        counts = {.mNumberValidFrames = static_cast<std::int64_t>(layout->frames),
                  .mPrimingFrames = static_cast<std::int32_t>(mpegPackets_->primingFrames),
                  .mRemainderFrames = static_cast<std::int32_t>(mpegPackets_->remainderFrames)};
    return counts;
}

Result<std::unique_ptr<FrameReader>> SoundFile::makeReader() {
    if (isMpeg()) return makeMpegReader();
    if (const PcmConversion conversion = pcmConversionFor(description_.format))
        return std::unique_ptr<FrameReader>(std::make_unique<PcmReader>(
            source_, description_.data, description_.format, conversion));
    return Failure::kUnsupportedFormat;
}

bool SoundFile::isMpeg() const {
    const std::uint32_t format = description_.format.mFormatID;
    return format == kAudioFormatMPEGLayer1 || format == kAudioFormatMPEGLayer2 ||
           format == kAudioFormatMPEGLayer3;
}

Result<const MpegPackets*> SoundFile::mpegPackets() {
    if (!mpegPackets_) {
        auto found = findMpegPackets(source_, description_);
        if (!found) return found.failure();
        mpegPackets_ = std::make_shared<const MpegPackets>(std::move(*found));
    }
    return mpegPackets_.get();
}

Result<PacketLayout> SoundFile::mpegLayout() {
    const auto found = mpegPackets();
    if (!found) return found.failure();
    const MpegPackets& stream = **found;
    PacketLayout layout;
    layout.channels = description_.format.mChannelsPerFrame;
    layout.framesPerPacket = description_.format.mFramesPerPacket;
    layout.firstFrame = stream.primingFrames;
    layout.frames = stream.packets.size() * layout.framesPerPacket - stream.primingFrames -
                    stream.remainderFrames;
    return layout;
}

Result<std::unique_ptr<FrameReader>> SoundFile::makeMpegReader() {
    const auto layout = mpegLayout();
    if (!layout) return layout.failure();
    if (mpegPackets_->packets.empty()) return Failure::kDamaged;
    auto decoder = MpegDecoder::make(source_, mpegPackets_,
                                     static_cast<std::uint32_t>(description_.format.mSampleRate),
                                     layout->channels, layout->framesPerPacket);
    if (!decoder) return decoder.failure();
    return std::unique_ptr<FrameReader>(
        std::make_unique<PacketReader>(std::move(*decoder), *layout));
}

}  // namespace atdp::services
