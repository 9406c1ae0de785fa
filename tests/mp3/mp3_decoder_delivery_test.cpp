// Delivery across start record, reader and end record.
#include "tests/support/mp3_decoder_test.h"

namespace atdp {
namespace {

TEST_F(Mp3DecoderTest, RequestsOfAnySizeJoinTheThreeRegions) {
    setGaplessComment("0 14 A 1C2");
    for (const std::uint32_t frames : {1U, 7U, 16U, 33U, 80U, 99U, 330U, 429U, 430U, 1000U}) {
        const auto decoder = openDecoder();
        EXPECT_EQ(playToTheEnd(*decoder, frames), "20-449") << frames;
        EXPECT_EQ(decoder->getTimestamp(), 4'300'000'256U) << frames;
        // 450 frames in packets of 16, none decoded twice; seven were decoded at open.
        EXPECT_EQ(platform().calls.size(), 29U - 7U) << frames;
        EXPECT_TRUE(platform().calls.back().ends_with(" 16 1 2 128"));  // a packet, and its room
    }
}

TEST_F(Mp3DecoderTest, CountsThatAreNotWholeFramesComeBackAsTheyWere) {
    const auto decoder = openDecoder();
    EXPECT_EQ(deliver(*decoder, 1), Delivery(DECODER_RESULT_OK, 1, room(1, 0, 0)));
    EXPECT_EQ(deliver(*decoder, 5), Delivery(DECODER_RESULT_OK, 5, room(5, 0, 2)));
    playToTheEnd(*decoder);
    EXPECT_EQ(deliver(*decoder, 5), Delivery(DECODER_RESULT_OK, 1, room(5, 0, 0)));
}

TEST_F(Mp3DecoderTest, DataThatEndsEarlyEndsTheStreamUntilASeek) {
    platform().framesMissing = 200;
    const auto decoder = openDecoder();
    EXPECT_EQ(play(*decoder, 400), "0-249");
    platform().calls.clear();
    platform().framesMissing = 0;  // not asked again
    EXPECT_EQ(play(*decoder, 400), "");
    EXPECT_EQ(platform().calls, Lines{});
    EXPECT_EQ(decoder->getTimestamp(), 2'500'000'000U);
    EXPECT_EQ(decoder->seek(timeOf(240)), DECODER_RESULT_OK);
    EXPECT_EQ(playToTheEnd(*decoder), "240-449");
}

TEST_F(Mp3DecoderTest, FailedReadInTheMiddleKeepsTheFramesBeforeIt) {
    const auto decoder = openDecoder();
    platform().failures["ExtAudioFileRead"] = {-36, 2};
    EXPECT_EQ(play(*decoder, 300), "0-143 failed -26275");
    EXPECT_EQ(decoder->getTimestamp(), 1'439'999'872U);
    EXPECT_EQ(play(*decoder, 300), " failed -26275");
    EXPECT_EQ(platform().log, Lines(2, "ExtAudioFileRead() failed. (0xFFFFFFFFFFFFFFDC)"));
    platform().failures.clear();
    EXPECT_EQ(playToTheEnd(*decoder), "144-449");
}

// The end record goes on where the failed read stopped.
TEST_F(Mp3DecoderTest, FailedReadInTheEndRecordIsTriedAgain) {
    const auto decoder = openDecoder();
    EXPECT_EQ(play(*decoder, 340), "0-339");
    for (const int reads : {0, 3}) {
        platform().failures["ExtAudioFileRead"] = {-36, reads};
        EXPECT_EQ(play(*decoder, 50), reads == 0 ? "340-349 failed -26275" : " failed -26275");
    }
    platform().failures.clear();
    EXPECT_EQ(playToTheEnd(*decoder), "350-449");
}

TEST_F(Mp3DecoderTest, SeekAfterAFailedReadInTheEndRecordFillsItAnew) {
    const auto decoder = openDecoder();
    platform().failures["ExtAudioFileRead"] = {-36, 20};
    EXPECT_EQ(play(*decoder, 400), "0-349 failed -26275");
    platform().failures.clear();
    EXPECT_EQ(decoder->seek(timeOf(345)), DECODER_RESULT_OK);
    EXPECT_EQ(playToTheEnd(*decoder), "345-449");
}

}  // namespace
}  // namespace atdp
