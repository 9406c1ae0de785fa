#include "services/io/block_cache.h"

#include <algorithm>
#include <cstring>

namespace atdp::services {

Result<std::size_t> BlockCache::readAt(std::uint64_t offset, std::span<std::byte> out) {
    if (out.size() > block_.size()) return source_.readAt(offset, out);
    const bool held =
        offset >= held_.offset && offset <= held_.end() && out.size() <= held_.end() - offset;
    if (!held) {
        held_ = {};
        const auto got = source_.readAt(offset, block_);
        if (!got) return got;
        held_ = {offset, *got};
    }
    const std::size_t bytes = std::min<std::uint64_t>(out.size(), held_.end() - offset);
    std::memcpy(out.data(), block_.data() + (offset - held_.offset), bytes);
    return bytes;
}

}  // namespace atdp::services
