// Builds the bytes of small files in memory, so that a malformed one is one line of a test.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace atdp::test {

template <class Integer>
std::string littleEndian(Integer value) {
    std::string bytes;
    for (std::size_t i = 0; i < sizeof(Integer); ++i)
        bytes += static_cast<char>(static_cast<std::uint64_t>(value) >> (8 * i) & 0xFF);
    return bytes;
}

template <class Integer>
std::string bigEndian(Integer value) {
    const std::string bytes = littleEndian(value);
    return {bytes.rbegin(), bytes.rend()};
}

// A chunk with its pad byte.
inline std::string riffChunk(std::string_view identifier, const std::string& body) {
    std::string chunk(identifier);
    chunk += littleEndian(static_cast<std::uint32_t>(body.size())) + body;
    if (body.size() % 2 != 0) chunk += '\0';
    return chunk;
}
// Its header alone, whatever follows.
inline std::string riffHeader(const char* code, std::uint32_t dataBytes) {
    return code + littleEndian(dataBytes);
}
// A list of an artist and a title.
inline std::string infoList(const std::string& title, const std::string& artist) {
    return "INFO" + riffChunk("IART", artist) + riffChunk("INAM", title);
}
inline std::string iffChunk(std::string_view identifier, const std::string& body) {
    std::string chunk(identifier);
    chunk += bigEndian(static_cast<std::uint32_t>(body.size())) + body;
    if (body.size() % 2 != 0) chunk += '\0';
    return chunk;
}

}  // namespace atdp::test
