// The user data of a file, item by item.
#pragma once

#include "metadata/byte_block.h"
#include "platform/audio_file.h"

namespace atdp {

// How many items of that type the file has; 0 when it does not tell.
std::uint32_t countUserData(AudioFileID file, std::uint32_t type);

// One item, whole; nothing when it cannot be read or memory runs out.
ByteBlock readUserData(AudioFileID file, std::uint32_t type, std::uint32_t index);

}  // namespace atdp
