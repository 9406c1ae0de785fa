#include "tests/support/scripted_platform.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <deque>
#include <mutex>
#include <optional>
#include <sstream>

#include "platform/app_kit.h"
#include "platform/log.h"

double NSAppKitVersionNumber = 1138.0;

namespace scripted {
namespace {

// What a handle stands for. Objects stay after their release, so that no address comes twice.
struct Object {
    std::string name;
    std::string text;  // what %@ shows
    bool live = true;
    Object* file = nullptr;     // of a reader
    std::int64_t position = 0;  // of a reader, in frames of its client format
    double rate = 0;
    std::uint32_t channels = 0;
    const Value* value = nullptr;    // of a dictionary, and of what is in one
    const Object* holder = nullptr;  // the dictionary that it is in, and lives as long as
};

struct State {
    Platform platform;
    std::deque<Object> objects;
    std::map<std::string, int> made;  // by kind
};

std::optional<State> state(std::in_place);
std::mutex recordLock;

Object* make(const std::string& kind) {
    const std::string name = kind + " " + std::to_string(++state->made[kind]);
    return &state->objects.emplace_back(Object{.name = name, .text = name});
}

Object* find(const void* handle) {
    const auto found = std::find_if(state->objects.begin(), state->objects.end(),
                                    [handle](const Object& object) { return &object == handle; });
    return found == state->objects.end() ? nullptr : &*found;
}

bool isLive(const Object* object) {
    while (object != nullptr && object->holder != nullptr) object = object->holder;
    return object != nullptr && object->live;
}

template <class... Words>
std::string line(const std::string& first, const Words&... others) {
    std::ostringstream out;
    out << first;
    ((out << ' ' << others), ...);
    return out.str();
}

std::string codeText(std::uint32_t code) {
    const std::uint32_t shifts[] = {24, 16, 8, 0};
    std::string text;
    for (const std::uint32_t shift : shifts) text += static_cast<char>(code >> shift & 0xFF);
    return text;
}

// Writes a call down, on any thread; its status comes from the script.
template <class... Arguments>
OSStatus record(const std::string& call, const Arguments&... arguments) {
    const std::scoped_lock recording(recordLock);
    platform().calls.push_back(line(call, arguments...));
    const auto failure = platform().failures.find(call);
    if (failure == platform().failures.end() || failure->second.callsBefore-- > 0) return noErr;
    return failure->second.status;
}

// The same for a call on an object, which must be there.
template <class... Arguments>
OSStatus recordOn(const void* handle, const std::string& call, const Arguments&... arguments) {
    const Object* object = find(handle);
    const OSStatus status = record(call, object ? object->name : "nothing", arguments...);
    if (isLive(object)) return status;
    platform().faults.push_back(platform().calls.back());
    return kStatusInvalidParameter;
}

OSStatus release(const void* handle, const std::string& call) {
    const OSStatus status = recordOn(handle, call);
    Object* object = find(handle);
    if (object == nullptr) return status;
    if (object->holder != nullptr) platform().faults.push_back(platform().calls.back());
    object->live = false;
    return status;
}

CFDictionaryRef makeDictionary(const Value& value) {
    Object* dictionary = make("dictionary");
    dictionary->value = &value;
    return reinterpret_cast<CFDictionaryRef>(dictionary);
}

// What a handle stands for in a dictionary; a use after the dictionary's release is a fault.
const Value& valueOf(CFTypeRef object) {
    const Object* found = find(object);
    if (isLive(found) && found->value != nullptr) return *found->value;
    static const Value kNothing;
    platform().faults.push_back("use of " + (found ? found->name : "nothing"));
    return kNothing;
}

// In frames of the reader's client format, halves rounded up.
std::int64_t endOfData(const Object& reader) {
    const std::int64_t frames = platform().frames - platform().framesMissing;
    const double ratio = reader.rate / platform().format.mSampleRate;
    if (!(std::abs(ratio) < 1e6)) return frames;
    return static_cast<std::int64_t>(std::floor(static_cast<double>(frames) * ratio + 0.5));
}

template <class Content>
std::uint32_t sizeToReturn(const std::string& call, const Content& value) {
    const auto size = platform().returnedSize.find(call);
    return size == platform().returnedSize.end() ? static_cast<std::uint32_t>(value.size())
                                                 : size->second;
}

template <class Content>
OSStatus answer(const std::string& call, const Content& value, std::uint32_t* dataBytes,
                void* data) {
    std::memcpy(data, value.data(), std::min<std::size_t>(*dataBytes, value.size()));
    *dataBytes = sizeToReturn(call, value);
    return noErr;
}

}  // namespace

Platform& platform() {
    return state->platform;
}

void resetPlatform() {
    state.emplace();
    NSAppKitVersionNumber = 1138.0;
}

Lines Platform::live() const {
    Lines names;
    for (const Object& object : state->objects)
        if (object.live && object.holder == nullptr) names.push_back(object.name);
    return names;
}

float sampleAt(std::int64_t frame, std::uint32_t channel) {
    return static_cast<float>(frame * 8 + channel);
}

Value gaplessTag(const std::string& text) {
    const Value comment{std::nullopt, {{"text", {text}}}};
    const Value comments{std::nullopt, {{"iTunSMPB", comment}}};
    return {std::nullopt, {{"comments", comments}}};
}

}  // namespace scripted

using namespace scripted;

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef, const std::uint8_t* buffer,
                                                 long length, bool isDirectory) {
    const std::string path(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(length));
    if (record("CFURLCreateFromFileSystemRepresentation", path, isDirectory) != noErr)
        return nullptr;
    Object* url = make("url");
    url->text = "file://" + path;
    return reinterpret_cast<CFURLRef>(url);
}

void CFRelease(CFTypeRef object) {
    release(object, "CFRelease");
}

bool CFDictionaryGetValueIfPresent(CFDictionaryRef dictionary, std::string_view key,
                                   CFTypeRef* value) {
    for (const Entry& entry : valueOf(dictionary).entries) {
        if (entry.key != key) continue;
        *value = &state->objects.emplace_back(
            Object{.name = entry.key, .value = &entry.value, .holder = find(dictionary)});
        return true;
    }
    return false;
}

const std::string* textOf(CFTypeRef object) {
    const Value& value = valueOf(object);
    return value.text ? &*value.text : nullptr;
}

CFDictionaryRef dictionaryOf(CFTypeRef object) {
    return valueOf(object).text ? nullptr : static_cast<CFDictionaryRef>(object);
}

OSStatus AudioFileOpenURL(CFURLRef url, std::int8_t permissions, std::uint32_t fileTypeHint,
                          AudioFileID* file) {
    const OSStatus status = recordOn(url, "AudioFileOpenURL", int{permissions}, fileTypeHint);
    if (status == noErr) *file = reinterpret_cast<AudioFileID>(make("file"));
    return status;
}

OSStatus AudioFileClose(AudioFileID file) {
    return release(file, "AudioFileClose");
}

OSStatus AudioFileGetProperty(AudioFileID file, std::uint32_t property, std::uint32_t* dataBytes,
                              void* data) {
    const std::string call = "AudioFileGetProperty " + codeText(property);
    const OSStatus status = recordOn(file, call, *dataBytes);
    if (status != noErr) return status;
    if (property == kAudioFilePropertyInfoDictionary && platform().information)
        return answer(call, bytesOf(makeDictionary(*platform().information)), dataBytes, data);
    const auto value = platform().fileProperties.find(codeText(property));
    if (value == platform().fileProperties.end()) return kStatusUnknownProperty;
    return answer(call, value->second, dataBytes, data);
}

OSStatus AudioFileGetPropertyInfo(AudioFileID file, std::uint32_t property,
                                  std::uint32_t* dataBytes, std::uint32_t*) {
    const std::string call = "AudioFileGetPropertyInfo " + codeText(property);
    const OSStatus status = recordOn(file, call);
    if (status != noErr) return status;
    const auto value = platform().fileProperties.find(codeText(property));
    if (value == platform().fileProperties.end()) return kStatusUnknownProperty;
    *dataBytes = sizeToReturn(call, value->second);
    return noErr;
}

OSStatus AudioFileCountUserData(AudioFileID file, std::uint32_t type, std::uint32_t* count) {
    const OSStatus status = recordOn(file, line("AudioFileCountUserData", codeText(type)));
    if (status == noErr)
        *count = static_cast<std::uint32_t>(platform().userData[codeText(type)].size());
    return status;
}

OSStatus AudioFileGetUserDataSize(AudioFileID file, std::uint32_t type, std::uint32_t index,
                                  std::uint32_t* dataBytes) {
    const std::string call = line("AudioFileGetUserDataSize", codeText(type), index);
    const OSStatus status = recordOn(file, call);
    if (status == noErr)
        *dataBytes = sizeToReturn(call, platform().userData[codeText(type)].at(index));
    return status;
}

OSStatus AudioFileGetUserData(AudioFileID file, std::uint32_t type, std::uint32_t index,
                              std::uint32_t* dataBytes, void* data) {
    const std::string call = line("AudioFileGetUserData", codeText(type), index);
    const OSStatus status = recordOn(file, call, *dataBytes);
    if (status != noErr) return status;
    return answer(call, platform().userData[codeText(type)].at(index), dataBytes, data);
}

OSStatus AudioFormatGetProperty(std::uint32_t property, std::uint32_t specifierBytes,
                                const void* specifier, std::uint32_t* dataBytes, void* data) {
    const std::string call = "AudioFormatGetProperty " + codeText(property);
    const std::string bytes(static_cast<const char*>(specifier), specifierBytes);
    const OSStatus status = record(call, bytes, *dataBytes);
    if (status != noErr) return status;
    const auto own = platform().tags.find(bytes);
    if (own == platform().tags.end() && !platform().tags.empty()) return kStatusDamagedFile;
    const Value& tag = own == platform().tags.end() ? platform().tag : own->second;
    return answer(call, bytesOf(makeDictionary(tag)), dataBytes, data);
}

OSStatus ExtAudioFileOpenURL(CFURLRef url, ExtAudioFileRef* reader) {
    const OSStatus status = recordOn(url, "ExtAudioFileOpenURL");
    if (status == noErr) *reader = reinterpret_cast<ExtAudioFileRef>(make("reader"));
    return status;
}

OSStatus ExtAudioFileWrapAudioFileID(AudioFileID file, bool forWriting, ExtAudioFileRef* reader) {
    const OSStatus status = recordOn(file, "ExtAudioFileWrapAudioFileID", forWriting);
    if (status != noErr) return status;
    Object* made = make("reader");
    made->file = find(file);
    *reader = reinterpret_cast<ExtAudioFileRef>(made);
    return noErr;
}

OSStatus ExtAudioFileDispose(ExtAudioFileRef reader) {
    return release(reader, "ExtAudioFileDispose");
}

OSStatus ExtAudioFileGetProperty(ExtAudioFileRef reader, std::uint32_t property,
                                 std::uint32_t* dataBytes, void* data) {
    const std::string call = "ExtAudioFileGetProperty " + codeText(property);
    const OSStatus status = recordOn(reader, call, *dataBytes);
    if (status != noErr) return status;
    switch (property) {
        case kExtAudioFileProperty_FileLengthFrames:
            return answer(call, bytesOf(platform().frames), dataBytes, data);
        case kExtAudioFileProperty_AudioFile:
            return answer(call, bytesOf(find(reader)->file), dataBytes, data);
        case kExtAudioFileProperty_FileDataFormat:
            return answer(call, bytesOf(platform().format), dataBytes, data);
        default:
            return kStatusUnknownProperty;
    }
}

OSStatus ExtAudioFileSetProperty(ExtAudioFileRef reader, std::uint32_t property,
                                 std::uint32_t dataBytes, const void* data) {
    AudioStreamBasicDescription format{};
    std::memcpy(&format, data, std::min<std::size_t>(dataBytes, sizeof(format)));
    const OSStatus status =
        recordOn(reader, "ExtAudioFileSetProperty " + codeText(property), dataBytes,
                 format.mSampleRate, codeText(format.mFormatID), format.mFormatFlags,
                 format.mBytesPerPacket, format.mFramesPerPacket, format.mBytesPerFrame,
                 format.mChannelsPerFrame, format.mBitsPerChannel, format.mReserved);
    if (status != noErr) return status;
    find(reader)->rate = format.mSampleRate;
    find(reader)->channels = format.mChannelsPerFrame;
    return noErr;
}

OSStatus ExtAudioFileRead(ExtAudioFileRef reader, std::uint32_t* frames, AudioBufferList* list) {
    const AudioBuffer buffer = list == nullptr ? AudioBuffer{} : list->mBuffers[0];
    const OSStatus status =
        recordOn(reader, "ExtAudioFileRead", *frames, list == nullptr ? 0 : list->mNumberBuffers,
                 buffer.mNumberChannels, buffer.mDataByteSize);
    if (status != noErr) return status;
    if (buffer.mData == nullptr) return kStatusInvalidParameter;
    Object& source = *find(reader);
    const std::uint32_t frameBytes = 4 * source.channels;
    const std::int64_t left = std::max<std::int64_t>(endOfData(source) - source.position, 0);
    const std::uint32_t room = frameBytes == 0 ? 0 : buffer.mDataByteSize / frameBytes;
    const std::int64_t count = std::min({std::int64_t{*frames}, std::int64_t{room}, left});
    auto* sample = static_cast<float*>(buffer.mData);
    for (std::int64_t frame = 0; frame < count; ++frame)
        for (std::uint32_t channel = 0; channel < source.channels; ++channel)
            *sample++ = platform().sample(source.position + frame, channel);
    source.position += count;
    if (count > 0) list->mBuffers[0].mDataByteSize = static_cast<std::uint32_t>(count) * frameBytes;
    *frames = static_cast<std::uint32_t>(count) + platform().framesOverstated;
    return noErr;
}

OSStatus ExtAudioFileSeek(ExtAudioFileRef reader, std::int64_t frame) {
    const OSStatus status = recordOn(reader, "ExtAudioFileSeek", frame);
    if (status == noErr && frame < 0) return kStatusInvalidSeek;
    if (status == noErr) find(reader)->position = frame;
    return status;
}

// A stand-in: the bytes as they are, with the encoding after them where it is not UTF-8.
std::optional<std::string> stringWithBytes(std::span<const std::byte> bytes,
                                           NSStringEncoding encoding) {
    const std::string text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (record("stringWithBytes", text, encoding) != noErr) return std::nullopt;
    return encoding == NSUTF8StringEncoding ? text : line(text, encoding);
}

NSStringEncoding estimateStringEncoding(std::span<const std::byte> bytes) {
    const std::string text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    record("estimateStringEncoding", text);
    const auto estimate = platform().estimates.find(text);
    return estimate == platform().estimates.end() ? NSUTF8StringEncoding : estimate->second;
}

void NSLogArguments(const char* format, std::initializer_list<LogArgument> arguments) {
    std::string text;
    auto argument = arguments.begin();
    for (const char* at = format; *at != '\0';) {
        const std::size_t length = *at == '%' ? std::strcspn(at, "@duxX") + 1 : 1;
        const std::string piece(at, length);
        at += length;
        char number[32];
        if (piece.size() == 1) {
            text += piece;
        } else if (piece == "%@") {
            text += find(std::get<CFTypeRef>(*argument++))->text;
        } else {
            std::snprintf(number, sizeof(number), piece.c_str(), std::get<long>(*argument++));
            text += number;
        }
    }
    platform().log.push_back(text);
}
