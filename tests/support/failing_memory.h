// Makes memory run out for a thread, in the libraries that it calls as well, and counts the blocks
// in use by all threads. Takes the place of the allocators of the executable that it is linked
// into: malloc and its relations, and plain new, but not new of blocks with an alignment of their
// own.
#pragma once

#include <cstddef>
#include <cstdint>

namespace atdp::test {

// Memory runs out for the thread that makes one of these.
class FailingMemory {
 public:
    // libsoxr, which does not survive it, is spared in the first two modes.
    enum class Mode {
        kOnce,       // the n-th allocation fails, counted from 0
        kFromOn,     // that one and all after it
        kLargerThan  // all of more than n bytes
    };
    FailingMemory(Mode mode, std::size_t n);
    ~FailingMemory();
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;

    // Tried while one of these was last there, in vain or not.
    static std::size_t allocations();
    // Whether one of them failed on behalf of TagLib, which then loses some blocks.
    static bool hasFailedInTagLib();
};

// Blocks given and not taken back, of all threads.
std::int64_t blocksInUse();

}  // namespace atdp::test
