#include "platform/extended_audio_file.h"

#include <algorithm>
#include <cstring>

#include "services/convert/converting_reader.h"
#include "services/edge.h"
#include "services/handle_table.h"

namespace atdp::services {
namespace {

struct OpenReader {
    ConvertingReader reader;
    AudioFileID file;  // the handle that was wrapped; null where the reader opened the file itself
};
using ReaderTable = HandleTable<OpenReader, ExtAudioFileRef, 2>;

constinit ModuleWide<ReaderTable> readers;

OSStatus openUrl(CFURLRef url, ExtAudioFileRef* reader) {
    if (url == nullptr || reader == nullptr) return kStatusInvalidParameter;
    auto file = SoundFile::open(pathOf(url));
    if (!file) return statusFor(file.failure());
    *reader = (*readers).insert(
        std::make_shared<OpenReader>(OpenReader{ConvertingReader(std::move(*file)), nullptr}));
    return noErr;
}

OSStatus wrap(AudioFileID file, bool forWriting, ExtAudioFileRef* reader) {
    auto sound = soundFileOf(file);
    if (sound == nullptr || forWriting || reader == nullptr) return kStatusInvalidParameter;
    *reader = (*readers).insert(
        std::make_shared<OpenReader>(OpenReader{ConvertingReader(std::move(sound)), file}));
    return noErr;
}

OSStatus getProperty(OpenReader& open, std::uint32_t property, std::uint32_t* dataBytes,
                     void* data) {
    switch (property) {
        case kExtAudioFileProperty_FileDataFormat:
            return copyProperty(&open.reader.file().description().format,
                                sizeof(AudioStreamBasicDescription), dataBytes, data);
        case kExtAudioFileProperty_FileLengthFrames: {
            const auto frames = open.reader.file().lengthInFrames();
            if (!frames) return statusFor(frames.failure());
            return copyProperty(&*frames, sizeof(*frames), dataBytes, data);
        }
        case kExtAudioFileProperty_AudioFile:
            return copyProperty(&open.file, sizeof(open.file), dataBytes, data);
        case kExtAudioFileProperty_ClientDataFormat:
            return copyProperty(&open.reader.clientFormat(), sizeof(AudioStreamBasicDescription),
                                dataBytes, data);
        default:
            return kStatusUnknownProperty;
    }
}

OSStatus read(OpenReader& open, std::uint32_t* frames, AudioBufferList* list) {
    if (frames == nullptr || list == nullptr || list->mNumberBuffers == 0 ||
        list->mBuffers[0].mData == nullptr)
        return kStatusInvalidParameter;
    AudioBuffer& buffer = list->mBuffers[0];
    const auto bytesPerFrame =
        static_cast<std::uint32_t>(open.reader.clientFormat().mChannelsPerFrame * sizeof(float));
    if (bytesPerFrame == 0) return kStatusUnsupportedFormat;
    std::uint32_t wanted = *frames;
    if (std::uint64_t{wanted} * bytesPerFrame > buffer.mDataByteSize)
        wanted = buffer.mDataByteSize / bytesPerFrame;
    if (!open.reader.read(static_cast<float*>(buffer.mData), &wanted)) return kStatusIoError;
    *frames = wanted;
    if (wanted > 0) buffer.mDataByteSize = wanted * bytesPerFrame;
    return noErr;
}

// Runs a call on the reader behind a handle.
template <class Call>
OSStatus withReader(ExtAudioFileRef reader, Call call) {
    return withoutExceptions([&]() -> OSStatus {
        OpenReader* open = (*readers).find(reader);
        return open ? call(*open) : kStatusInvalidParameter;
    });
}

}  // namespace
}  // namespace atdp::services

using namespace atdp::services;

OSStatus ExtAudioFileOpenURL(CFURLRef url, ExtAudioFileRef* reader) {
    return withoutExceptions([&] { return openUrl(url, reader); });
}

OSStatus ExtAudioFileWrapAudioFileID(AudioFileID file, bool forWriting, ExtAudioFileRef* reader) {
    return withoutExceptions([&] { return wrap(file, forWriting, reader); });
}

OSStatus ExtAudioFileDispose(ExtAudioFileRef reader) {
    return withoutExceptions(
        [&] { return (*readers).erase(reader) ? noErr : kStatusInvalidParameter; });
}

OSStatus ExtAudioFileGetProperty(ExtAudioFileRef reader, std::uint32_t property,
                                 std::uint32_t* dataBytes, void* data) {
    return withReader(
        reader, [&](OpenReader& open) { return getProperty(open, property, dataBytes, data); });
}

OSStatus ExtAudioFileSetProperty(ExtAudioFileRef reader, std::uint32_t property,
                                 std::uint32_t dataBytes, const void* data) {
    return withReader(reader, [&](OpenReader& open) -> OSStatus {
        if (property != kExtAudioFileProperty_ClientDataFormat) return kStatusUnknownProperty;
        AudioStreamBasicDescription format;
        if (data == nullptr) return kStatusInvalidParameter;
        if (dataBytes != sizeof(format)) return kStatusWrongPropertySize;
        std::memcpy(&format, data, sizeof(format));
        return open.reader.setClientFormat(format);
    });
}

OSStatus ExtAudioFileRead(ExtAudioFileRef reader, std::uint32_t* frames, AudioBufferList* list) {
    return withReader(reader, [&](OpenReader& open) { return read(open, frames, list); });
}

OSStatus ExtAudioFileSeek(ExtAudioFileRef reader, std::int64_t frame) {
    return withReader(reader, [&](OpenReader& open) { return open.reader.seek(frame); });
}
