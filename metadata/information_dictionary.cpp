#include "metadata/information_dictionary.h"

#include "metadata/dictionary_lookup.h"
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

}  // namespace

void getAudioFilePropertyInfo(AudioFileID file, MetadataList& list) {
    const ScopedCFDictionary dictionary = readDictionary(file);
    for (const Row& row : kRows)
        if (const auto* text = firstText(dictionary.get(), {row.source}))
            addIfMissing(list, row.target, *text);
    // "3/12" is the third of twelve.
    if (const auto* text = firstText(dictionary.get(), {"track number"}))
        addIfMissing(list, METADATA_COMMON_KEY_TRACK,
                     integerValue(std::string_view(*text).substr(0, text->find('/'))));
}

}  // namespace atdp
