// Properties computed from the file's format, and changes of the delivery format.
#include "tests/support/wav_decoder_test.h"

namespace atdp {
namespace {

TEST_F(WavDecoderTest, PropertiesFollowFromTheFilesFormat) {
    const struct {
        double rate;
        std::int32_t channels;
        std::uint32_t bits;
        std::int64_t frames;
        std::uint64_t duration;
        std::int32_t byteRate;
        std::uint32_t preferredFrames;
    } files[] = {
        {44100, 2, 16, 441'000, 10'000'000'000, 176'400, 882},
        {44100, 2, 0, 44'100, 999'999'936, 0, 882},
        {48000, 1, 24, 48'000, 1'000'000'000, 144'000, 960},
        {11025.5, 1, 12, 0, 0, 11'025, 220},
        {44100.3, 8, 32, 1, 22'675, 1'411'209, 882},
        {0, 2, 16, 0, ~std::uint64_t{0}, 0, 0},
    };
    for (const auto& file : files) {
        platform().format = {file.rate, kAudioFormatLinearPCM, 12, 0, 1, 0, 2, file.bits, 0};
        platform().format.mChannelsPerFrame = static_cast<std::uint32_t>(file.channels);
        platform().frames = file.frames;
        const auto decoder = openDecoder();
        EXPECT_EQ(
            std::tuple(decoder->getSamplingRate(), decoder->getChannels(), decoder->getDuration(),
                       decoder->getBitRate(), decoder->getPreferredBufferSize()),
            std::tuple(static_cast<float>(file.rate), file.channels, file.duration, file.byteRate,
                       file.preferredFrames));
    }
}

TEST_F(WavDecoderTest, ChangeOfRateGoesBackToTheStart) {
    platform().frames = 441'000;
    const auto decoder = openDecoder();
    deliver(*decoder, 1000);
    platform().calls.clear();
    EXPECT_TRUE(decoder->setSamplingRate(48000));
    EXPECT_EQ(platform().calls,
              (Lines{"ExtAudioFileSetProperty cfmt reader 1 40 48000 lpcm 9 8 1 8 2 32 0",
                     "ExtAudioFileSeek reader 1 0"}));
    EXPECT_EQ(decoder->getSamplingRate(), 48000);
    EXPECT_EQ(decoder->getPreferredBufferSize(), 960U);
    EXPECT_EQ(decoder->getBitRate(), 176'400);
    EXPECT_EQ(decoder->getDuration(), 10'000'000'000U);
    EXPECT_EQ(decoder->getTimestamp(), 0U);
    EXPECT_EQ(deliver(*decoder, 96'000),
              Delivery(DECODER_RESULT_OK, 96'000, room(96'000, 0, 48'000)));
    EXPECT_EQ(decoder->getTimestamp(), 1'000'000'000U);

    platform().failures["ExtAudioFileSeek"] = {-50};  // no failure of the change
    EXPECT_TRUE(decoder->setSamplingRate(22050));
    EXPECT_EQ(decoder->getSamplingRate(), 22050);
}

TEST_F(WavDecoderTest, ChangeOfChannelsKeepsThePositionAndRemakesTheBuffer) {
    const auto decoder = openDecoder();
    EXPECT_TRUE(decoder->setSamplingRate(48000));
    deliver(*decoder, 1000);
    const std::uint64_t time = decoder->getTimestamp();
    platform().calls.clear();
    EXPECT_TRUE(decoder->setChannels(3));
    EXPECT_EQ(decoder->getChannels(), 3);
    EXPECT_EQ(decoder->getTimestamp(), time);
    EXPECT_EQ(deliver(*decoder, 8), Delivery(DECODER_RESULT_OK, 8, room(8, 500, 2, 3)));
    EXPECT_EQ(platform().calls,
              (Lines{"ExtAudioFileSetProperty cfmt reader 1 40 48000 lpcm 9 8 1 8 3 32 0",
                     "ExtAudioFileSeek reader 1 500", "ExtAudioFileRead reader 1 512 1 3 6144"}));
    EXPECT_EQ(decoder->getTimestamp(), 10'458'333U);

    platform().calls.clear();
    EXPECT_TRUE(decoder->setSamplingRate(44100));
    EXPECT_EQ(platform().calls.front(),
              "ExtAudioFileSetProperty cfmt reader 1 40 44100 lpcm 9 8 1 8 3 32 0");
}

TEST_F(WavDecoderTest, RefusedChangesChangeNothing) {
    const auto decoder = openDecoder();
    deliver(*decoder, 1000);
    const std::uint64_t time = decoder->getTimestamp();
    platform().failures["ExtAudioFileSetProperty cfmt"] = {kStatusUnsupportedFormat};
    EXPECT_FALSE(decoder->setSamplingRate(48000));
    EXPECT_FALSE(decoder->setChannels(1));
    EXPECT_FALSE(decoder->setBits(16));
    EXPECT_EQ(platform().log,
              Lines(2,
                    "ExtAudioFileSetProperty (kExtAudioFileProperty_ClientDataFormat) failed."
                    "(0x666D743F)"));
    EXPECT_EQ(decoder->getSamplingRate(), 44100);
    EXPECT_EQ(decoder->getChannels(), 2);
    EXPECT_EQ(decoder->getTimestamp(), time);
    platform().calls.clear();
    EXPECT_EQ(deliver(*decoder, 24), Delivery(DECODER_RESULT_OK, 24, room(24, 500, 12)));
    EXPECT_EQ(platform().calls, Lines{});

    platform().failures.clear();
    EXPECT_TRUE(decoder->setChannels(1));
    EXPECT_EQ(platform().calls,
              Lines{"ExtAudioFileSetProperty cfmt reader 1 40 44100 lpcm 9 8 1 8 1 32 0"});
}

}  // namespace
}  // namespace atdp
