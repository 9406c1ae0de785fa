// MPEG audio packets without an encoder.
#pragma once

#include <cstdint>
#include <random>
#include <string>

#include "tests/support/id3_builder.h"

namespace atdp::test {

// Writes bits, most significant first.
class BitWriter {
 public:
    void write(std::uint32_t value, int bits) {
        while (bits-- > 0) {
            if (bitCount_++ % 8 == 0) bytes_ += '\0';
            const auto bit = static_cast<unsigned>(value >> bits & 1);
            bytes_.back() = static_cast<char>(static_cast<unsigned char>(bytes_.back()) |
                                              bit << (7 - (bitCount_ - 1) % 8));
        }
    }
    const std::string& bytes() const { return bytes_; }

 private:
    std::string bytes_;
    std::size_t bitCount_ = 0;
};

// A packet of layer I, 44.1 kHz, stereo, 384 kbit/s: 416 bytes of noise in the low subbands.
inline std::string layer1Packet(std::minstd_rand& random) {
    BitWriter bits;
    bits.write(0xFFFFC000, 32);
    constexpr int kSubbands = 10, kSampleBits = 5;
    for (int band = 0; band < 32; ++band)
        for (int channel = 0; channel < 2; ++channel)
            bits.write(band < kSubbands ? kSampleBits - 1 : 0, 4);
    for (int i = 0; i < 2 * kSubbands; ++i)
        bits.write(static_cast<std::uint32_t>(18 + random() % 12), 6);
    for (int i = 0; i < 12 * 2 * kSubbands; ++i)
        bits.write(static_cast<std::uint32_t>(random() % 31), kSampleBits);
    std::string packet = bits.bytes();
    packet.resize(416);
    return packet;
}

// A packet of layer III, 44.1 kHz, stereo, 128 kbit/s, that holds silence: 417 bytes.
inline std::string silentLayer3Packet() {
    std::string packet("\xFF\xFB\x90\x00", 4);
    packet.resize(417);
    return packet;
}

inline std::string repeated(const std::string& packet, int count) {
    std::string bytes;
    while (count-- > 0) bytes += packet;
    return bytes;
}

inline std::string sound(int packets) {
    return repeated(silentLayer3Packet(), packets);
}

// The same with other bits of the header.
inline std::string packetWithHeader(const char (&header)[5]) {
    return std::string(header, 4) + silentLayer3Packet().substr(4);
}

// Tags that hold nothing but false beginnings of packets.
inline std::string falseId3v2(std::size_t bodyBytes, bool withFooter = false,
                              std::size_t claimed = 0) {
    std::string tag = id3Tag(4, std::string(bodyBytes, '\xFF'), withFooter ? 0x10 : 0);
    if (claimed > 0) tag.replace(6, 4, synchsafe(claimed));
    return withFooter ? tag + "3DI" + tag.substr(3, 7) : tag;
}

inline std::string falseApe(std::size_t itemBytes) {
    const auto edge = [&](std::uint32_t flags) {
        return "APETAGEX" + littleEndian(std::uint32_t{2000}) +
               littleEndian(static_cast<std::uint32_t>(itemBytes + 32)) +
               littleEndian(std::uint32_t{1}) + littleEndian(flags) + std::string(8, '\0');
    };
    return edge(0xA0000000) + std::string(itemBytes, '\xFF') + edge(0x80000000);
}

inline std::string falseLyrics3() {
    const std::string body = "LYRICSBEGIN" + std::string(60, '\xFF');
    return body + "000071LYRICS200";
}

// The frame in front of an encoder's stream, with delay and padding where a name is given.
inline std::string infoFrame(std::uint32_t packets, const std::string& encoder, unsigned delay,
                             unsigned padding, const char* tag = "Info") {
    std::string body = std::string(32, '\0') + tag + bigEndian(std::uint32_t{15}) +
                       bigEndian(packets) + std::string(4 + 100 + 4, '\0') + encoder;
    body.resize(32 + 4 + 4 + 4 + 4 + 100 + 4 + 9 + 12);
    body += bigEndian(static_cast<std::uint32_t>(delay << 12 | padding)).substr(1);
    return (packetWithHeader("\xFF\xFB\x90\x64").substr(0, 4) + body + std::string(417, '\0'))
        .substr(0, 417);
}

}  // namespace atdp::test
