#include "metadata/metadata_list.h"

#include <algorithm>

const char* const METADATA_COMMON_KEY_ARTIST = "Artist";
const char* const METADATA_COMMON_KEY_TITLE = "Title";
const char* const METADATA_COMMON_KEY_SRC_BITS = "SrcBits";
const char* const METADATA_COMMON_KEY_SRC_SAMPLERATE = "SrcSampleRate";
const char* const METADATA_COMMON_KEY_ALBUM = "Album";
const char* const METADATA_COMMON_KEY_TRACK = "Track";

namespace atdp {

const MetadataValue* metadataValue(const MetadataList& list, std::string_view key) {
    const auto found = std::find_if(list.begin(), list.end(),
                                    [key](const MetadataEntry& entry) { return entry.key == key; });
    return found == list.end() ? nullptr : &found->value;
}

}  // namespace atdp
