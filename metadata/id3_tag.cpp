#include "metadata/id3_tag.h"

#include "metadata/dictionary_lookup.h"
#include "metadata/tag_dictionary.h"
#include "metadata/user_data.h"

namespace atdp {
namespace {

constexpr std::uint32_t kTagType = fourCharCode("id3 ");

// The descriptive name, that of a frame of versions 2.3 and 2.4, that of version 2.2.
using Names = std::initializer_list<const char*>;

void addFirstText(CFDictionaryRef tag, Names names, const char* key, MetadataList& list) {
    if (const std::string* text = firstText(tag, names)) addIfMissing(list, key, *text);
}

}  // namespace

void checkID3v2Tag(AudioFileID file, MetadataList& list) {
    const std::uint32_t count = countUserData(file, kTagType);
    for (std::uint32_t index = 0; index < count; ++index) {
        const ScopedCFDictionary tag = tagDictionary(readUserData(file, kTagType, index));
        addFirstText(tag.get(), {"title", "TIT2", "TT2"}, METADATA_COMMON_KEY_TITLE, list);
        addFirstText(tag.get(), {"artist", "TPE1", "TP1"}, METADATA_COMMON_KEY_ARTIST, list);
    }
}

}  // namespace atdp
