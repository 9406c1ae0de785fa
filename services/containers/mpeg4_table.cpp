#include "services/containers/mpeg4_table.h"

#include <algorithm>
#include <memory>

#include "services/limits.h"

namespace atdp::services {

// The source is borrowed.
AtomTable::AtomTable(ByteSource& source)
    : blocks_({std::shared_ptr<ByteSource>(), &source}, kHeaderBlockBytes) {}

Result<AtomTable> AtomTable::open(ByteSource& source, ByteRange body, std::uint32_t headBytes,
                                  std::uint32_t entryBytes) {
    AtomTable table(source);
    if (body.bytes < headBytes) return table;
    const auto head = table.blocks_.at(body.offset, headBytes);
    if (!head) return head.failure();
    if (head->size() < headBytes) return Failure::kUnreadable;
    std::copy_n(head->begin(), headBytes, table.head_.begin());
    table.offset_ = body.offset + headBytes;
    table.entryBytes_ = entryBytes;
    table.statedCount_ = loadBigEndian<std::uint32_t>(head->data() + headBytes - 4);
    table.count_ =
        std::min<std::uint64_t>(table.statedCount_, (body.bytes - headBytes) / entryBytes);
    return table;
}

Result<ByteCursor> AtomTable::at(std::uint64_t index) {
    const auto entry = blocks_.at(offset_ + index * entryBytes_, entryBytes_);
    if (!entry) return entry.failure();
    if (entry->size() < entryBytes_) return Failure::kUnreadable;
    return ByteCursor(entry->first(entryBytes_));
}

}  // namespace atdp::services
