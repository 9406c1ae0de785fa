// Bytes that the platform hands over, held from the C allocator.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "platform/core_audio_types.h"

namespace atdp {

struct Free {
    void operator()(void* block) const { std::free(block); }
};

// False when there is nothing: what was asked for failed, or found no memory.
struct ByteBlock {
    std::unique_ptr<std::uint8_t, Free> data;
    std::uint32_t bytes = 0;

    explicit operator bool() const { return data != nullptr; }
};

// Has `read(&bytes, data)` fill a new block. What the platform stated as the size is only its room;
// pages of it that nothing is read into cost no memory. What was read never counts as more.
template <class Read>
ByteBlock readBlock(std::uint32_t room, Read read) {
    ByteBlock block;
    block.data.reset(static_cast<std::uint8_t*>(std::malloc(room)));
    block.bytes = room;
    if (block && read(&block.bytes, block.data.get()) != noErr) return {};
    block.bytes = std::min(block.bytes, room);
    return block;
}

}  // namespace atdp
