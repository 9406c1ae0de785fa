#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "services/io/byte_cursor.h"
#include "services/io/byte_source.h"

namespace atdp::services {

// Looks at a source through a block that it reads ahead, for readers that go forward in small
// steps.
class BlockReader {
 public:
    // Behind a jump `bytesAfterJump` are read at first, and more the longer it goes on from there.
    BlockReader(std::shared_ptr<ByteSource> source, std::size_t blockBytes,
                std::size_t bytesAfterJump)
        : source_(std::move(source)), bytesAfterJump_(bytesAfterJump), block_(blockBytes) {}

    // Whole blocks, for readers that look back and forth within one.
    BlockReader(std::shared_ptr<ByteSource> source, std::size_t blockBytes)
        : BlockReader(std::move(source), blockBytes, blockBytes) {}

    // The bytes from `offset` on, as many as are at hand but at least `leastBytes` (at most a
    // block): fewer only at the end of the source. What cannot be read fails only the call that
    // needs it. Valid until the next call.
    Result<Bytes> at(std::uint64_t offset, std::size_t leastBytes) {
        const bool held =
            offset >= held_.offset && offset <= held_.end() &&
            (leastBytes <= held_.end() - offset || held_.end() >= source_->sizeBytes());
        if (!held) {
            const bool goesOn = offset >= held_.offset && offset <= held_.end();
            const std::size_t wanted =
                std::max<std::size_t>(bytesAfterJump_, goesOn ? 4 * held_.bytes : 0);
            held_ = {};
            const auto got = source_->readUntilFailure(
                offset,
                std::span(block_).first(std::min(std::max(wanted, leastBytes), block_.size())));
            if (!got) return got.failure();
            held_ = {offset, *got};
        }
        if (held_.end() - offset < leastBytes) {  // the end, or what cannot be read
            const auto more =
                source_->readUntilFailure(held_.end(), std::span(block_).subspan(held_.bytes));
            if (!more) return more.failure();
            held_.bytes += *more;
        }
        return Bytes(block_).subspan(offset - held_.offset, held_.end() - offset);
    }

 private:
    std::shared_ptr<ByteSource> source_;
    std::size_t bytesAfterJump_;
    std::vector<std::byte> block_;
    ByteRange held_;  // what block_ holds
};

}  // namespace atdp::services
