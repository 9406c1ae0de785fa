#include "metadata/tag_dictionary.h"

#include "platform/audio_format.h"

namespace atdp {

ScopedCFDictionary tagDictionary(const ByteBlock& tag) {
    CFDictionaryRef dictionary = nullptr;
    std::uint32_t dictionaryBytes = sizeof(dictionary);
    if (!tag || AudioFormatGetProperty(kAudioFormatProperty_ID3TagToDictionary, tag.bytes,
                                       tag.data.get(), &dictionaryBytes, &dictionary) != noErr)
        return nullptr;
    return ScopedCFDictionary(dictionary);
}

}  // namespace atdp
