#include "metadata/information_dictionary.h"

#include "metadata/text_scan.h"

namespace atdp {
namespace {

struct Row {
    const char* target;
    const char* source;
};

// Hosts find the nominal bit rate under the sample rate's key, where no reader before this one has
// put the sample rate there.
const Row kRows[] = {
    {METADATA_COMMON_KEY_ARTIST, "artist"},
    {METADATA_COMMON_KEY_TITLE, "title"},
    {METADATA_COMMON_KEY_SRC_BITS, "source bit depth"},
    {METADATA_COMMON_KEY_SRC_SAMPLERATE, "nominal bit rate"},
    {METADATA_COMMON_KEY_ALBUM, "album"},
};

ScopedCFDictionary readDictionary(AudioFileID file) {
    CFDictionaryRef dictionary = nullptr;
    std::uint32_t bytes = sizeof(dictionary);
    if (AudioFileGetProperty(file, kAudioFilePropertyInfoDictionary, &bytes, &dictionary) != noErr)
        return nullptr;
    return ScopedCFDictionary(dictionary);
}

// The text that the dictionary holds for a key the list lacks; null when there is none to add.
const std::string* missingText(const MetadataList& list, const char* target,
                               CFDictionaryRef dictionary, const char* source) {
    CFTypeRef value = nullptr;
    if (metadataValue(list, target) != nullptr ||
        !CFDictionaryGetValueIfPresent(dictionary, source, &value))
        return nullptr;
    return textOf(value);
}

}  // namespace

void getAudioFilePropertyInfo(AudioFileID file, MetadataList& list) {
    const ScopedCFDictionary dictionary = readDictionary(file);
    if (!dictionary) return;
    for (const Row& row : kRows)
        if (const auto* text = missingText(list, row.target, dictionary.get(), row.source))
            list.push_back({row.target, *text});
    // "3/12" is the third of twelve.
    if (const auto* text =
            missingText(list, METADATA_COMMON_KEY_TRACK, dictionary.get(), "track number"))
        list.push_back({METADATA_COMMON_KEY_TRACK,
                        integerValue(std::string_view(*text).substr(0, text->find('/')))});
}

}  // namespace atdp
