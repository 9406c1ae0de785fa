// MPEG audio of every kind: lengths, and seeks that equal a straight run.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "services/sound_file.h"
#include "tests/support/data_file.h"
#include "tests/support/mpeg_builder.h"
#include "tests/support/temporary_file.h"

namespace atdp::test {
namespace {

using services::FrameReader;
using services::SoundFile;

std::vector<float> read(FrameReader& reader, std::uint32_t channels, std::uint32_t frames) {
    std::vector<float> samples(std::size_t{frames} * channels);
    EXPECT_TRUE(reader.read(samples.data(), &frames));
    samples.resize(std::size_t{frames} * channels);
    return samples;
}

// Bit for bit. Seeks everywhere: far and near, forward and back, to both ends, with reads that do
// not divide a packet.
void expectSeeksEqualAStraightRun(const std::string& path, std::uint32_t channels) {
    auto file = SoundFile::open(path);
    ASSERT_TRUE(file);
    auto reader = (*file)->makeReader();
    ASSERT_TRUE(reader);
    const std::uint64_t frames = *(*file)->lengthInFrames();
    const auto straight = read(**reader, channels, static_cast<std::uint32_t>(frames) + 1);
    ASSERT_EQ(straight.size(), frames * channels);
    std::mt19937_64 random(3);
    for (int i = 0; i < 200; ++i) {
        const std::uint64_t frame = i == 0 ? frames - 1 : i == 1 ? 0 : random() % frames;
        (*reader)->seek(frame);
        const auto part = read(**reader, channels, 1 + static_cast<std::uint32_t>(random() % 3000));
        ASSERT_LE(frame * channels + part.size(), straight.size());
        for (std::size_t k = 0; k < part.size(); ++k)
            ASSERT_EQ(part[k], straight[frame * channels + k])
                << "seek " << i << " to frame " << frame << ", sample " << k;
    }
}

TEST(MpegDecoding, HasItsExactLengthAndSeeksExactly) {
    const struct {
        const char* name;
        std::uint32_t channels;
        std::uint64_t frames;
    } streams[] = {
        {"layer3-cbr128.mp3", 2, 176400},
        {"layer3-vbr2.mp3", 2, 176400},
        {"layer3-32k-stereo.mp3", 2, 154 * 1152 + 1152},
        {"layer3-32k-mono.mp3", 1, 154 * 1152 + 1152},
        {"layer3-320k.mp3", 2, 154 * 1152 + 1152},
        {"layer3-free.mp3", 2, 154 * 1152 + 1152},
        {"layer3-mpeg2.mp3", 2, 156 * 576},
        {"layer3-mpeg25-8k.mp3", 1, 58 * 576},
        {"layer2.mp2", 2, 154 * 1152},
    };
    for (const auto& stream : streams) {
        SCOPED_TRACE(stream.name);
        auto file = SoundFile::open(dataFile(stream.name));
        ASSERT_TRUE(file);
        EXPECT_EQ(*(*file)->lengthInFrames(), stream.frames);
        expectSeeksEqualAStraightRun(dataFile(stream.name), stream.channels);
    }
}

TEST(MpegDecodingOfLayer1, SeeksExactly) {
    std::minstd_rand random(5);
    std::string bytes;
    for (int i = 0; i < 200; ++i) bytes += layer1Packet(random);
    const TemporaryFile file(bytes);
    auto sound = SoundFile::open(file.path());
    ASSERT_TRUE(sound);
    EXPECT_EQ((*sound)->description().format.mFormatID, fourCharCode(".mp1"));
    EXPECT_EQ(*(*sound)->lengthInFrames(), 200U * 384);
    auto reader = (*sound)->makeReader();
    const auto samples = read(**reader, 2, 50 * 384);
    EXPECT_GT(*std::max_element(samples.begin(), samples.end()), 0.01F);
    expectSeeksEqualAStraightRun(file.path(), 2);
}

// A packet that cannot be decoded is silence, and nothing after it is out of step.
TEST(MpegDecodingOfDamagedFiles, SeeksAsExactly) {
    std::string bytes = bytesOfFile(dataFile("layer3-cbr128.mp3"));
    for (std::size_t packet = 20; packet < 140; packet += 30)
        for (std::size_t i = 0; i < 200; ++i) bytes[packet * 418 + i] = static_cast<char>(i * 7);
    const TemporaryFile file(bytes);
    expectSeeksEqualAStraightRun(file.path(), 2);
}

// The library measures the last packet by the one behind it, which is not there.
TEST(MpegDecodingOfFreeFormat, EndsInSound) {
    auto file = SoundFile::open(dataFile("layer3-free.mp3"));
    auto reader = (*file)->makeReader();
    (*reader)->seek(*(*file)->lengthInFrames() - 1152);
    const auto samples = read(**reader, 2, 400);
    EXPECT_TRUE(std::any_of(samples.begin(), samples.end(), [](float s) { return s != 0; }));
}

// Flipped bits and cuts anywhere: it plays as far as it can, with the length that was announced,
// or is refused.
TEST(MpegDecodingOfDamagedFiles, GoesOn) {
    const std::string whole = bytesOfFile(dataFile("layer3-vbr2.mp3")).substr(0, 30'000);
    std::mt19937_64 random(11);
    for (unsigned i = 0; i < 60; ++i) {
        std::string bytes = whole.substr(random() % 3000 * (i % 2));
        for (unsigned k = 0; k < i; ++k)
            bytes[random() % bytes.size()] ^= static_cast<char>(1 << random() % 8);
        bytes.resize(bytes.size() - random() % 500);
        const TemporaryFile file(bytes);
        auto sound = SoundFile::open(file.path());
        if (!sound) continue;
        auto reader = (*sound)->makeReader();
        ASSERT_TRUE(reader);
        const std::uint64_t frames = *(*sound)->lengthInFrames();
        const std::uint32_t channels = (*sound)->description().format.mChannelsPerFrame;
        EXPECT_EQ(read(**reader, channels, 100'000).size(), frames * channels);
    }
}

}  // namespace
}  // namespace atdp::test
