// Packets of a real encoder, against the samples that went in; packets of every kind from an
// encoder of our own; damaged ones; and the fast inner loops against the plain ones.
#include "services/codecs/alac_decoder.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cmath>
#include <cstring>
#include <tuple>

#include "tests/support/alac_sounds.h"

namespace atdp::test {
namespace {

using services::AlacConfig;
using services::AlacDecoder;
using services::AlacKernels;
using services::Bytes;
using services::parseAlacConfig;

TEST(AlacFiles, ComeOutAsTheyWentIn) {
    for (const char* name :
         {"alac-16-1", "alac-16-2", "alac-16-3", "alac-16-4", "alac-16-5", "alac-16-6", "alac-16-7",
          "alac-16-8", "alac-24-1", "alac-24-2", "alac-24-6", "alac-silence", "alac-noise",
          "alac-sine", "alac-one-frame-last"}) {
        SCOPED_TRACE(name);
        const PacketFile file = readPacketFile(name);
        const auto config = parseAlacConfig(bytesOf(file.cookie));
        ASSERT_TRUE(config);
        for (const AlacKernels* kernels : allKernels()) {
            AlacDecoder decoder(*config, *kernels);
            std::vector<float> samples(config->frameLength * config->channels);
            std::uint32_t frames = 0;
            uLong crc = crc32(0, nullptr, 0);
            for (const std::string& packet : file.packets) {
                const std::uint32_t got = decoder.decode(bytesOf(packet), samples.data());
                ASSERT_GT(got, 0U);
                frames += got;
                for (std::size_t i = 0; i < std::size_t{got} * config->channels; ++i) {
                    const auto value = static_cast<std::int32_t>(std::lround(samples[i] * 0x1p31));
                    crc = crc32(crc, reinterpret_cast<const Bytef*>(&value), sizeof value);
                }
            }
            EXPECT_EQ(frames, file.frames);
            EXPECT_EQ(crc, file.crc);
        }
    }
}

TEST(AlacDecoder, DecodesEveryKindOfPacket) {
    Random random(1);
    for (int round = 0; round < 4000; ++round) {
        const std::uint32_t depths[] = {16, 20, 24, 32};
        AlacConfig config = makeConfig(depths[random() % 4], 1 + random() % 2);
        if (random() % 2 != 0) {
            config.meanFactor = random() % 64;
            config.initialMean = random() % 256;
            config.maxCodeBits = 1 + random() % 24;
        }
        const AlacElement element = makeElement(random, config);
        const std::string packet = alacPacket(element, config);
        const double scale = std::ldexp(1.0, 1 - static_cast<int>(config.bitDepth));
        for (const AlacKernels* kernels : allKernels()) {
            AlacDecoder decoder(config, *kernels);
            std::vector<float> samples(std::size_t{512} * config.channels);
            ASSERT_EQ(decoder.decode(bytesOf(packet), samples.data()), element.channels[0].size());
            for (std::size_t i = 0; i < element.channels[0].size(); ++i)
                for (std::size_t c = 0; c < config.channels; ++c)
                    ASSERT_EQ(samples[i * config.channels + c],
                              static_cast<float>(element.channels[c][i] * scale))
                        << "round " << round << ", frame " << i << ", channel " << c << ", order "
                        << element.taps.size() << ", depth " << config.bitDepth;
        }
    }
}

TEST(AlacDecoder, SkipsDataAndFill) {
    Random random(2);
    const AlacConfig config = makeConfig(16, 1);
    const AlacElement element = makeElement(random, config);
    AlacBitWriter out;
    out.put(6, 3);  // fill
    out.put(15, 4);
    out.put(2, 8);  // 15 + 2 - 1 bytes
    out.put(~0ULL, 64);
    out.put(~0ULL, 64);
    out.put(4, 3);  // data
    out.put(0, 4);
    out.put(1, 1);  // aligned
    out.put(2, 8);
    out.put(0, 1);
    out.put(0xFFFF, 16);
    const std::size_t bitsBefore = 3 + 4 + 8 + 128 + 3 + 4 + 1 + 8;
    ASSERT_EQ((bitsBefore + 1) % 8, 0U);
    putElement(out, element, config);
    std::vector<float> samples(512);
    EXPECT_EQ(AlacDecoder(config).decode(bytesOf(out.bytes()), samples.data()),
              element.channels[0].size());
    EXPECT_EQ(samples[0], static_cast<float>(element.channels[0][0]) * 0x1p-15F);
}

// Cut at every byte: refused before the end of the sound. Flipped bits: anything, but within
// bounds, and the same from all kernels.
TEST(AlacDecoder, EnduresDamage) {
    Random random(3);
    for (int round = 0; round < 40; ++round) {
        const AlacConfig config = makeConfig(round % 2 != 0 ? 24 : 16, 1 + random() % 2);
        const std::string packet = alacPacket(makeElement(random, config), config);
        std::vector<float> expected(std::size_t{512} * config.channels), samples(expected);
        for (std::size_t size = 0; size + 1 < packet.size(); ++size) {
            // A copy of its own, so that reading past it is noticed.
            const std::vector<char> cut(packet.begin(),
                                        packet.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_EQ(AlacDecoder(config).decode(std::as_bytes(std::span(cut)), samples.data()),
                      0U);
        }
        for (int i = 0; i < 300; ++i) {
            std::vector<char> damaged(packet.begin(), packet.end());
            for (int k = 0; k < 1 + i % 4; ++k)
                damaged[random() % (i % 2 != 0 ? damaged.size() : 24) % damaged.size()] ^=
                    static_cast<char>(1 << random() % 8);
            const Bytes bytes = std::as_bytes(std::span(damaged));
            AlacDecoder plain(config, services::plainAlacKernels()), best(config);
            const std::uint32_t frames = plain.decode(bytes, expected.data());
            ASSERT_EQ(best.decode(bytes, samples.data()), frames);
            ASSERT_EQ(std::memcmp(expected.data(), samples.data(),
                                  sizeof(float) * frames * config.channels),
                      0);
        }
    }
}

TEST(AlacPackets, AreSilentWhereTheyAreBrokenAndFailWhereTheirBytesAreGone) {
    EXPECT_EQ(decoded({}), "silent");         // none
    EXPECT_EQ(decoded({0, 8000}), "silent");  // larger than any
    EXPECT_EQ(decoded({8990, 10}), "silent");
    EXPECT_EQ(decoded({8990, 11}), "failed");
    EXPECT_EQ(decoded({services::PacketPlace::kMaxOffset, 1}), "failed");
}

TEST(AlacConfig, IsReadWithAndWithoutWrapper) {
    const std::string bare = cookieOf(4096, 0, 24, 14, 6);
    const std::string format = bigEndian(std::uint32_t{12}) + "frmaalac";
    const std::string atom = bigEndian(std::uint32_t{36}) + "alac" + std::string(4, '\0');
    const std::string layout = bigEndian(std::uint32_t{24}) + "chan" + std::string(16, '\1');
    for (const std::string& cookie :
         {bare, bare + layout, atom + bare, format + atom + bare + layout}) {
        const auto config = parseAlacConfig(bytesOf(cookie));
        ASSERT_TRUE(config);
        EXPECT_EQ(std::tuple(config->frameLength, config->bitDepth, config->meanFactor,
                             config->initialMean, config->maxCodeBits, config->channels,
                             config->maxPacketBytes, config->averageBitRate, config->sampleRate),
                  std::tuple(4096U, 24U, 40U, 10U, 14U, 6U, 7U, 8U, 48000U));
    }
}

TEST(AlacConfig, RefusesTheImpossible) {
    for (const std::string& cookie :
         {std::string(), cookieOf(4096, 0, 16, 14, 2).substr(0, 23), cookieOf(0, 0, 16, 14, 2),
          cookieOf(65537, 0, 16, 14, 2), cookieOf(4096, 1, 16, 14, 2), cookieOf(4096, 0, 8, 14, 2),
          cookieOf(4096, 0, 16, 0, 2), cookieOf(4096, 0, 16, 32, 2), cookieOf(4096, 0, 16, 14, 0),
          cookieOf(4096, 0, 16, 14, 9)})
        EXPECT_FALSE(parseAlacConfig(bytesOf(cookie)));
}

}  // namespace
}  // namespace atdp::test
