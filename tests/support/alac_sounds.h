// What the tests of the lossless decoder decode: packets of a real encoder, and sounds and
// parameters by chance for our own.
#pragma once

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "services/codecs/alac_kernels.h"
#include "services/codecs/alac_packet_decoder.h"
#include "services/io/byte_cursor.h"
#include "tests/support/alac_encoder.h"
#include "tests/support/byte_builder.h"
#include "tests/support/data_file.h"
#include "tests/support/memory_source.h"

namespace atdp::test {

// 32 bits at a time.
class Random {
 public:
    using result_type = std::uint32_t;
    explicit Random(std::uint32_t seed) : engine_(seed) {}
    static constexpr result_type min() { return 0; }
    static constexpr result_type max() { return 0xFFFFFFFF; }
    result_type operator()() { return static_cast<result_type>(engine_()); }

 private:
    std::mt19937 engine_;
};

// The files that tests/data/make describes.
struct PacketFile {
    std::uint32_t crc = 0;
    std::uint32_t frames = 0;
    std::string cookie;
    std::vector<std::string> packets;
};

inline PacketFile readPacketFile(const std::string& name) {
    const std::string bytes = bytesOfFile(dataFile(name + ".packets"));
    services::ByteCursor cursor(std::as_bytes(std::span(bytes)));
    PacketFile file{cursor.bigEndian<std::uint32_t>(), cursor.bigEndian<std::uint32_t>(), {}, {}};
    while (cursor.remainingBytes() > 0) {
        const services::Bytes part = cursor.take(cursor.bigEndian<std::uint32_t>());
        file.packets.emplace_back(reinterpret_cast<const char*>(part.data()), part.size());
    }
    if (file.packets.empty()) return file;  // and the cookie is refused
    file.cookie = file.packets.front();
    file.packets.erase(file.packets.begin());
    return file;
}

inline services::AlacConfig makeConfig(std::uint32_t bitDepth, std::uint32_t channels) {
    services::AlacConfig config;
    config.frameLength = 512;
    config.bitDepth = bitDepth;
    config.meanFactor = 40;
    config.initialMean = 10;
    config.maxCodeBits = 14;
    config.channels = channels;
    config.sampleRate = 44100;
    return config;
}

// A tone with noise, and silence in the middle.
inline std::vector<std::int32_t> makeSound(Random& random, std::uint32_t bitDepth,
                                           std::size_t frames) {
    const double full = std::ldexp(0.9, static_cast<int>(bitDepth) - 1);
    const double noise = std::ldexp(1.0, -static_cast<int>(random() % 14));
    const double turn = 0.001 * (random() % 500);
    std::uniform_real_distribution<double> unit(-1, 1);
    std::vector<std::int32_t> values(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        const bool isSilent = i > frames / 2 && i < frames * 3 / 4;
        const double tone = (1 - noise) * std::sin(turn * static_cast<double>(i));
        if (!isSilent) values[i] = static_cast<std::int32_t>(full * (tone + noise * unit(random)));
    }
    return values;
}

inline AlacElement makeElement(Random& random, const services::AlacConfig& config) {
    AlacElement element;
    element.tag = config.channels == 2 ? 1 : 0;
    element.hasFrames = random() % 2 != 0;
    const std::size_t frames = element.hasFrames ? 1 + random() % 511 : 512;
    for (std::uint32_t c = 0; c < config.channels; ++c)
        element.channels.push_back(makeSound(random, config.bitDepth, frames));
    element.isPlain = random() % 16 == 0;
    if (config.bitDepth >= 24) element.lowBytes = random() % 3;
    if (config.bitDepth == 32 && config.channels == 2) element.lowBytes = 1 + random() % 2;
    element.mixShift = 1 + random() % 3;
    element.mixWeight = static_cast<int>(random() % ((1U << element.mixShift) + 2)) - 1;
    element.mode = random() % 4 == 0 ? 15 : 0;
    element.shift = random() % 16;
    element.meanFactor = random() % 8;
    element.taps.resize(random() % 32);
    for (std::size_t k = 0; k < element.taps.size(); ++k)
        element.taps[k] = static_cast<std::int16_t>(random() % (2U << element.shift) >> k / 2);
    return element;
}

// A configuration as files hold it.
inline std::string cookieOf(std::uint32_t frameLength, int version, int depth, int codeBits,
                            int channels) {
    std::string cookie = bigEndian(frameLength);
    for (const int byte : {version, depth, 40, 10, codeBits, channels, 0, 255})
        cookie += static_cast<char>(byte);
    return cookie + bigEndian(std::uint32_t{7}) + bigEndian(std::uint32_t{8}) +
           bigEndian(std::uint32_t{48000});
}

// The plain inner loops, and the fast ones where the processor has them.
inline std::vector<const services::AlacKernels*> allKernels() {
    std::vector<const services::AlacKernels*> kernels = {&services::plainAlacKernels()};
    if (const auto* avx2 = services::avx2AlacKernels()) kernels.push_back(avx2);
    return kernels;
}

inline services::Bytes bytesOf(const std::string& bytes) {
    return std::as_bytes(std::span(bytes.data(), bytes.size()));
}

// What comes of a packet there, in a file of 9000 bytes that are no packet.
inline std::string decoded(const services::PacketPlace& place) {
    const auto source = std::make_shared<MemorySource>(std::string(9000, '~'));
    const auto packets = std::make_shared<const std::vector<services::PacketPlace>>(
        std::vector<services::PacketPlace>{place});
    services::AlacConfig config = makeConfig(16, 2);
    config.frameLength = 4;
    services::AlacPacketDecoder decoder(source, packets, config);
    const float* samples = decoder.decode(0);
    if (samples == nullptr) return "failed";
    const bool isSilent = std::count(samples, samples + 4 * 2, 0.0F) == 4 * 2;
    return isSilent ? "silent" : "sound";
}

}  // namespace atdp::test
