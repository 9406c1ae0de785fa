// Finding one's way in a stream of MPEG audio frames.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "services/codecs/mpeg_header.h"
#include "services/io/block_reader.h"

namespace atdp::services {

// A frame header in a file.
struct MpegFrame {
    std::uint64_t offset = 0;
    std::uint32_t bytes = 0;  // of the whole frame
    MpegHeader header{};

    std::uint64_t end() const { return offset + bytes; }
};

// What all frames of one stream have in common.
struct MpegStream {
    MpegHeader header{};                // of its first frame
    std::uint32_t freeFormatBytes = 0;  // of unpadded frames
};

// Looks for frames between two offsets of a source.
class MpegScanner {
 public:
    MpegScanner(std::shared_ptr<ByteSource> source, ByteRange range, std::size_t blockBytes)
        : blocks_(std::move(source), blockBytes), range_(range) {}

    const ByteRange& range() const { return range_; }

    // The bytes from `offset` on, at least `leastBytes` of them but for the end of the range.
    Result<Bytes> at(std::uint64_t offset, std::size_t leastBytes);

    // The frame of `stream` that starts at `offset`, or none. It may be longer than the range.
    Result<std::optional<MpegFrame>> frameAt(std::uint64_t offset, const MpegStream& stream);

    // The next frame of `stream` from `offset` on that another one follows, or that ends the range.
    Result<std::optional<MpegFrame>> findFrame(std::uint64_t offset, const MpegStream& stream);

    // The first stream from `offset` on, found by kAgreeingFrames frames in a row, or by fewer when
    // they are all that the range holds; none within `mostBytes`.
    struct Found {
        std::uint64_t offset;
        MpegStream stream;
    };
    Result<std::optional<Found>> findStream(std::uint64_t offset, std::uint64_t mostBytes);

 private:
    Result<std::optional<std::uint64_t>> findSync(std::uint64_t offset, std::uint64_t end);
    Result<std::uint32_t> measureFreeFormat(std::uint64_t offset, const MpegHeader& header);
    Result<bool> startsStream(std::uint64_t offset, const MpegStream& stream);

    BlockReader blocks_;
    ByteRange range_;
    int freeFormatTries_ = 0;
};

}  // namespace atdp::services
