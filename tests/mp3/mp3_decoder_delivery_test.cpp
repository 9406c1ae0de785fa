// Delivery across start record, reader and end record, and what is cut at both ends: by gapless
// counts, and by silence below a threshold.
#include <cmath>

#include "mp3/threshold_option.h"
#include "tests/support/mp3_edge_test.h"

namespace atdp {
namespace {

constexpr float kLevel = 0.001F;  // of -60 decibels
const float kAbove = std::nextafter(kLevel, 1.0F);
const float kNan = std::nanf("");

const Edge kStartEdges[] = {
    {"NoThreshold", {}, quiet(0, 30, 0, 0), "", {}, "~30 30-149", 0},
    {"ZeroThreshold", 0, quiet(0, 30, 0, 0), "", {}, "~30 30-149", 0},
    {"LevelItselfIsSilent", -60, quiet(0, 30, kLevel, -kLevel), "", {}, "30-179", 30},
    {"OneChannelAbove", -60, quiet(0, 30, 0, -kAbove), "", {}, "~30 30-149", 0},
    {"NanIsSilent", -60, quiet(0, 30, kNan, -kNan), "", {}, "30-179", 30},
    {"AllSilent", -60, quiet(0, 120, 0, 0), "", {}, "~20 120-249", 100},
    {"LastFrameAudible", -60, quiet(0, 99, 0, 0), "", {}, "99-248", 99},
    {"PositiveThreshold", 80, {}, "", {}, "100-249", 100},
    {"NanThreshold", std::nan(""), {}, "", {}, "100-249", 100},
    {"PrimingOfTheTableIsCutByTheReader", -60, quiet(0, 30, 0, 0), "",
     AudioFilePacketTableInfo{400, 5, 0}, "~30 30-149", 5},
    {"PrimingOfTheComment", -60, quiet(0, 30, 0, 0), "0 14 1 1C2", {}, "~10 30-169", 20},
    {"NoPrimingInTheComment", -60, quiet(0, 30, 0, 0), "0 0 1 1C2", {}, "30-179", 30},
    {"NoPrimingInTheCommentNoThreshold", {}, {}, "0 0 1 1C2", {}, "0-149", 0},
    {"PrimingBeyondTheRecord", {}, {}, "0 200 1 1C2", {}, "100-249", 512},
    {"PrimingNegative", {}, {}, "0 FFFFFFFF 1 1C2", {}, "100-249", -1},
    {"PrimingMostNegative", {}, {}, "0 80000000 1 1C2", {}, "100-249", -2147483647 - 1},
    {"ShorterThanASecond", -60, quiet(0, 30, 0, 0), "", {}, "30-59", 30, 60},
    {"ShorterThanASecondAllSilent", -60, quiet(0, 60, 0, 0), "", {}, "", 60, 60},
    {"DataEndsEarly", -60, {}, "", {}, "0-69 ~30", 0, 450, 380},
};

TEST_F(EdgeTest, StartIsCutBeforeTheFirstDelivery) {
    for (const Edge& edge : kStartEdges) {
        const auto decoder = openCase(edge);
        EXPECT_EQ(decoder->getPrimingFrames(), edge.reported) << edge.name;
        EXPECT_EQ(play(*decoder, 150), edge.played) << edge.name;
    }
}

// Where silence was looked for, the remainder reported is the number of frames kept.
const Edge kEndEdges[] = {
    {"NoThreshold", {}, quiet(420, 450, 0, 0), "", {}, "0-419 ~30", 0},
    {"LevelItselfIsSilent", -60, quiet(420, 450, kLevel, -kLevel), "", {}, "0-419", 70},
    {"OneChannelAbove", -60, quiet(449, 450, kAbove, 0), "", {}, "0-448 ~1", 100},
    {"NanIsSilent", -60, quiet(420, 450, kNan, kNan), "", {}, "0-419", 70},
    {"AllSilent", -60, quiet(340, 450, 0, 0), "", {}, "0-339 ~10", 0},
    {"RemainderOfTheTable", -60, quiet(420, 450, 0, 0), "", AudioFilePacketTableInfo{400, 0, 7},
     "0-419 ~30", 7},
    {"RemainderOfTheComment", -60, quiet(380, 400, 0, 0), "0 0 7 190", {}, "0-379 ~20", 7},
    {"DataEndsInTheRecord", {}, {}, "", {}, "0-409", 0, 450, 40},
    {"DataEndsInTheRecordThreshold", -60, {}, "", {}, "0-409", 60, 450, 40},
    {"DataEndsBeforeTheRecord", -60, {}, "", {}, "0-249", 0, 450, 200},
    {"ShorterThanASecond", {}, {}, "", {}, "0-59", 0, 60},
    {"ShorterThanASecondThreshold", -60, {}, "", {}, "0-59", 0, 60},
    {"OneSecond", -60, {}, "", {}, "0-99", 0, 100},
    {"OneAndAHalf", {}, {}, "", {}, "0-149", 0, 150},
    // The scan starts in the zeros behind the 50 or 70 frames covered.
    {"OneAndAHalfThreshold", -60, {}, "", {}, "0-99", 0, 150},
    {"OneAndSevenTenthsThreshold", -60, {}, "", {}, "0-139", 40, 170},
    {"TwoSecondsThreshold", -60, {}, "", {}, "0-199", 100, 200},
    {"Empty", -60, {}, "", {}, "", 0, 0},
};

TEST_F(EdgeTest, EndIsCutAfterTheLastDelivery) {
    for (const Edge& edge : kEndEdges) {
        SCOPED_TRACE(edge.name);
        const auto decoder = openCase(edge);
        EXPECT_EQ(playToTheEnd(*decoder), edge.played);
        EXPECT_EQ(decoder->getRemainderFrames(), edge.reported);
        EXPECT_EQ(deliver(*decoder, 8), Delivery(DECODER_RESULT_OK, 0, room(8, 0, 0)));
    }
}

TEST(SilenceThreshold, IsANumberOrTextThatStartsWithOne) {
    const std::pair<OptionValue, float> values[] = {
        {-60.5, -60.5F}, {"-60.5", -60.5F}, {"\n +6e1 dB", 60}, {"-.5", -0.5F},
        {"5.", 5},       {"1e", 1},         {"0x10", 0},        {"- 5", 0},
        {"+-5", 0},      {"-+5", 0},        {"-", 0},           {".", 0},
        {"", 0},         {"loud", 0},       {"inf", 0},         {"-nan", 0},
        {"1e999", 0},    {"-6,5", -6},
    };
    for (const auto& [value, decibels] : values) {
        const Options options{{"mp3 threashold db", value}};
        const auto* text = std::get_if<std::string>(&value);
        EXPECT_EQ(silenceThreshold(&options), decibels) << (text ? *text : "number");
    }
    const Options others{{"mp3 threshold db", -60.0}};
    EXPECT_EQ(silenceThreshold(&others), 0);
    EXPECT_EQ(silenceThreshold(nullptr), 0);
}

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
