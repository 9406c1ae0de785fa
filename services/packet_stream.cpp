#include "services/packet_stream.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "services/codecs/alac_packet_decoder.h"
#include "services/codecs/mpeg_decoder.h"
#include "services/containers/caf.h"
#include "services/containers/mpeg.h"
#include "services/containers/mpeg4.h"
#include "services/containers/mpeg4_packets.h"

namespace atdp::services {
namespace {

using Decoder = Result<std::unique_ptr<PacketDecoder>>;

// Lays the sound out in that many packets, and counts what is around it.
PacketStream layOut(const SoundDescription& sound, std::uint64_t packets,
                    std::uint64_t primingFrames, std::uint64_t validFrames) {
    PacketStream stream;
    stream.layout = {.channels = sound.format.mChannelsPerFrame,
                     .framesPerPacket = sound.format.mFramesPerPacket,
                     .firstFrame = primingFrames,
                     .frames = validFrames};
    constexpr std::uint64_t kMost = std::numeric_limits<std::int32_t>::max();
    const std::uint64_t remainder =
        packets * stream.layout.framesPerPacket - primingFrames - validFrames;
    stream.gaplessCounts = {
        .mNumberValidFrames = static_cast<std::int64_t>(validFrames),
        .mPrimingFrames = static_cast<std::int32_t>(primingFrames),
        .mRemainderFrames = static_cast<std::int32_t>(std::min(remainder, kMost))};
    return stream;
}

Result<PacketStream> findMpegStream(const std::shared_ptr<ByteSource>& source,
                                    const SoundDescription& sound) {
    auto found = isMpeg4(sound) ? readMpegTrack(source) : findMpegPackets(source, sound);
    if (!found) return found.failure();
    const auto packets = std::make_shared<const MpegPackets>(std::move(*found));
    const std::uint64_t cut = std::uint64_t{packets->primingFrames} + packets->remainderFrames;
    const std::uint64_t frames = packets->packets.size() * sound.format.mFramesPerPacket;
    if (cut > frames) return Failure::kUnreadable;  // of another stream, put in this one's place
    PacketStream stream =
        layOut(sound, packets->packets.size(), packets->primingFrames, frames - cut);
    if (!packets->hasGaplessCounts) stream.gaplessCounts.reset();
    stream.makeDecoder = [source, packets, format = sound.format]() -> Decoder {
        if (packets->packets.empty()) return Failure::kDamaged;
        return MpegDecoder::make(source, packets, static_cast<std::uint32_t>(format.mSampleRate),
                                 format.mChannelsPerFrame, format.mFramesPerPacket);
    };
    return stream;
}

Result<PacketStream> findLosslessStream(const std::shared_ptr<ByteSource>& source,
                                        const SoundDescription& sound) {
    auto track = isCaf(sound) ? readCafLosslessTrack(*source) : readLosslessTrack(*source);
    if (!track) return track.failure();
    // The configuration is read anew here. Another one is another file's, put in this one's place.
    if (track->config.channels != sound.format.mChannelsPerFrame ||
        track->config.frameLength != sound.format.mFramesPerPacket ||
        track->config.sampleRate != sound.format.mSampleRate)
        return Failure::kUnreadable;
    PacketStream stream =
        layOut(sound, track->packets.size(), track->primingFrames, track->validFrames);
    const auto packets =
        std::make_shared<const std::vector<PacketPlace>>(std::move(track->packets));
    stream.makeDecoder = [source, packets, config = track->config]() -> Decoder {
        return std::unique_ptr<PacketDecoder>(
            std::make_unique<AlacPacketDecoder>(source, packets, config));
    };
    return stream;
}

bool isLossless(const SoundDescription& sound) {
    return (isMpeg4(sound) || isCaf(sound)) && sound.format.mFormatID == kAudioFormatAppleLossless;
}

}  // namespace

bool isPacketStream(const SoundDescription& sound) {
    return isLossless(sound) || isMpegAudio(sound.format.mFormatID);
}

Result<PacketStream> findPacketStream(const std::shared_ptr<ByteSource>& source,
                                      const SoundDescription& sound) {
    return isLossless(sound) ? findLosslessStream(source, sound) : findMpegStream(source, sound);
}

}  // namespace atdp::services
