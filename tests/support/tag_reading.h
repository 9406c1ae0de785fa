// What a program reads of tags.
#pragma once

#include <optional>
#include <string>

#include "platform/audio_format.h"
#include "services/tags/information.h"
#include "tests/support/id3_builder.h"
#include "tests/support/memory_source.h"

namespace atdp::test {

inline services::TextMap mpegInformation(const std::string& file) {
    MemorySource source(file);
    return services::readMpegInformation(source);
}

inline OSStatus convert(const std::string& tag, ScopedCFDictionary& dictionary) {
    CFDictionaryRef made = nullptr;
    std::uint32_t size = sizeof(made);
    const OSStatus status =
        AudioFormatGetProperty(kAudioFormatProperty_ID3TagToDictionary,
                               static_cast<std::uint32_t>(tag.size()), tag.data(), &size, &made);
    dictionary.reset(made);
    return status;
}

inline std::optional<std::string> textAt(CFDictionaryRef dictionary, const std::string& key) {
    CFTypeRef value = nullptr;
    if (!CFDictionaryGetValueIfPresent(dictionary, key, &value)) return std::nullopt;
    return textOf(value) != nullptr ? *textOf(value) : "(not text)";
}

// The text of a frame in a tag, or why there is none.
inline std::string frameText(const std::string& tag, const std::string& identifier = "TIT2") {
    ScopedCFDictionary dictionary;
    if (convert(tag, dictionary) != noErr) return "(refused)";
    return textAt(dictionary.get(), identifier).value_or("(absent)");
}

// The text of the comment with that description, or why there is none.
inline std::string commentText(const std::string& tag, const std::string& description) {
    ScopedCFDictionary dictionary;
    CFTypeRef comments = nullptr, comment = nullptr;
    if (convert(tag, dictionary) != noErr ||
        !CFDictionaryGetValueIfPresent(dictionary.get(), "comments", &comments) ||
        !CFDictionaryGetValueIfPresent(dictionaryOf(comments), description, &comment))
        return "(absent)";
    return textAt(dictionaryOf(comment), "text").value_or("(absent)");
}

// The text of the frame in a tag with a title and no more.
inline std::string title(const std::string& content, int version = 4, int frameFlags = 0,
                         int tagFlags = 0) {
    return frameText(id3Tag(
        version, id3Frame(version, version == 2 ? "TT2" : "TIT2", content, frameFlags), tagFlags));
}

}  // namespace atdp::test
