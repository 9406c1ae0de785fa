#include "services/containers/mpeg_stream.h"

#include <algorithm>
#include <cstring>

#include "services/limits.h"

namespace atdp::services {
namespace {

// Two unrelated headers agree once in some 100,000 bytes; three in a row make a chance hit a matter
// of petabytes.
constexpr int kAgreeingFrames = 3;

}  // namespace

Result<Bytes> MpegScanner::at(std::uint64_t offset, std::size_t leastBytes) {
    if (offset >= range_.end()) return Bytes();
    const auto bytes = blocks_.at(offset, leastBytes);
    if (!bytes) return bytes;
    return bytes->first(std::min<std::uint64_t>(bytes->size(), range_.end() - offset));
}

Result<std::optional<MpegFrame>> MpegScanner::frameAt(std::uint64_t offset,
                                                      const MpegStream& stream) {
    const auto bytes = at(offset, MpegHeader::kBytes);
    if (!bytes) return bytes.failure();
    const auto header = parseMpegHeader(*bytes);
    if (!header || !header->agreesWith(stream.header)) return std::optional<MpegFrame>();
    return std::optional(MpegFrame{offset, header->packetBytes(stream.freeFormatBytes), *header});
}

// The next offset that may start a header, before `end`.
Result<std::optional<std::uint64_t>> MpegScanner::findSync(std::uint64_t offset,
                                                           std::uint64_t end) {
    while (offset < end) {
        const auto bytes = at(offset, kScanAheadBytes);
        if (!bytes) return bytes.failure();
        if (bytes->size() < MpegHeader::kBytes) break;
        const std::size_t searched =
            std::min<std::uint64_t>(bytes->size() - 1, end - offset);  // two bytes of sync
        const void* hit = std::memchr(bytes->data(), 0xFF, searched);
        if (hit == nullptr) {
            offset += searched;
            continue;
        }
        const auto skipped =
            static_cast<std::size_t>(static_cast<const std::byte*>(hit) - bytes->data());
        offset += skipped;
        if (((*bytes)[skipped + 1] & std::byte{0xE0}) == std::byte{0xE0})
            return std::optional(offset);
        ++offset;
    }
    return std::optional<std::uint64_t>();
}

Result<std::optional<MpegFrame>> MpegScanner::findFrame(std::uint64_t offset,
                                                        const MpegStream& stream) {
    for (;; ++offset) {
        const auto sync = findSync(offset, range_.end());
        if (!sync) return sync.failure();
        if (!*sync) return std::optional<MpegFrame>();
        offset = **sync;
        const auto frame = frameAt(offset, stream);
        if (!frame) return frame;
        if (!*frame) continue;
        if ((*frame)->end() == range_.end()) return frame;
        const auto follower = frameAt((*frame)->end(), stream);
        if (!follower) return follower;
        if (*follower) return frame;
    }
}

Result<std::optional<MpegScanner::Found>> MpegScanner::findStream(std::uint64_t offset,
                                                                  std::uint64_t mostBytes) {
    const std::uint64_t end = std::min(range_.end(), offset + mostBytes);
    for (;; ++offset) {
        const auto sync = findSync(offset, end);
        if (!sync) return sync.failure();
        if (!*sync) return std::optional<Found>();
        offset = **sync;
        const auto bytes = at(offset, MpegHeader::kBytes);
        if (!bytes) return bytes.failure();
        const auto header = parseMpegHeader(*bytes);
        if (!header) continue;
        MpegStream stream{*header, 0};
        if (header->isFreeFormat()) {
            const auto measured = measureFreeFormat(offset, *header);
            if (!measured) return measured.failure();
            if (*measured == 0) continue;
            stream.freeFormatBytes = *measured;
        }
        const auto starts = startsStream(offset, stream);
        if (!starts) return starts.failure();
        if (*starts) return std::optional(Found{offset, stream});
    }
}

// The distance to the next free-format header, less the padding; 0 when none is near.
Result<std::uint32_t> MpegScanner::measureFreeFormat(std::uint64_t offset,
                                                     const MpegHeader& header) {
    const std::uint32_t padding = header.padded ? header.paddingBytes() : 0;
    const std::uint64_t nearest = offset + kMinFreeFormatBytes + padding;
    std::uint64_t next = offset + MpegHeader::kBytes;
    const std::uint64_t end = std::min(range_.end(), offset + kMaxFreeFormatBytes);
    for (;; ++next) {
        const auto sync = findSync(next, end);
        if (!sync) return sync.failure();
        if (!*sync) return 0U;
        next = **sync;
        const auto bytes = at(next, MpegHeader::kBytes);
        if (!bytes) return bytes.failure();
        const auto found = parseMpegHeader(*bytes);
        if (!found || !found->agreesWith(header)) continue;
        if (next < nearest || ++freeFormatTries_ > kMaxFreeFormatTries) return 0U;
        const MpegStream stream{header, static_cast<std::uint32_t>(next - offset) - padding};
        const auto starts = startsStream(offset, stream);
        if (!starts) return starts.failure();
        if (*starts) return stream.freeFormatBytes;
    }
}

// Whether frames follow one another from `offset` on.
Result<bool> MpegScanner::startsStream(std::uint64_t offset, const MpegStream& stream) {
    const std::uint64_t start = offset;
    for (int frames = 0; frames < kAgreeingFrames; ++frames) {
        if (offset == range_.end()) return frames > 0 && start == range_.offset;
        const auto frame = frameAt(offset, stream);
        if (!frame) return frame.failure();
        if (!*frame) return false;
        offset = (*frame)->end();
    }
    return true;
}

}  // namespace atdp::services
