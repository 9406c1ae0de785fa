// Files of real encoders: lengths, and seeks that equal a straight run. And files that are damaged,
// or change between being opened and being played.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>

#include "services/containers/mpeg4_packets.h"
#include "tests/support/frame_reading.h"
#include "tests/support/mpeg_builder.h"
#include "tests/support/temporary_file.h"

namespace atdp::test {
namespace {

using services::SoundFile;

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

TEST(Mpeg4Files, HaveTheirPackets) {
    constexpr std::uint32_t kBytes[] = {12971, 10600, 10627, 11726, 11871, 4107};
    for (const std::string name : {"lossless.m4a", "lossless.mov"}) {
        SCOPED_TRACE(name);
        const auto file = opened(name);
        ASSERT_TRUE(file);
        EXPECT_EQ(file->description().format.mFormatID, fourCharCode("alac"));
        EXPECT_EQ(file->description().format.mFormatFlags, 1U);
        EXPECT_EQ(*file->lengthInFrames(), 22050U);
        const auto counts = *file->gaplessCounts();
        ASSERT_TRUE(counts);
        EXPECT_EQ(counts->mNumberValidFrames, 22050);
        EXPECT_EQ(counts->mPrimingFrames, 0);
        EXPECT_EQ(counts->mRemainderFrames, 6 * 4096 - 22050);
        const auto track = services::readLosslessTrack(file->source());
        ASSERT_TRUE(track);
        EXPECT_TRUE(std::ranges::equal(track->packets, kBytes, {},
                                       [](const auto& packet) { return packet.bytes(); }));
    }
    EXPECT_EQ(opened("lossless.m4a")->description().fileType, fourCharCode("m4af"));
    EXPECT_EQ(opened("lossless.mov")->description().fileType, fourCharCode("mp4f"));
}

TEST(Mpeg4Files, AreRefusedAReaderWhereTheyAreNotDecoded) {
    const auto file = opened("aac.m4a");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->description().format.mFormatID, fourCharCode("aac "));
    EXPECT_EQ(file->description().format.mSampleRate, 44100);
    EXPECT_EQ(*file->lengthInFrames(), 0U);
    EXPECT_FALSE(*file->gaplessCounts());
    EXPECT_EQ(file->makeReader().failure(), services::Failure::kUnsupportedFormat);
}

// The packets are those of a plain file, and so is the sound; the delay is told by the edit list.
TEST(Mpeg4Files, PlayMpegAudioAsAPlainFileDoes) {
    const auto plain = opened("layer3-cbr128.mp3");
    const auto track = opened("layer3.mp4");
    ASSERT_TRUE(plain && track);
    constexpr std::uint32_t kDelay = 1105;
    constexpr std::uint32_t kFrames = 21 * 1152 - kDelay;
    EXPECT_EQ((*plain->gaplessCounts())->mPrimingFrames, int{kDelay});
    EXPECT_EQ(*track->lengthInFrames(), kFrames);
    const auto counts = *track->gaplessCounts();
    ASSERT_TRUE(counts);
    EXPECT_EQ(counts->mPrimingFrames, int{kDelay});
    EXPECT_EQ(counts->mRemainderFrames, 0);
    auto reader = track->makeReader();
    ASSERT_TRUE(reader);
    const auto samples = read(**reader, 2, kFrames + 1);
    EXPECT_EQ(samples.size(), 2U * kFrames);
    EXPECT_EQ(read(**plain->makeReader(), 2, kFrames), samples);
}

// The packets would be decoded to more samples than there is room for.
TEST(ChangedFile, OfAnotherConfigurationIsNotPlayed) {
    std::string bytes = dataBytes("lossless.m4a");
    const TemporaryFile file(bytes);
    auto sound = SoundFile::open(file.path());
    ASSERT_TRUE(sound);
    const std::size_t cookie = bytes.rfind("alac") + 8;  // behind the atom's version and flags
    ASSERT_EQ(bytes[cookie + 9], 2);
    bytes[cookie + 9] = 8;
    overwrite(file.path(), bytes);
    EXPECT_FALSE((*sound)->makeReader());
}

TEST(ChangedFile, OfAnotherKindIsNotPlayed) {
    for (const char* name : {"lossless.m4a", "layer3-cbr128.mp3", "layer3.mp4"}) {
        const TemporaryFile file(dataBytes(name));
        auto sound = SoundFile::open(file.path());
        ASSERT_TRUE(sound) << name;
        overwrite(file.path(), std::string(std::filesystem::file_size(file.path()), '\x55'));
        EXPECT_FALSE((*sound)->makeReader()) << name;
        EXPECT_FALSE((*sound)->lengthInFrames()) << name;
    }
}

}  // namespace
}  // namespace atdp::test
