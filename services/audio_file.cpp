#include "platform/audio_file.h"

#include <cstring>

#include "services/edge.h"
#include "services/handle_table.h"

namespace atdp::services {
namespace {

using FileTable = HandleTable<SoundFile, AudioFileID, 1>;

FileTable& files() {
    return moduleWide<FileTable>();
}

OSStatus openUrl(CFURLRef url, std::int8_t permissions, AudioFileID* file) {
    if (url == nullptr || file == nullptr || permissions != kAudioFileReadPermission)
        return kStatusInvalidParameter;
    auto opened = SoundFile::open(pathOf(url));
    if (!opened) return statusFor(opened.failure());
    *file = files().insert(std::move(*opened));
    return noErr;
}

}  // namespace

std::shared_ptr<SoundFile> soundFileOf(AudioFileID file) {
    return files().share(file);
}

OSStatus copyProperty(const void* value, std::uint32_t valueBytes, std::uint32_t* dataBytes,
                      void* data) {
    if (dataBytes == nullptr || data == nullptr) return kStatusInvalidParameter;
    if (*dataBytes != valueBytes) return kStatusWrongPropertySize;
    std::memcpy(data, value, valueBytes);
    return noErr;
}

}  // namespace atdp::services

using namespace atdp::services;

OSStatus AudioFileOpenURL(CFURLRef url, std::int8_t permissions, std::uint32_t, AudioFileID* file) {
    return withoutExceptions([&] { return openUrl(url, permissions, file); });
}

OSStatus AudioFileClose(AudioFileID file) {
    return withoutExceptions([&] { return files().erase(file) ? noErr : kStatusInvalidParameter; });
}

OSStatus AudioFileGetProperty(AudioFileID file, std::uint32_t property, std::uint32_t* dataBytes,
                              void* data) {
    return withoutExceptions([&]() -> OSStatus {
        const SoundFile* sound = files().find(file);
        if (sound == nullptr) return kStatusInvalidParameter;
        if (property != kAudioFilePropertyFileFormat) return kStatusUnknownProperty;
        const std::uint32_t type = sound->description().fileType;
        return copyProperty(&type, sizeof(type), dataBytes, data);
    });
}
