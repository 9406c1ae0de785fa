// The metadata list that a decoder hands to the host, and its keys.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/export.h"

// Keys of the list. One more, "Channels", has no constant.
extern "C" {
ATDP_EXPORT extern const char* const METADATA_COMMON_KEY_ARTIST;
ATDP_EXPORT extern const char* const METADATA_COMMON_KEY_TITLE;
ATDP_EXPORT extern const char* const METADATA_COMMON_KEY_SRC_BITS;
ATDP_EXPORT extern const char* const METADATA_COMMON_KEY_SRC_SAMPLERATE;
ATDP_EXPORT extern const char* const METADATA_COMMON_KEY_ALBUM;
ATDP_EXPORT extern const char* const METADATA_COMMON_KEY_TRACK;
}

namespace atdp {

inline constexpr const char* kMetadataKeyChannels = "Channels";

// Text is UTF-8; numbers keep the kind that their source has.
using MetadataValue = std::variant<std::string, std::int64_t, std::uint64_t, float>;

struct MetadataEntry {
    std::string key;
    MetadataValue value;
};

// One fact an entry, in the order in which the sources were asked. Every producer looks a key up
// before it adds it, so the first source to supply a key wins.
using MetadataList = std::vector<MetadataEntry>;

// The value of the first entry with that key, or null. Valid until the list changes.
const MetadataValue* metadataValue(const MetadataList& list, std::string_view key);

// Appends an entry where the list has no such key yet. Throws std::bad_alloc.
template <class Value>
void addIfMissing(MetadataList& list, const char* key, const Value& value) {
    if (metadataValue(list, key) == nullptr) list.push_back({key, value});
}

}  // namespace atdp
