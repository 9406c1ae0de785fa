#include "metadata/gapless_comment.h"

#include <algorithm>
#include <array>
#include <limits>

#include "metadata/dictionary_lookup.h"
#include "metadata/tag_dictionary.h"
#include "metadata/text_scan.h"

namespace atdp {
namespace {

// The file's ID3 tag; null when there is none that can be read.
ScopedCFDictionary readTag(AudioFileID file) {
    std::uint32_t room = 0;
    if (AudioFileGetPropertyInfo(file, kAudioFilePropertyID3Tag, &room, nullptr) != noErr)
        return nullptr;
    return tagDictionary(readBlock(room, [file](std::uint32_t* bytes, void* data) {
        return AudioFileGetProperty(file, kAudioFilePropertyID3Tag, bytes, data);
    }));
}

const std::string* gaplessText(CFDictionaryRef tag) {
    const CFDictionaryRef comments = firstDictionary(tag, {"comments", "COMM", "COM"});
    return firstText(firstDictionary(comments, {"iTunSMPB"}), {"text"});
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
    const std::string* text = gaplessText(tag.get());
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
