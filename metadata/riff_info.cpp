#include "metadata/riff_info.h"

#include <algorithm>

#include "metadata/user_data.h"
#include "platform/string_encoding.h"

namespace atdp {
namespace {

constexpr std::uint32_t kListType = fourCharCode("LIST");
constexpr std::uint32_t kCodeBytes = 4;
constexpr std::uint32_t kHeaderBytes = 8;
constexpr std::size_t kMaxTextBytes = 1024 * 1024;  // more than any screen shows

std::uint32_t codeAt(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
           std::uint32_t{bytes[2]} << 8 | std::uint32_t{bytes[3]};
}

std::uint32_t dataBytesOf(const std::uint8_t* chunk) {
    return std::uint32_t{chunk[4]} | std::uint32_t{chunk[5]} << 8 | std::uint32_t{chunk[6]} << 16 |
           std::uint32_t{chunk[7]} << 24;
}

// All of the data has a say in the encoding; the text ends before the first NUL, or with the data.
std::optional<std::string> textOfChunk(const std::uint8_t* chunk) {
    const std::size_t bytes = std::min<std::size_t>(dataBytesOf(chunk), kMaxTextBytes);
    const auto data = std::as_bytes(std::span(chunk + kHeaderBytes, bytes));
    const auto end = std::find(data.begin(), data.end(), std::byte{0});
    return stringWithBytes(std::span(data.begin(), end), estimateStringEncoding(data));
}

void addText(const std::uint8_t* chunk, const char* key, MetadataList& list) {
    if (chunk == nullptr || metadataValue(list, key) != nullptr) return;
    if (auto text = textOfChunk(chunk)) list.push_back({key, *std::move(text)});
}

}  // namespace

// Sums are 64-bit, so that no size wraps around.
const std::uint8_t* findChunk(std::uint32_t code, const std::uint8_t* chunk,
                              std::uint32_t available) {
    while (available >= kHeaderBytes) {
        const std::uint64_t dataBytes = dataBytesOf(chunk);
        if (codeAt(chunk) == code && available >= dataBytes + kHeaderBytes) return chunk;
        const std::uint64_t step = dataBytes + (dataBytes & 1) + kHeaderBytes;
        if (available < step) return nullptr;
        chunk += step;
        available -= static_cast<std::uint32_t>(step);
    }
    return nullptr;
}

void checkMetaDataAsWavFile(AudioFileID file, MetadataList& list) {
    const std::uint32_t count = countUserData(file, kListType);
    for (std::uint32_t index = 0; index < count; ++index) {
        const ByteBlock item = readUserData(file, kListType, index);
        if (!item || item.bytes < kCodeBytes || codeAt(item.data.get()) != fourCharCode("INFO"))
            continue;
        const std::uint8_t* chunks = item.data.get() + kCodeBytes;
        const std::uint32_t available = item.bytes - kCodeBytes;
        addText(findChunk(fourCharCode("INAM"), chunks, available), METADATA_COMMON_KEY_TITLE,
                list);
        addText(findChunk(fourCharCode("IART"), chunks, available), METADATA_COMMON_KEY_ARTIST,
                list);
    }
}

}  // namespace atdp
