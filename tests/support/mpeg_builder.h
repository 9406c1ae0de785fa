// MPEG audio packets without an encoder.
#pragma once

#include <cstdint>
#include <random>
#include <string>

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

}  // namespace atdp::test
