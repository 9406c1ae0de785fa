#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tests/support/wave_builder.h"

namespace atdp::test {

inline std::string wave64Guid(std::string_view code) {
    const std::string form("\x91\xCF\x11\xA5\xD6\x28\xDB\x04\xC1\0\0", 11);
    const std::string other("\xF3\xAC\xD3\x11\x8C\xD1\x00\xC0\x4F\x8E\xDB\x8A", 12);
    return std::string(code) + (code == "riff"   ? '\x2E' + form
                                : code == "list" ? '\x2F' + form
                                                 : other);
}

inline std::string wave64Chunk(std::string_view code, const std::string& body,
                               std::optional<std::uint64_t> statedBytes = {}) {
    return wave64Guid(code) + littleEndian(statedBytes.value_or(24 + body.size())) + body +
           std::string((8 - body.size() % 8) % 8, '\0');
}

// The format and the sound of a WAVE file, in Wave64. Sizes count the headers.
struct Wave64Builder {
    WaveBuilder wave;
    std::string chunksBefore, chunksAfter;  // around the data chunk
    std::optional<std::uint64_t> statedDataBytes, statedFormBytes;

    std::string bytes() const {
        const std::string chunks = wave64Chunk("fmt ", wave.formatChunk().substr(8)) +
                                   chunksBefore + wave64Chunk("data", wave.data, statedDataBytes) +
                                   chunksAfter;
        return wave64Guid("riff") + littleEndian(statedFormBytes.value_or(40 + chunks.size())) +
               wave64Guid("wave") + chunks;
    }
};

}  // namespace atdp::test
