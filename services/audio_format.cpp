#include "platform/audio_format.h"

#include <cstddef>
#include <memory>
#include <utility>

#include "services/core_foundation_object.h"
#include "services/edge.h"
#include "services/tags/id3v2_tag.h"

namespace atdp::services {
namespace {

std::unique_ptr<CFDictionary> dictionaryOfTag(const Id3v2Tag& tag) {
    auto dictionary = std::make_unique<CFDictionary>(tag.texts);
    if (tag.comments.empty()) return dictionary;
    auto comments = std::make_unique<CFDictionary>();
    for (const auto& [description, text] : tag.comments)
        comments->set(description, std::make_unique<CFDictionary>(TextMap{{"text", text}}));
    dictionary->set("comments", std::move(comments));
    return dictionary;
}

OSStatus id3TagToDictionary(Bytes bytes, std::uint32_t* dataBytes, void* data) {
    const auto header = readId3v2Header(bytes);
    if (!header || header->tagBytes() > bytes.size()) return kStatusDamagedFile;
    const Id3v2Tag tag = readId3v2Tag(*header, bytes.subspan(kId3v2HeaderBytes));
    return copyDictionary(dictionaryOfTag(tag), dataBytes, data);
}

}  // namespace
}  // namespace atdp::services

OSStatus AudioFormatGetProperty(std::uint32_t property, std::uint32_t specifierBytes,
                                const void* specifier, std::uint32_t* dataBytes, void* data) {
    using namespace atdp::services;
    return withoutExceptions([&]() -> OSStatus {
        if (property != kAudioFormatProperty_ID3TagToDictionary) return kStatusUnknownProperty;
        if (specifier == nullptr) return kStatusInvalidParameter;
        return id3TagToDictionary({static_cast<const std::byte*>(specifier), specifierBytes},
                                  dataBytes, data);
    });
}
