#include "services/containers/mpeg.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "services/containers/mpeg_info_frame.h"
#include "services/containers/mpeg_stream.h"
#include "services/containers/mpeg_tags.h"
#include "services/limits.h"

namespace atdp::services {
namespace {

constexpr std::uint64_t kTagHeadBytes = 32;

// Kinds of files that hold other files or films as they are, MPEG audio among them, without being
// MPEG audio: what is found inside them is not theirs to play.
constexpr std::string_view kForeignStarts[] = {"PK\x03\x04",
                                               "PK\x05\x06",
                                               "Rar!",
                                               "7z\xBC\xAF",
                                               "\x89PNG",
                                               "\x7F"
                                               "ELF",
                                               "OggS",
                                               "fLaC",
                                               "RIFF",
                                               "FORM",
                                               "MThd",
                                               "GIF8",
                                               "\xFF\xD8\xFF",
                                               "\x1A\x45\xDF\xA3",
                                               "%PDF",
                                               "\x1F\x8B",
                                               "MZ\x90",
                                               "\x30\x26\xB2\x75"};

bool isForeign(Bytes head) {
    const std::string_view text(reinterpret_cast<const char*>(head.data()), head.size());
    const bool isMpeg4 = text.size() >= 8 && text.substr(4, 4) == "ftyp";
    return isMpeg4 ||
           std::any_of(std::begin(kForeignStarts), std::end(kForeignStarts),
                       [text](std::string_view start) { return text.starts_with(start); });
}

struct Front {
    ByteRange firstId3Tag;
    std::uint64_t end = 0;  // where the tags end
};

// ID3v2 tags in front of the sound, one after the other. A tag that claims more than the file holds
// is not skipped: the sound is searched for within it.
Result<Front> tagsInFront(ByteSource& source) {
    Front front;
    for (std::size_t tags = 0; tags < kMaxTagsInARow; ++tags) {
        std::array<std::byte, kTagHeadBytes> head;
        const auto got = source.readAt(front.end, head);
        if (!got) return got.failure();
        const std::uint64_t bytes = bytesOfTagAt(std::span(head).first(*got));
        if (bytes == 0 || bytes > source.sizeBytes() - front.end) return front;
        if (front.firstId3Tag.bytes == 0 && head[0] == std::byte{'I'})
            front.firstId3Tag = {front.end, bytes};
        front.end += bytes;
    }
    return front;
}

std::uint32_t formatFor(const MpegHeader& header) {
    return header.layer == 1   ? kAudioFormatMPEGLayer1
           : header.layer == 2 ? kAudioFormatMPEGLayer2
                               : kAudioFormatMPEGLayer3;
}

std::uint32_t fileTypeFor(const MpegHeader& header) {
    return header.layer == 1   ? kAudioFileMP1Type
           : header.layer == 2 ? kAudioFileMP2Type
                               : kAudioFileMP3Type;
}

// Borrows a source for the time of a call.
std::shared_ptr<ByteSource> borrowed(ByteSource& source) {
    return {std::shared_ptr<ByteSource>(), &source};
}

Result<SoundDescription> describeRange(ByteSource& source, ByteRange range,
                                       std::uint64_t mostJunkBytes) {
    MpegScanner scanner(borrowed(source), range, kScanBlockBytes);
    const auto found = scanner.findStream(range.offset, mostJunkBytes);
    if (!found) return found.failure();
    if (!*found) return Failure::kUnknownFileType;
    const MpegHeader& header = (*found)->stream.header;
    SoundDescription sound;
    sound.fileType = fileTypeFor(header);
    sound.data = {(*found)->offset, range.end() - (*found)->offset};
    sound.format = mpegFormat(header);
    return sound;
}

// Collects the packets of a stream, from its first frame to the end of the range, or as many as
// limits.h allows.
class PacketWalk {
 public:
    PacketWalk(MpegScanner& scanner, const MpegStream& stream)
        : scanner_(scanner), stream_(stream) {
        found_.freeFormatBytes = stream.freeFormatBytes;
    }

    Result<MpegPackets> run() {
        std::uint64_t offset = scanner_.range().offset;
        while (offset < scanner_.range().end() && found_.packets.size() < kMaxPackets) {
            const auto frame = scanner_.frameAt(offset, stream_);
            if (!frame) return frame.failure();
            const bool isWhole = *frame && (*frame)->end() <= scanner_.range().end();
            endIsTorn_ = *frame && !isWhole;
            const auto next = isWhole ? addFrame(**frame) : skipOther(offset);
            if (!next) return next.failure();
            offset = *next;
        }
        if (info_) applyInfoFrame(found_, *info_, stream_.header.framesPerPacket(), endIsTorn_);
        return std::move(found_);
    }

 private:
    Result<std::uint64_t> addFrame(const MpegFrame& frame) {
        const auto bytes = scanner_.at(frame.offset, kInfoFrameBytes);
        if (!bytes) return bytes.failure();
        const Bytes packet = bytes->first(std::min<std::size_t>(frame.bytes, bytes->size()));
        if (const auto info = parseMpegInfoFrame(frame.header, packet)) {
            if (found_.packets.empty() && !info_) info_ = info;
        } else {
            found_.packets.emplace_back(frame.offset, frame.bytes);
        }
        return frame.end();
    }

    // Where the stream goes on after bytes that are no frame of it: behind a tag, or at the next
    // frame.
    Result<std::uint64_t> skipOther(std::uint64_t offset) {
        const std::uint64_t end = scanner_.range().end();
        const auto bytes = scanner_.at(offset, kTagHeadBytes);
        if (!bytes) return bytes.failure();
        const std::uint64_t tagBytes = bytesOfTagAt(*bytes);
        if (tagBytes > 0 && tagBytes <= end - offset) return offset + tagBytes;

        const bool followsPacket = !found_.packets.empty() && found_.packets.back().end() == offset;
        const std::uint64_t from =
            followsPacket ? found_.packets.back().offset() + MpegHeader::kBytes : offset + 1;
        const auto frame = scanner_.findFrame(from, stream_);
        if (!frame) return frame.failure();
        if (!*frame) return end;
        if (followsPacket) mendBefore(**frame, offset);
        return (*frame)->offset;
    }

    // The last packet may be the damaged one, its header claiming too much: then the next frame
    // starts within it. Or one packet's header is damaged: then there is just room for it in
    // between.
    void mendBefore(const MpegFrame& next, std::uint64_t offset) {
        const MpegPacket last = found_.packets.back();
        if (next.offset < offset) {
            found_.packets.back() = {last.offset(), next.offset - last.offset()};
            return;
        }
        const std::uint64_t gap = next.offset - offset;
        const std::uint32_t padding = stream_.header.paddingBytes();
        if (gap + padding >= last.bytes() && gap <= last.bytes() + padding)
            found_.packets.emplace_back(offset, gap);
    }

    // Enough of a frame to read what it tells of the stream.
    static constexpr std::size_t kInfoFrameBytes = 200;

    MpegScanner& scanner_;
    MpegStream stream_;
    MpegPackets found_;
    std::optional<MpegInfoFrame> info_;
    bool endIsTorn_ = false;  // the last frame goes on behind the end
};

}  // namespace

bool isMpegAudio(std::uint32_t format) {
    return format == kAudioFormatMPEGLayer1 || format == kAudioFormatMPEGLayer2 ||
           format == kAudioFormatMPEGLayer3;
}

AudioStreamBasicDescription mpegFormat(const MpegHeader& header) {
    AudioStreamBasicDescription format{};
    format.mSampleRate = header.rate();
    format.mFormatID = formatFor(header);
    format.mFramesPerPacket = header.framesPerPacket();
    format.mChannelsPerFrame = header.channels();
    return format;
}

Result<SoundDescription> describeMpeg(ByteSource& source) {
    std::array<std::byte, 12> head;
    const auto got = source.readAt(0, head);
    if (!got) return got.failure();
    if (isForeign(std::span(head).first(*got))) return Failure::kUnknownFileType;
    const auto front = tagsInFront(source);
    if (!front) return front.failure();
    const auto end = endBeforeTags(source, front->end, source.sizeBytes());
    if (!end) return end.failure();
    auto sound = describeRange(source, {front->end, *end - front->end}, kMaxLeadingJunkBytes);
    if (sound) sound->id3Tag = front->firstId3Tag;
    return sound;
}

Result<SoundDescription> describeMpegData(ByteSource& source, std::uint32_t fileType,
                                          ByteRange data) {
    auto sound = describeRange(source, data, kMaxLeadingJunkBytes);
    if (!sound && sound.failure() == Failure::kUnknownFileType) return Failure::kDamaged;
    if (sound) sound->fileType = fileType;
    return sound;
}

Result<MpegPackets> findMpegPackets(std::shared_ptr<ByteSource> source,
                                    const SoundDescription& sound) {
    MpegScanner scanner(std::move(source), sound.data, kWalkBlockBytes);
    const auto found = scanner.findStream(sound.data.offset, 1);
    if (!found) return found.failure();
    if (!*found) return Failure::kUnreadable;  // it was there when the file was described
    return PacketWalk(scanner, (*found)->stream).run();
}

}  // namespace atdp::services
