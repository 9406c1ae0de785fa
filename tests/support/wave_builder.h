#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tests/support/byte_builder.h"

namespace atdp::test {

// A RIFF/WAVE file. What is not set follows from the rest; what is set goes into the file as it is.
struct WaveBuilder {
    std::uint16_t tag = 1;
    std::uint16_t channels = 2;
    std::uint32_t rate = 44100;
    std::uint16_t bits = 16;
    std::optional<std::uint16_t> frameBytes;
    std::optional<std::uint16_t> validBits;  // makes the format extensible
    std::uint32_t channelMask = 0;           // of an extensible format
    std::string data;
    std::string chunksBefore, chunksAfter;  // around the data chunk
    std::optional<std::uint32_t> statedDataBytes, statedFormBytes;
    const char* form = "RIFF";

    std::string formatChunk() const {
        const auto frame =
            frameBytes.value_or(static_cast<std::uint16_t>((bits + 7) / 8 * channels));
        const std::uint16_t stated = validBits ? std::uint16_t{0xFFFE} : tag;
        std::string body = littleEndian(stated) + littleEndian(channels) + littleEndian(rate) +
                           littleEndian(rate * frame) + littleEndian(frame) + littleEndian(bits);
        if (validBits)
            body += littleEndian(std::uint16_t{22}) + littleEndian(*validBits) +
                    littleEndian(channelMask) + littleEndian(tag) +
                    std::string("\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 14);
        return riffChunk("fmt ", body);
    }

    std::string dataChunk() const {
        std::string chunk = riffChunk("data", data);
        if (statedDataBytes) chunk.replace(4, 4, littleEndian(*statedDataBytes));
        return chunk;
    }

    std::string bytes() const {
        const std::string body = "WAVE" + formatChunk() + chunksBefore + dataChunk() + chunksAfter;
        const auto size = statedFormBytes.value_or(static_cast<std::uint32_t>(body.size()));
        return form + littleEndian(size) + body;
    }
};

// A file whose sizes do not fit 32 bits, or could not: they stand in a chunk of their own.
inline std::string largeWave(const char* form, const std::string& data, std::uint64_t dataBytes,
                             std::uint64_t formBytes) {
    const std::string sizes = riffChunk(
        "ds64", littleEndian(formBytes) + littleEndian(dataBytes) + std::string(12, '\0'));
    std::string bytes = WaveBuilder{.data = data,
                                    .statedDataBytes = 0xFFFFFFFF,
                                    .statedFormBytes = 0xFFFFFFFF,
                                    .form = form}
                            .bytes();
    return bytes.insert(12, sizes);
}

}  // namespace atdp::test
