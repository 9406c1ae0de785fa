// What holds of lists of metadata.
#pragma once

#include <span>
#include <string>

#include "fuzz/contract.h"
#include "metadata/metadata_list.h"
#include "platform/string_encoding.h"
#include "services/limits.h"

namespace atdp::fuzz {

inline void checkUtf8(const std::string& text) {
    require(stringWithBytes(std::as_bytes(std::span(text)), NSUTF8StringEncoding).has_value(),
            "text is UTF-8");
}

inline void checkText(const std::string& text) {
    require(text.size() <= services::kMaxTagTextBytes, "text is bounded");
    checkUtf8(text);
}

inline void checkTexts(const MetadataList& list) {
    for (const MetadataEntry& entry : list)
        if (const auto* text = std::get_if<std::string>(&entry.value)) checkText(*text);
}

inline void checkKeys(const MetadataList& list) {
    for (const MetadataEntry& entry : list)
        require(metadataValue(list, entry.key) == &entry.value, "a key stands once");
}

}  // namespace atdp::fuzz
