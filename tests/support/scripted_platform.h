// A platform that answers what a test tells it to and writes down what it was asked.
//
// It stands in for services/ at the link. It serves one imagined sound file under every path, and
// each call on it succeeds unless the script says otherwise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "platform/audio_file.h"
#include "platform/extended_audio_file.h"

namespace scripted {

using Lines = std::vector<std::string>;
using Bytes = std::vector<std::byte>;

struct Failure {
    OSStatus status;
    int callsBefore = 0;  // calls that still succeed
};

// A call's name is its function and, where it has a property, the property's code:
// "AudioFileOpenURL", "ExtAudioFileGetProperty #frm".
struct Platform {
    // The script.
    std::map<std::string, Failure> failures;            // by call
    std::map<std::string, std::uint32_t> returnedSize;  // by call, where it is not the value's own
    AudioStreamBasicDescription format{44100, kAudioFormatLinearPCM, 12, 4, 1, 4, 2, 16, 0};
    std::int64_t frames = 1'000'000;
    std::map<std::string, Bytes> fileProperties;  // of the audio file, by code; none at first

    // The record.
    Lines calls;   // name, object and main arguments
    Lines log;     // lines as a reader of the log sees them
    Lines faults;  // calls on objects that were never made or are released
    Lines live() const;
};

// The one in force; every test starts with a fresh one.
Platform& platform();
void resetPlatform();

// The sample that the imagined file holds: each has its own value.
float sampleAt(std::int64_t frame, std::uint32_t channel);

template <class Value>
Bytes bytesOf(const Value& value) {
    Bytes bytes(sizeof(Value));
    std::memcpy(bytes.data(), &value, sizeof(Value));
    return bytes;
}

}  // namespace scripted
