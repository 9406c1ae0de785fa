#include "services/containers/mpeg4_atoms.h"

#include <algorithm>
#include <array>

#include "services/io/byte_cursor.h"
#include "services/io/read_start.h"
#include "services/limits.h"

namespace atdp::services {

Result<std::optional<Atom>> AtomWalk::next() {
    constexpr std::uint64_t kToTheEnd = 0;  // sizes with a meaning of their own
    constexpr std::uint64_t kLargeFollows = 1;
    constexpr std::uint64_t kHeaderBytes = 8;
    if (region_.bytes < kHeaderBytes || ++atoms_ > kMaxChunks) return std::optional<Atom>();
    std::array<std::byte, 2 * kHeaderBytes> room;
    const auto header = readStart(source_, region_, room);
    if (!header) return header.failure();
    ByteCursor cursor(*header);
    std::uint64_t bytes = cursor.bigEndian<std::uint32_t>();
    Atom atom;
    atom.type = cursor.bigEndian<std::uint32_t>();
    std::uint64_t headerBytes = kHeaderBytes;
    if (bytes == kLargeFollows) {
        bytes = cursor.bigEndian<std::uint64_t>();
        headerBytes += kHeaderBytes;
    } else if (bytes == kToTheEnd) {
        bytes = region_.bytes;
    }
    if (cursor.failed() || bytes < headerBytes) return std::optional<Atom>();
    bytes = std::min(bytes, region_.bytes);
    atom.body = {region_.offset + headerBytes, bytes - headerBytes};
    region_ = {region_.offset + bytes, region_.bytes - bytes};
    return std::optional(atom);
}

Result<std::optional<ByteRange>> findAtom(ByteSource& source, ByteRange region,
                                          std::initializer_list<std::uint32_t> path) {
    for (const std::uint32_t type : path) {
        AtomWalk walk(source, region);
        for (;;) {
            const auto atom = walk.next();
            if (!atom) return atom.failure();
            if (!*atom) return std::optional<ByteRange>();
            if ((*atom)->type != type) continue;
            region = (*atom)->body;
            break;
        }
    }
    return std::optional(region);
}

}  // namespace atdp::services
