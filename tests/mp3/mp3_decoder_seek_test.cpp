// Seeking in the stream that is delivered, with its own ways in the last second.
#include "tests/support/mp3_decoder_test.h"

namespace atdp {
namespace {

// Twenty frames are cut at the start.
const struct {
    std::uint64_t frame;  // of the delivered stream
    std::int64_t readerFrame;
    const char *first, *second;  // deliveries of five frames after the seek
} kSeeks[] = {
    {0, 100, "20-24", "25-29"},
    {50, 100, "70-74", "75-79"},
    {77, 100, "97-101", "102-106"},
    {80, 100, "100-104", "105-109"},
    {201, 221, "221-225", "226-230"},
    {329, 349, "349-353", "354-358"},
    // The frame before the end record, then from behind the target; then from the start of the
    // record, as far in as was delivered of it.
    {330, 349, "349 351-354", "354-358"},
    {380, 349, "349 401-404", "354-358"},
    {427, 349, "349 448-449", "352-356"},
    {428, 349, "349 449", "351-355"},
    {429, 349, "349", "350-354"},
    {5000, 349, "349", "350-354"},
};

TEST_F(Mp3DecoderTest, SeekGoesToTheFrameOfTheTrimmedStream) {
    setGaplessComment("0 14 A 1C2");
    for (const bool endIsReady : {false, true}) {
        for (const auto& seek : kSeeks) {
            const auto decoder = openDecoder();
            if (endIsReady) playToTheEnd(*decoder);
            platform().calls.clear();
            EXPECT_EQ(decoder->seek(timeOf(seek.frame)), DECODER_RESULT_OK);
            ASSERT_EQ(platform().calls.size(), 1U);
            EXPECT_TRUE(platform().calls[0].ends_with(" " + std::to_string(seek.readerFrame)))
                << platform().calls[0];
            EXPECT_EQ(decoder->getTimestamp(), timeOf(seek.frame));
            EXPECT_EQ(play(*decoder, 5), seek.first) << seek.frame;
            EXPECT_EQ(play(*decoder, 5), seek.second) << seek.frame;
        }
    }
    const auto decoder = openDecoder();
    decoder->seek(timeOf(400));
    play(*decoder, 30);  // ten are left
    EXPECT_EQ(decoder->getTimestamp(), 4'300'000'256U);
}

TEST_F(Mp3DecoderTest, WhatTheSeekLeavesOutIsSpentByTheNextDeliveryWhateverItIs) {
    const auto decoder = openDecoder();
    decoder->seek(timeOf(400));
    EXPECT_EQ(play(*decoder, 1), "349");
    EXPECT_EQ(play(*decoder, 3), "350-352");
    decoder->seek(timeOf(400));
    decoder->seek(timeOf(340));
    EXPECT_EQ(play(*decoder, 12), "340-349 401-402");
}

// The frame before the end record comes from the start record; the reader's copy of it must not
// get into the end record.
TEST_F(Mp3DecoderTest, SeekWhereTheRecordsMeet) {
    setFile(170);
    for (const bool endIsReady : {false, true}) {
        const auto decoder = openDecoder();
        if (endIsReady) playToTheEnd(*decoder);
        EXPECT_EQ(decoder->seek(timeOf(120)), DECODER_RESULT_OK);
        EXPECT_EQ(play(*decoder, 5), "99 121-124");
        EXPECT_EQ(playToTheEnd(*decoder), "104-169");
        decoder->seek(0);
        EXPECT_EQ(playToTheEnd(*decoder), "0-169");
    }
}

// Nothing of the start record is delivered, so the frame before the end record is not either.
TEST_F(Mp3DecoderTest, SeekWhereTheRecordsMeetAndTheFirstIsCut) {
    setGaplessComment("0 200 1 AA");
    const auto decoder = openDecoder();
    EXPECT_EQ(playToTheEnd(*decoder), "100-169");
    decoder->seek(0);
    EXPECT_EQ(play(*decoder, 5), "101-105");
    EXPECT_EQ(play(*decoder, 5), "105-109");
}

TEST_F(Mp3DecoderTest, SeekInFilesOfOneSecondAndLess) {
    for (const std::int64_t frames : {60, 100}) {
        setFile(frames);
        const auto decoder = openDecoder();
        const std::string last = std::to_string(frames - 1);
        for (const std::uint64_t target : {30U, 100U, 1000U}) {
            EXPECT_EQ(decoder->seek(timeOf(target)), DECODER_RESULT_OK);
            EXPECT_EQ(playToTheEnd(*decoder), target == 30 ? "30-" + last : last);
        }
    }
    setFile(0);  // in which there is no frame before the end record to go to
    const auto decoder = openDecoder();
    for (const std::uint64_t time : {std::uint64_t{0}, timeOf(5), ~std::uint64_t{0}}) {
        EXPECT_EQ(decoder->seek(time), DECODER_RESULT_FAILED);
        EXPECT_EQ(play(*decoder, 4), "");
    }
}

TEST_F(Mp3DecoderTest, FailedSeekKeepsThePosition) {
    const auto decoder = openDecoder();
    EXPECT_EQ(play(*decoder, 120), "0-119");
    platform().failures["ExtAudioFileSeek"] = {-50};
    for (const std::uint64_t frame : {0U, 200U, 400U}) {
        EXPECT_EQ(decoder->seek(timeOf(frame)), DECODER_RESULT_FAILED);
        EXPECT_EQ(decoder->getTimestamp(), 1'200'000'000U);
    }
    EXPECT_EQ(platform().log, Lines(3, "ExtAudioFileSeek Failed. (0xFFFFFFFFFFFFFFCE)"));
    EXPECT_EQ(play(*decoder, 50), "120-169");
}

// A time whose frame does not fit lies past the end.
TEST_F(Mp3DecoderTest, SeekToATimeOutOfRange) {
    platform().format.mSampleRate = 2e9;
    setGaplessComment("0 14 A 1C2");
    const auto decoder = openDecoder();
    EXPECT_EQ(decoder->seek(~std::uint64_t{0}), DECODER_RESULT_OK);
    EXPECT_EQ(play(*decoder, 4), "449");
}

}  // namespace
}  // namespace atdp
