#include "platform/audio_file.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

#include "services/containers/mpeg4.h"
#include "services/core_foundation_object.h"
#include "services/edge.h"
#include "services/handle_table.h"
#include "services/limits.h"
#include "services/tags/information.h"
#include "services/tags/mpeg4_information.h"

namespace atdp::services {
namespace {

using FileTable = HandleTable<SoundFile, AudioFileID, 1>;

constinit ModuleWide<FileTable> files;

OSStatus openUrl(CFURLRef url, std::int8_t permissions, AudioFileID* file) {
    if (url == nullptr || file == nullptr || permissions != kAudioFileReadPermission)
        return kStatusInvalidParameter;
    auto opened = SoundFile::open(pathOf(url));
    if (!opened) return statusFor(opened.failure());
    *file = (*files).insert(std::move(*opened));
    return noErr;
}

OSStatus getGaplessCounts(SoundFile& sound, std::uint32_t* dataBytes, void* data) {
    const auto counts = sound.gaplessCounts();
    if (!counts) return statusFor(counts.failure());
    if (!*counts) return kStatusUnknownProperty;
    return copyProperty(&**counts, sizeof(**counts), dataBytes, data);
}

// Copies a part of the file out: the room must be exactly its size.
OSStatus copyRange(SoundFile& sound, ByteRange range, std::uint32_t* dataBytes, void* data) {
    if (dataBytes == nullptr || data == nullptr) return kStatusInvalidParameter;
    if (*dataBytes != range.bytes) return kStatusWrongPropertySize;
    const auto got =
        sound.source().readAt(range.offset, {static_cast<std::byte*>(data), range.bytes});
    return got && *got == range.bytes ? noErr : kStatusIoError;
}

OSStatus getId3Tag(SoundFile& sound, std::uint32_t* dataBytes, void* data) {
    const ByteRange tag = sound.description().id3Tag;
    if (tag.bytes == 0 || tag.bytes > kMaxTagBytes) return kStatusUnknownProperty;
    return copyRange(sound, tag, dataBytes, data);
}

bool isMpegFile(const SoundFile& sound) {
    const std::uint32_t type = sound.description().fileType;
    return type == kAudioFileMP1Type || type == kAudioFileMP2Type || type == kAudioFileMP3Type;
}

OSStatus getInformation(SoundFile& sound, std::uint32_t* dataBytes, void* data) {
    const TextMap information =
        isMpegFile(sound) ? readMpegInformation(sound.source())
        : isMpeg4(sound.description())
            ? readMpeg4Information(sound.source())
            : readChunkInformation(sound.source(), sound.description().tagChunks);
    return copyDictionary(std::make_unique<CFDictionary>(information), dataBytes, data);
}

// The user data items of a type: none but in WAVE files.
std::vector<ByteRange> userData(const SoundFile& sound, std::uint32_t type) {
    std::vector<ByteRange> items;
    if (sound.description().fileType != kAudioFileWAVEType) return items;
    for (const TagChunk& chunk : sound.description().tagChunks)
        if (chunk.identifier == type)
            items.push_back(
                {chunk.body.offset, std::min<std::uint64_t>(chunk.body.bytes, kMaxTagBytes)});
    return items;
}

OSStatus getProperty(SoundFile& sound, std::uint32_t property, std::uint32_t* dataBytes,
                     void* data) {
    switch (property) {
        case kAudioFilePropertyFileFormat:
            return copyProperty(&sound.description().fileType, sizeof(std::uint32_t), dataBytes,
                                data);
        case kAudioFilePropertyPacketTableInfo:
            return getGaplessCounts(sound, dataBytes, data);
        case kAudioFilePropertyID3Tag:
            return getId3Tag(sound, dataBytes, data);
        case kAudioFilePropertyInfoDictionary:
            return getInformation(sound, dataBytes, data);
        default:
            return kStatusUnknownProperty;
    }
}

// The size of a property that the file may have.
std::optional<std::uint32_t> propertyBytes(SoundFile& sound, std::uint32_t property) {
    switch (property) {
        case kAudioFilePropertyFileFormat:
            return sizeof(std::uint32_t);
        case kAudioFilePropertyPacketTableInfo: {
            const auto counts = sound.gaplessCounts();
            if (!counts || !*counts) return std::nullopt;
            return sizeof(AudioFilePacketTableInfo);
        }
        case kAudioFilePropertyID3Tag: {
            const std::uint64_t bytes = sound.description().id3Tag.bytes;
            if (bytes == 0 || bytes > kMaxTagBytes) return std::nullopt;
            return static_cast<std::uint32_t>(bytes);
        }
        case kAudioFilePropertyInfoDictionary:
            return sizeof(CFDictionaryRef);
        default:
            return std::nullopt;
    }
}

// Runs a call on the file behind a handle.
template <class Call>
OSStatus withFile(AudioFileID file, Call call) {
    return withoutExceptions([&]() -> OSStatus {
        SoundFile* sound = (*files).find(file);
        return sound ? call(*sound) : kStatusInvalidParameter;
    });
}

}  // namespace

std::shared_ptr<SoundFile> soundFileOf(AudioFileID file) {
    return (*files).share(file);
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
    return withoutExceptions(
        [&] { return (*files).erase(file) ? noErr : kStatusInvalidParameter; });
}

OSStatus AudioFileGetProperty(AudioFileID file, std::uint32_t property, std::uint32_t* dataBytes,
                              void* data) {
    return withFile(
        file, [&](SoundFile& sound) { return getProperty(sound, property, dataBytes, data); });
}

OSStatus AudioFileGetPropertyInfo(AudioFileID file, std::uint32_t property,
                                  std::uint32_t* dataBytes, std::uint32_t* isWritable) {
    return withFile(file, [&](SoundFile& sound) -> OSStatus {
        const auto bytes = propertyBytes(sound, property);
        if (!bytes) return kStatusUnknownProperty;
        if (dataBytes != nullptr) *dataBytes = *bytes;
        if (isWritable != nullptr) *isWritable = 0;
        return noErr;
    });
}

OSStatus AudioFileCountUserData(AudioFileID file, std::uint32_t type, std::uint32_t* count) {
    return withFile(file, [&](SoundFile& sound) -> OSStatus {
        if (count == nullptr) return kStatusInvalidParameter;
        *count = static_cast<std::uint32_t>(userData(sound, type).size());
        return noErr;
    });
}

OSStatus AudioFileGetUserDataSize(AudioFileID file, std::uint32_t type, std::uint32_t index,
                                  std::uint32_t* dataBytes) {
    return withFile(file, [&](SoundFile& sound) -> OSStatus {
        const auto items = userData(sound, type);
        if (index >= items.size() || dataBytes == nullptr) return kStatusInvalidParameter;
        *dataBytes = static_cast<std::uint32_t>(items[index].bytes);
        return noErr;
    });
}

OSStatus AudioFileGetUserData(AudioFileID file, std::uint32_t type, std::uint32_t index,
                              std::uint32_t* dataBytes, void* data) {
    return withFile(file, [&](SoundFile& sound) -> OSStatus {
        const auto items = userData(sound, type);
        if (index >= items.size()) return kStatusInvalidParameter;
        return copyRange(sound, items[index], dataBytes, data);
    });
}
