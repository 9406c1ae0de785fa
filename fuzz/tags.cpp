// ID3 conversion and the information dictionaries. The first byte chooses what the rest is: a tag,
// or a file of any kind with tags in it.
#include "fuzz/audio_file.h"
#include "fuzz/bytes_read.h"
#include "fuzz/contract.h"
#include "fuzz/input.h"
#include "fuzz/metadata_check.h"
#include "metadata/gapless_comment.h"
#include "metadata/information_dictionary.h"
#include "platform/audio_format.h"
#include "services/core_foundation_object.h"

namespace {

using namespace atdp;

// Every dictionary shows all of its text.
void checkDictionary(OSStatus status, CFDictionaryRef dictionary) {
    fuzz::require((status == noErr) == (dictionary != nullptr), "success gives a dictionary");
    if (dictionary == nullptr) return;
    const ScopedCFDictionary owned(dictionary);
    fuzz::checkText(reinterpret_cast<const services::CFDictionary*>(dictionary)->description());
}

void convertTag(std::span<const std::uint8_t> tag) {
    CFDictionaryRef dictionary = nullptr;
    std::uint32_t bytes = sizeof(dictionary);
    const OSStatus status = AudioFormatGetProperty(kAudioFormatProperty_ID3TagToDictionary,
                                                   static_cast<std::uint32_t>(tag.size()),
                                                   tag.data(), &bytes, &dictionary);
    checkDictionary(status, dictionary);
}

void readInformation(AudioFileID file) {
    CFDictionaryRef dictionary = nullptr;
    std::uint32_t bytes = sizeof(dictionary);
    const OSStatus status =
        AudioFileGetProperty(file, kAudioFilePropertyInfoDictionary, &bytes, &dictionary);
    checkDictionary(status, dictionary);
}

void readTags(std::span<const std::uint8_t> bytes) {
    fuzz::ReadAllowance allowance;
    const fuzz::OpenAudioFile file(bytes);
    allowance.grant(fuzz::kReadsOfTags, file.bytes());
    if (file.get() == nullptr) return;
    readInformation(file.get());
    MetadataList list;
    getAudioFilePropertyInfo(file.get(), list);
    fuzz::checkTexts(list);
    fuzz::checkKeys(list);
    AudioFilePacketTableInfo table{};
    getAudioFilePacketTableInfoFromID3tag(&table, file.get());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Input input(bytes, size);
    if (input.take<std::uint8_t>() % 2 == 0)
        convertTag(input.rest());
    else
        readTags(input.rest());
    return 0;
}
