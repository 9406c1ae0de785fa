// Text whose encoding nobody states: the INFO lists of a WAVE file, and the estimation itself.
#include <string>

#include "fuzz/audio_file.h"
#include "fuzz/bytes_read.h"
#include "fuzz/contract.h"
#include "fuzz/input.h"
#include "fuzz/metadata_check.h"
#include "metadata/id3_tag.h"
#include "metadata/riff_info.h"
#include "platform/string_encoding.h"

namespace {

using namespace atdp;

std::string littleEndian(std::size_t number) {
    std::string bytes;
    for (int i = 0; i < 4; ++i) bytes += static_cast<char>(number >> 8 * i & 0xFF);
    return bytes;
}

// The smallest sound file with the text as a chunk.
std::string waveWith(std::string_view chunk, std::string_view text) {
    const std::string format("fmt \x10\0\0\0\x01\0\x01\0\x44\xAC\0\0\x44\xAC\0\0\x01\0\x08\0", 24);
    const std::string body = "WAVE" + format + "data" + littleEndian(0) + std::string(chunk) +
                             littleEndian(text.size()) + std::string(text);
    return "RIFF" + littleEndian(body.size()) + body;
}

void readChunk(std::string_view chunk, std::string_view text) {
    const std::string bytes = waveWith(chunk, text);
    fuzz::ReadAllowance allowance;
    const fuzz::OpenAudioFile file(
        {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    allowance.grant(fuzz::kReadsOfTags, file.bytes());
    fuzz::require(file.get() != nullptr, "the file around the text opens");
    MetadataList list;
    checkMetaDataAsWavFile(file.get(), list);
    checkID3v2Tag(file.get(), list);
    fuzz::checkTexts(list);
    fuzz::checkKeys(list);
}

void estimate(std::string_view text) {
    const auto bytes = std::as_bytes(std::span(text.data(), text.size()));
    const NSStringEncoding encoding = estimateStringEncoding(bytes);
    const auto converted = stringWithBytes(bytes, encoding);
    fuzz::require(converted.has_value() || encoding == NSASCIIStringEncoding,
                  "the encoding found accepts the bytes");
    if (converted) fuzz::checkUtf8(*converted);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Input input(bytes, size);
    const auto kind = input.take<std::uint8_t>() % 3;
    if (kind == 0)
        estimate(input.text());
    else
        readChunk(kind == 1 ? "LIST" : "id3 ", input.text());
    return 0;
}
