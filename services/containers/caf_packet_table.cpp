#include "services/containers/caf_packet_table.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>

#include "services/io/block_reader.h"
#include "services/io/read_start.h"
#include "services/limits.h"

namespace atdp::services {
namespace {

constexpr std::uint64_t kHeadBytes = 24;

// The numbers behind the head of the table: seven bits a byte, the highest first, and the top bit
// set but in the last byte of each.
class VariableNumbers {
 public:
    // The source is borrowed.
    VariableNumbers(ByteSource& source, ByteRange range)
        : blocks_({std::shared_ptr<ByteSource>(), &source}, kHeaderBlockBytes), range_(range) {}

    // The next, or none: at the end, and where one has more than 32 bits.
    Result<std::optional<std::uint32_t>> next() {
        constexpr std::size_t kMaxNumberBytes = 5;
        const auto block = blocks_.at(range_.offset, kMaxNumberBytes);
        if (!block) return block.failure();
        const auto most = std::min<std::uint64_t>({block->size(), range_.bytes, kMaxNumberBytes});
        std::uint64_t number = 0;
        for (std::size_t i = 0; i < most; ++i) {
            const auto byte = std::to_integer<std::uint64_t>((*block)[i]);
            number = number << 7 | (byte & 0x7F);
            if (byte >= 0x80) continue;
            range_ = {range_.offset + i + 1, range_.bytes - i - 1};
            if (number > 0xFFFF'FFFF) break;
            return std::optional(static_cast<std::uint32_t>(number));
        }
        return std::optional<std::uint32_t>();
    }

 private:
    BlockReader blocks_;
    ByteRange range_;  // what is left
};

// A packet larger than any that is decoded stands for its frames, without its bytes.
PacketPlace placeOf(ByteRange packet) {
    const bool isKept =
        packet.bytes <= PacketPlace::kMaxBytes && packet.offset <= PacketPlace::kMaxOffset;
    return isKept ? PacketPlace(packet.offset, packet.bytes) : PacketPlace();
}

}  // namespace

Result<CafPacketTable> readCafPacketTable(ByteSource& source, ByteRange table, ByteRange data,
                                          bool tellsFrames) {
    std::array<std::byte, kHeadBytes> room;
    const auto head = readStart(source, table, room);
    if (!head) return head.failure();
    CafPacketTable found;
    if (head->size() < kHeadBytes) return found;
    ByteCursor cursor(*head);
    const auto packets = cursor.bigEndian<std::uint64_t>();
    found.validFrames = cursor.bigEndian<std::int64_t>();
    found.primingFrames = cursor.bigEndian<std::int32_t>();

    // Empty packets are silence, but a table of nothing else must not make days of it.
    const std::uint64_t most =
        std::min({packets, kMaxPackets, data.bytes / kMinCommonPacketBytes + 1});
    VariableNumbers numbers(source, {table.offset + kHeadBytes, table.bytes - kHeadBytes});
    for (std::uint64_t i = 0; i < most; ++i) {
        const auto bytes = numbers.next();
        if (!bytes) return bytes.failure();
        if (!*bytes || **bytes > data.bytes) break;
        found.packets.push_back(placeOf({data.offset, **bytes}));
        data = {data.offset + **bytes, data.bytes - **bytes};
        if (!tellsFrames) continue;
        const auto frames = numbers.next();
        if (!frames) return frames.failure();
        if (!*frames) break;
    }
    return found;
}

}  // namespace atdp::services
