// What the files at the edge to platform/ share.
#pragma once

#include <memory>
#include <string>

#include "platform/audio_file.h"
#include "platform/core_foundation.h"
#include "services/sound_file.h"

namespace atdp::services {

// Runs a platform call. Allocation is all that throws in services/, and no exception may cross the
// edge.
template <class Call>
OSStatus withoutExceptions(Call call) {
    try {
        return call();
    } catch (...) {
        return kStatusOutOfMemory;
    }
}

// The path that a URL was made from; the URL must be live.
const std::string& pathOf(CFURLRef url);

// The file behind a handle, or null.
std::shared_ptr<SoundFile> soundFileOf(AudioFileID file);

// Copies a property out: the room must be exactly its size.
OSStatus copyProperty(const void* value, std::uint32_t valueBytes, std::uint32_t* dataBytes,
                      void* data);

}  // namespace atdp::services
