#include "metadata/user_data.h"

namespace atdp {

std::uint32_t countUserData(AudioFileID file, std::uint32_t type) {
    std::uint32_t count = 0;
    return AudioFileCountUserData(file, type, &count) == noErr ? count : 0;
}

ByteBlock readUserData(AudioFileID file, std::uint32_t type, std::uint32_t index) {
    std::uint32_t room = 0;
    if (AudioFileGetUserDataSize(file, type, index, &room) != noErr) return {};
    return readBlock(room, [&](std::uint32_t* bytes, void* data) {
        return AudioFileGetUserData(file, type, index, bytes, data);
    });
}

}  // namespace atdp
