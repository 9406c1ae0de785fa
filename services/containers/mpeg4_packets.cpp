#include "services/containers/mpeg4_packets.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "services/containers/mpeg4_sample_table.h"
#include "services/containers/mpeg4_timing.h"
#include "services/containers/mpeg4_track.h"
#include "services/containers/mpeg_info_frame.h"
#include "services/containers/mpeg_stream.h"
#include "services/io/block_cache.h"
#include "services/limits.h"

namespace atdp::services {
namespace {

// What is missing was there when the file was described.
constexpr Failure kGone = Failure::kUnreadable;

Result<SoundTrack> readTrack(ByteSource& source) {
    const auto movie = findMovie(source);
    if (!movie) return movie.failure();
    if (!*movie) return kGone;
    return readSoundTrack(source, **movie);
}

// The bytes of an unpadded packet, from the first one, where they are not stated; else 0.
std::uint32_t freeFormatBytes(const MpegHeader& header, const std::vector<PacketPlace>& places) {
    if (!header.isFreeFormat() || places.empty()) return 0;
    const std::uint32_t bytes = places.front().bytes();
    const std::uint32_t padding = header.padded ? header.paddingBytes() : 0;
    const bool isPossible = bytes >= kMinFreeFormatBytes + padding && bytes <= kMaxFreeFormatBytes;
    return isPossible ? bytes - padding : 0;
}

// The packets that are frames of the stream and hold sound.
Result<MpegPackets> collectFrames(MpegScanner& scanner, const MpegStream& stream,
                                  const std::vector<PacketPlace>& places) {
    MpegPackets found;
    found.freeFormatBytes = stream.freeFormatBytes;
    std::optional<MpegInfoFrame> info;
    for (const PacketPlace& place : places) {
        const auto frame = scanner.frameAt(place.offset(), stream);
        if (!frame) return frame.failure();
        const std::uint32_t bytes = *frame ? std::min(place.bytes(), (*frame)->bytes) : 0;
        if (bytes < MpegHeader::kBytes) continue;
        if (found.packets.empty() && !info) {
            const auto packet = scanner.at(place.offset(), bytes);
            if (!packet) return packet.failure();
            info = parseMpegInfoFrame((*frame)->header,
                                      packet->first(std::min<std::size_t>(bytes, packet->size())));
            if (info) continue;
        }
        found.packets.emplace_back(place.offset(), bytes);
    }
    if (info) applyInfoFrame(found, *info, stream.header.framesPerPacket(), false);
    return found;
}

void applySpan(MpegPackets& found, const SoundSpan& span, std::uint32_t framesPerPacket) {
    const std::uint64_t frames = found.packets.size() * framesPerPacket;
    const std::uint64_t remainder = frames - span.primingFrames - span.validFrames;
    const std::uint64_t most = std::numeric_limits<std::int32_t>::max();
    if (span.validFrames == frames || span.primingFrames > most || remainder > most) return;
    found.hasGaplessCounts = true;
    found.primingFrames = static_cast<std::uint32_t>(span.primingFrames);
    found.remainderFrames = static_cast<std::uint32_t>(remainder);
}

}  // namespace

Result<LosslessTrack> readLosslessTrack(ByteSource& source) {
    BlockCache headers(source);
    const auto track = readTrack(headers);
    if (!track) return track.failure();
    const auto config = readAlacConfig(headers, track->entry);
    if (!config) return config.failure();
    if (!*config) return kGone;
    auto table = readSampleTable(headers, track->sampleTable);
    if (!table) return table.failure();
    const auto span = findSoundSpan(headers, track->movie, track->track, *table,
                                    (*config)->frameLength, (*config)->sampleRate);
    if (!span) return span.failure();
    return LosslessTrack{**config, std::move(table->packets), span->primingFrames,
                         span->validFrames};
}

Result<MpegPackets> readMpegTrack(const std::shared_ptr<ByteSource>& source) {
    BlockCache headers(*source);
    const auto track = readTrack(headers);
    if (!track) return track.failure();
    const auto header = readFirstHeader(headers, *track);
    if (!header) return header.failure();
    if (!*header) return kGone;
    const auto table = readSampleTable(headers, track->sampleTable);
    if (!table) return table.failure();
    // In small blocks: the packets may be in any order, and far from each other.
    MpegScanner scanner(source, {0, source->sizeBytes()}, kHeaderBlockBytes);
    auto found = collectFrames(scanner, {**header, freeFormatBytes(**header, table->packets)},
                               table->packets);
    if (!found || found->hasGaplessCounts || found->packets.size() != table->packets.size())
        return found;
    const auto span = findSoundSpan(headers, track->movie, track->track, *table,
                                    (*header)->framesPerPacket(), (*header)->rate());
    if (!span) return span.failure();
    applySpan(*found, *span, (*header)->framesPerPacket());
    return found;
}

}  // namespace atdp::services
