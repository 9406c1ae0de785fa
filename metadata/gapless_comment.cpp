#include "metadata/gapless_comment.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <memory>

#include "metadata/text_scan.h"
#include "platform/audio_format.h"

namespace atdp {
namespace {

struct Free {
    void operator()(void* block) const { std::free(block); }
};

// The file's ID3 tag; null when there is none that can be read.
ScopedCFDictionary readTag(AudioFileID file) {
    std::uint32_t room = 0;
    if (AudioFileGetPropertyInfo(file, kAudioFilePropertyID3Tag, &room, nullptr) != noErr)
        return nullptr;
    const std::unique_ptr<void, Free> tag(std::malloc(room));
    std::uint32_t bytes = room;
    if (!tag || AudioFileGetProperty(file, kAudioFilePropertyID3Tag, &bytes, tag.get()) != noErr)
        return nullptr;
    CFDictionaryRef dictionary = nullptr;
    std::uint32_t dictionaryBytes = sizeof(dictionary);
    if (AudioFormatGetProperty(kAudioFormatProperty_ID3TagToDictionary, std::min(bytes, room),
                               tag.get(), &dictionaryBytes, &dictionary) != noErr)
        return nullptr;
    return ScopedCFDictionary(dictionary);
}

// Null when the key is absent, or when there is no dictionary to look it up in.
CFTypeRef valueFor(CFDictionaryRef dictionary, const char* key) {
    CFTypeRef value = nullptr;
    const bool present =
        dictionary != nullptr && CFDictionaryGetValueIfPresent(dictionary, key, &value);
    return present ? value : nullptr;
}

// The comments stand under one of three names; the first that is there counts.
CFTypeRef commentsOf(CFDictionaryRef tag) {
    for (const char* key : {"comments", "COMM", "COM"})
        if (const CFTypeRef comments = valueFor(tag, key)) return comments;
    return nullptr;
}

CFDictionaryRef asDictionary(CFTypeRef object) {
    return object == nullptr ? nullptr : dictionaryOf(object);
}

const std::string* gaplessText(CFDictionaryRef tag) {
    const CFTypeRef entry = valueFor(asDictionary(commentsOf(tag)), "iTunSMPB");
    const CFTypeRef text = valueFor(asDictionary(entry), "text");
    return text == nullptr ? nullptr : textOf(text);
}

// The fields that count, split at single blanks: one unused, priming, remainder, valid frames.
using Fields = std::array<std::string_view, 4>;

bool splitFields(std::string_view text, Fields* fields) {
    std::size_t start = 0;
    for (std::string_view& field : *fields) {
        if (start > text.size()) return false;
        const std::size_t end = std::min(text.find(' ', start), text.size());
        field = text.substr(start, end - start);
        start = end + 1;
    }
    return true;
}

// Hexadecimal, two's complement: all ones, which a number that is too long gives too, is -1.
template <class Signed, class Unsigned>
bool scanField(std::string_view field, Signed* number) {
    const auto value = scanHexadecimal(field, std::numeric_limits<Unsigned>::max());
    if (value) *number = static_cast<Signed>(*value);
    return value.has_value();
}

}  // namespace

bool getAudioFilePacketTableInfoFromID3tag(AudioFilePacketTableInfo* table, AudioFileID file) {
    const ScopedCFDictionary tag = readTag(file);
    const std::string* text = tag ? gaplessText(tag.get()) : nullptr;
    Fields fields;
    if (text == nullptr || !splitFields(trimmedBlanks(*text), &fields)) return false;
    AudioFilePacketTableInfo scanned{};
    if (!scanField<std::int64_t, std::uint64_t>(fields[3], &scanned.mNumberValidFrames) ||
        !scanField<std::int32_t, std::uint32_t>(fields[1], &scanned.mPrimingFrames) ||
        !scanField<std::int32_t, std::uint32_t>(fields[2], &scanned.mRemainderFrames))
        return false;
    *table = scanned;
    return true;
}

}  // namespace atdp
