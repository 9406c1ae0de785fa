// MPEG-4 files that a real program made.
#include <gtest/gtest.h>

#include <algorithm>

#include "services/containers/mpeg4_packets.h"
#include "services/sound_file.h"
#include "tests/support/data_file.h"

namespace atdp::test {
namespace {

using services::SoundFile;

std::shared_ptr<SoundFile> opened(const std::string& name) {
    auto file = SoundFile::open(dataFile(name));
    return file ? *file : nullptr;
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

// The packets are those of a plain file, and so is the sound.
TEST(Mpeg4Files, PlayMpegAudioAsAPlainFileDoes) {
    const auto plain = opened("layer3-cbr128.mp3");
    const auto track = opened("layer3.mp4");
    ASSERT_TRUE(plain && track);
    constexpr std::uint32_t kFrames = 21 * 1152;
    EXPECT_EQ(*track->lengthInFrames(), kFrames);
    EXPECT_FALSE(*track->gaplessCounts());
    std::vector<float> expected(kFrames * 2), samples(kFrames * 2);
    const auto delay = static_cast<std::uint32_t>((*plain->gaplessCounts())->mPrimingFrames);
    auto reader = track->makeReader();
    ASSERT_TRUE(reader);
    std::uint32_t frames = kFrames + 1;
    EXPECT_TRUE((*reader)->read(samples.data(), &frames));
    EXPECT_EQ(frames, kFrames);
    auto plainReader = plain->makeReader();
    frames = kFrames - delay;
    EXPECT_TRUE((*plainReader)->read(expected.data(), &frames));
    EXPECT_EQ(frames, kFrames - delay);
    EXPECT_TRUE(std::equal(samples.begin() + delay * 2, samples.end(), expected.begin()));
}

}  // namespace
}  // namespace atdp::test
