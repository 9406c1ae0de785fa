// A platform that answers what a test tells it to and writes down what it was asked.
//
// It stands in for services/ at the link. It serves one imagined sound file under every path, and
// each call on it succeeds unless the script says otherwise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/audio_file.h"
#include "platform/audio_format.h"
#include "platform/extended_audio_file.h"
#include "platform/string_encoding.h"

namespace scripted {

using Lines = std::vector<std::string>;
using Bytes = std::vector<std::byte>;

struct Failure {
    OSStatus status;
    int callsBefore = 0;  // calls that still succeed
};

// An object in a dictionary: text, or a dictionary of more.
struct Entry;
struct Value {
    std::optional<std::string> text;
    std::vector<Entry> entries;
};
struct Entry {
    std::string key;
    Value value;
};

// The sample that the imagined file holds: each has its own value. A reader of another rate counts
// frames at that rate, as many as last as long, and of another channel count has just as many.
float sampleAt(std::int64_t frame, std::uint32_t channel);

// A call's name is its function and, where it has a property, the property's code:
// "AudioFileOpenURL", "ExtAudioFileGetProperty #frm". With user data it has the type, and the index
// of an item: "AudioFileCountUserData LIST", "AudioFileGetUserData LIST 0".
struct Platform {
    // The script.
    std::map<std::string, Failure> failures;            // by call
    std::map<std::string, std::uint32_t> returnedSize;  // by call, where it is not the value's own
    AudioStreamBasicDescription format{44100, kAudioFormatLinearPCM, 12, 4, 1, 4, 2, 16, 0};
    std::int64_t frames = 1'000'000;
    std::map<std::string, Bytes> fileProperties;  // of the audio file, by code; none at first
    std::optional<Value> information;             // the file's information dictionary
    std::map<std::string, std::vector<std::string>> userData;  // the file's items, by type
    Value tag;                                                 // what an ID3 tag converts to
    std::map<std::string, Value> tags;  // the same by the tag's bytes; others are then refused
    std::map<std::string, NSStringEncoding> estimates;  // by the bytes; of others it is UTF-8
    std::int64_t framesMissing = 0;      // at the end of `frames`: the data ends early
    std::uint32_t framesOverstated = 0;  // how many a read claims that it did not give
    std::function<float(std::int64_t frame, std::uint32_t channel)> sample = sampleAt;

    // The record.
    Lines calls;   // name, object and main arguments
    Lines log;     // lines as a reader of the log sees them
    Lines faults;  // calls on objects that were never made or are released
    Lines live() const;
};

// The one in force; every test starts with a fresh one.
Platform& platform();
void resetPlatform();

// An ID3 tag, as converted, with that gapless comment.
Value gaplessTag(const std::string& text);

template <class Record>
Bytes bytesOf(const Record& value) {
    Bytes bytes(sizeof(Record));
    std::memcpy(bytes.data(), &value, sizeof(Record));
    return bytes;
}

}  // namespace scripted
