#pragma once

#include <bit>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "services/containers/mpeg4_packets.h"
#include "tests/support/memory_source.h"
#include "tests/support/mpeg4_builder.h"

namespace atdp::test {

inline std::string cafChunk(std::string_view identifier, const std::string& body,
                            std::optional<std::uint64_t> statedBytes = {}) {
    return std::string(identifier) + big64(statedBytes.value_or(body.size())) + body;
}

// A CAF file. What is not set follows from the rest; what is set goes into the file as it is.
struct CafBuilder {
    const char* format = "lpcm";
    std::uint32_t flags = 0;
    std::uint32_t channels = 2;
    std::uint32_t bits = 16;
    double rate = 44100;
    std::optional<std::uint32_t> bytesPerPacket;
    std::uint32_t framesPerPacket = 1;
    std::string data;
    std::string chunksBefore, chunksAfter;  // around the data chunk
    std::optional<std::uint64_t> statedDataBytes;

    std::string bytes() const {
        const std::string description = big64(std::bit_cast<std::uint64_t>(rate)) + format +
                                        big32(flags) +
                                        big32(bytesPerPacket.value_or((bits + 7) / 8 * channels)) +
                                        big32(framesPerPacket) + big32(channels) + big32(bits);
        return "caff" + big16(1) + big16(0) + cafChunk("desc", description) + chunksBefore +
               cafChunk("data", zeros(4) + data, statedDataBytes) + chunksAfter;
    }
};

// A number of a packet table: seven bits a byte.
inline std::string cafNumber(std::uint64_t number) {
    std::string bytes(1, static_cast<char>(number & 0x7F));
    while ((number >>= 7) != 0) bytes.insert(0, 1, static_cast<char>(0x80 | (number & 0x7F)));
    return bytes;
}

inline std::string cafPacketTable(const std::vector<std::uint64_t>& numbers, std::int64_t valid = 0,
                                  std::int32_t priming = 0, std::uint64_t statedPackets = ~0ULL) {
    std::string body = big64(statedPackets == ~0ULL ? numbers.size() : statedPackets) +
                       bigEndian(valid) + bigEndian(priming) + big32(0);
    for (const std::uint64_t number : numbers) body += cafNumber(number);
    return cafChunk("pakt", body);
}

// Apple Lossless: what is in front of the sound, and the packets.
inline CafBuilder losslessCaf(const std::string& table, const std::string& packets,
                              const std::string& cookie = losslessConfig()) {
    return {.format = "alac",
            .bits = 0,
            .framesPerPacket = 4096,
            .data = packets,
            .chunksBefore = cafChunk("kuki", cookie) + table};
}

// The sound of an MPEG-4 file, which must have the usual configuration.
inline std::string asLosslessCaf(const std::string& mpeg4) {
    MemorySource source(mpeg4);
    const auto track = services::readLosslessTrack(source);
    std::vector<std::uint64_t> sizes;
    std::string packets;
    for (const auto& packet : track->packets) {
        sizes.push_back(packet.bytes());
        packets += mpeg4.substr(packet.offset(), packet.bytes());
    }
    const auto valid = static_cast<std::int64_t>(track->validFrames);
    return losslessCaf(cafPacketTable(sizes, valid), packets).bytes();
}

}  // namespace atdp::test
