// The atoms of MPEG-4 and QuickTime files: a size of 32 or 64 bits, a type, and a body that may be
// atoms again.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>

#include "services/io/byte_source.h"

namespace atdp::services {

struct Atom {
    std::uint32_t type = 0;  // four-character code
    ByteRange body;          // clamped to what encloses it
};

// The atoms within a run of bytes, one after the other. It does not go into them; who does follows
// a path of its own, so that their depth does not matter.
class AtomWalk {
 public:
    AtomWalk(ByteSource& source, ByteRange region)
        : source_(source), region_(clampedTo(source.sizeBytes(), region)) {}

    // The next atom, or none at the end, at a size that cannot be, or after as many atoms as
    // limits.h allows.
    Result<std::optional<Atom>> next();

 private:
    ByteSource& source_;
    ByteRange region_;  // what is still to be walked over
    std::size_t atoms_ = 0;
};

// The body of the first atom of that type, in it the first of the next type, and so on.
Result<std::optional<ByteRange>> findAtom(ByteSource& source, ByteRange region,
                                          std::initializer_list<std::uint32_t> path);

}  // namespace atdp::services
