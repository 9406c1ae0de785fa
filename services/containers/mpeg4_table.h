// The tables in the atoms of MPEG-4 and QuickTime files.
#pragma once

#include <array>
#include <cstdint>

#include "services/io/block_reader.h"

namespace atdp::services {

// A head (version, flags, fields, the count of entries) and entries of one size, read a block at a
// time in ascending order. An atom that is missing or cut in its head is an empty table.
class AtomTable {
 public:
    // The source must outlive the table.
    static Result<AtomTable> open(ByteSource& source, ByteRange body, std::uint32_t headBytes,
                                  std::uint32_t entryBytes);

    std::uint8_t version() const { return static_cast<std::uint8_t>(head_[0]); }
    // The field before the count, where the head has one.
    std::uint32_t field() const { return loadBigEndian<std::uint32_t>(head_.data() + 4); }
    std::uint32_t statedCount() const { return statedCount_; }
    // Entries that the atom has bytes for, of those it states.
    std::uint64_t count() const { return count_; }

    // The entry `index`, below count(); valid until the next call.
    Result<ByteCursor> at(std::uint64_t index);

 private:
    static constexpr std::size_t kMaxHeadBytes = 12;

    explicit AtomTable(ByteSource& source);

    BlockReader blocks_;
    std::array<std::byte, kMaxHeadBytes> head_{};
    std::uint64_t offset_ = 0;  // of the first entry
    std::uint32_t entryBytes_ = 0;
    std::uint32_t statedCount_ = 0;
    std::uint64_t count_ = 0;
};

}  // namespace atdp::services
