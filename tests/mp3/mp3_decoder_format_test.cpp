// Changes of the delivery format. Frames are named as the reader counts them at the rate delivered.
#include <cstdint>

#include "tests/support/mp3_decoder_test.h"

namespace atdp {
namespace {

using scripted::bytesOf;

TEST_F(Mp3DecoderTest, ChangeOfRatePlaysTheSameStreamFromItsStart) {
    const struct {
        float rate;
        std::int64_t frames;  // of the file
        const char* comment;  // gapless
        const char* played;
        std::int32_t priming, remainder;
    } changes[] = {
        {200, 450, "", "0-899", 5, 7},
        {50, 450, "", "0-224", 5, 7},
        {200, 60, "", "0-119", 5, 7},
        {200, 500, "0 14 A 1C2", "40-899", 20, 10},
        {50, 500, "0 14 A 1C2", "10-224", 20, 10},
        // Kept are 430 frames, at this rate 322.5, and 449, at this rate 224.5.
        {75, 500, "0 14 A 1C2", "15-337", 20, 10},
        {50, 500, "0 1 A 1C2", "1-225", 1, 10},
        {200, 450, "0 FFFFFFFF A 1C2", "200-899", -1, 10},
        {50, 450, "0 14 A FFFFFFFFFFFFFFFF", "10-224", 20, 10},
        {200, 450, "0 14 A FFFFFFFFFFFFFFFF", "40-899", 20, 10},
    };
    for (const auto& change : changes) {
        startCase();
        setFile(change.frames);
        if (*change.comment != '\0')
            setGaplessComment(change.comment);
        else
            platform().fileProperties["pnfo"] = bytesOf(AudioFilePacketTableInfo{400, 5, 7});
        const auto decoder = openDecoder();
        const std::string played = playToTheEnd(*decoder);
        const std::uint64_t duration = decoder->getDuration();
        EXPECT_TRUE(decoder->setSamplingRate(change.rate));
        EXPECT_EQ(decoder->getSamplingRate(), change.rate);
        EXPECT_EQ(decoder->getTimestamp(), 0U);
        EXPECT_EQ(decoder->getDuration(), duration);
        EXPECT_EQ(decoder->getPreferredBufferSize(), 16U);
        EXPECT_EQ(playToTheEnd(*decoder), change.played) << change.comment;
        EXPECT_EQ(decoder->getPrimingFrames(), change.priming);
        EXPECT_EQ(decoder->getRemainderFrames(), change.remainder);
        EXPECT_TRUE(decoder->setSamplingRate(100));
        EXPECT_EQ(playToTheEnd(*decoder), played) << change.comment;
    }
}

TEST_F(Mp3DecoderTest, SeeksCountAtTheRateDelivered) {
    setGaplessComment("0 14 A 1C2");
    const auto decoder = openDecoder();
    EXPECT_TRUE(decoder->setSamplingRate(200));
    EXPECT_EQ(decoder->seek(2'002'500'000), DECODER_RESULT_OK);
    EXPECT_EQ(play(*decoder, 100), "440-539");
    EXPECT_EQ(decoder->getTimestamp(), 2'500'000'000U);
    EXPECT_EQ(decoder->seek(3'802'500'000), DECODER_RESULT_OK);
    EXPECT_EQ(play(*decoder, 5), "699 801-804");
}

// In the imagined file 0.3 seconds at each end are silent.
TEST_F(Mp3DecoderTest, SilenceIsLookedForAnewAndToldInFramesOfTheFile) {
    float rate = 100;
    platform().sample = [&rate](std::int64_t frame, std::uint32_t channel) {
        const double seconds = static_cast<double>(frame) / rate;
        return seconds < 0.3 || seconds >= 4.2 ? 0 : sampleAt(frame, channel);
    };
    const Options options{{DECODER_OPTION_KEY_MP3_THREASHOLD_DB, -60.0}};
    const auto decoder = openDecoder(&options);
    EXPECT_EQ(playToTheEnd(*decoder), "30-419");
    const std::pair<float, const char*> changes[] = {{200, "60-839"}, {50, "15-209"}};
    for (const auto& [newRate, played] : changes) {
        rate = newRate;
        EXPECT_TRUE(decoder->setSamplingRate(rate));
        EXPECT_EQ(decoder->getPrimingFrames(), 30);
        EXPECT_EQ(playToTheEnd(*decoder), played);
        EXPECT_EQ(decoder->getRemainderFrames(), 70);
    }
    rate = 75;  // the first frame heard is 23, at the file's rate 30 2/3; 52 are kept at the end
    EXPECT_TRUE(decoder->setSamplingRate(rate));
    EXPECT_EQ(playToTheEnd(*decoder), "23-314");
    EXPECT_EQ(decoder->getPrimingFrames(), 31);
    EXPECT_EQ(decoder->getRemainderFrames(), 69);
}

// Positions in the start record, where the regions meet, within a buffer, and in the end record.
TEST_F(Mp3DecoderTest, ChangeOfChannelsLosesAndRepeatsNoFrame) {
    setGaplessComment("0 14 A 1C2");
    for (const std::uint32_t first : {20U, 70U, 100U, 105U, 221U, 349U, 350U, 351U, 449U, 450U}) {
        for (const bool endIsReady : {false, true}) {
            const auto decoder = openDecoder();
            if (endIsReady) playToTheEnd(*decoder);
            EXPECT_TRUE(decoder->setSamplingRate(100));
            play(*decoder, first - 20);
            const std::uint64_t time = decoder->getTimestamp();
            EXPECT_TRUE(decoder->setChannels(3));
            EXPECT_EQ(decoder->getChannels(), 3);
            EXPECT_EQ(decoder->getTimestamp(), time);
            EXPECT_TRUE(decoder->setChannels(1));
            const std::string last = first < 449 ? "-449" : "";
            EXPECT_EQ(playToTheEnd(*decoder), first < 450 ? std::to_string(first) + last : "");
            EXPECT_EQ(decoder->getTimestamp(), 4'300'000'256U);
            decoder->seek(0);
            EXPECT_EQ(playToTheEnd(*decoder), "20-449");
        }
    }
}

TEST_F(Mp3DecoderTest, ChangeOfChannelsKeepsWhatASeekLeftOutAndTheEndOfTheData) {
    const auto decoder = openDecoder();
    decoder->seek(timeOf(400));
    EXPECT_TRUE(decoder->setChannels(1));
    EXPECT_EQ(play(*decoder, 5), "349 401-404");
    EXPECT_TRUE(decoder->setChannels(2));
    EXPECT_EQ(play(*decoder, 5), "354-358");

    platform().framesMissing = 200;
    decoder->seek(0);
    EXPECT_EQ(playToTheEnd(*decoder), "0-249");
    platform().framesMissing = 0;
    EXPECT_TRUE(decoder->setChannels(1));
    EXPECT_EQ(play(*decoder, 5), "");
}

TEST_F(Mp3DecoderTest, ValuesInForceChangeNothing) {
    const auto decoder = openDecoder();
    EXPECT_EQ(play(*decoder, 120), "0-119");
    platform().calls.clear();
    EXPECT_TRUE(decoder->setChannels(2));
    EXPECT_EQ(platform().calls, Lines{});
    EXPECT_EQ(play(*decoder, 10), "120-129");
    platform().calls.clear();
    EXPECT_TRUE(decoder->setSamplingRate(100));
    EXPECT_EQ(platform().calls, Lines{"ExtAudioFileSeek reader 1 100"});
    EXPECT_EQ(playToTheEnd(*decoder), "0-449");
}

constexpr FailedChange kFailedChanges[] = {
    {"rate refused", "ExtAudioFileSetProperty cfmt", 0, 0, 48000, 0},
    {"channels refused", "ExtAudioFileSetProperty cfmt", 0, 0, 0, 1},
    {"first read at the new rate", "ExtAudioFileRead", 0, 0, 200, 0},
    {"later read at the new rate", "ExtAudioFileRead", 5, 0, 200, 0},
    {"read of the new channels", "ExtAudioFileRead", 3, 0, 0, 1},
    {"records too large for memory", "", 0, 300'000, 100'000, 0},
    {"records too large for any sound", "", 0, 0, 4e7F, 0},
    {"buffer too large for memory", "", 0, 100'000, 0, 4, 8192},
};

TEST_F(Mp3DecoderTest, FailedChangeLetsThePlayingGoOnAsItWas) {
    setGaplessComment("0 14 A 1C2");
    for (const FailedChange& change : kFailedChanges) {
        platform().format.mFramesPerPacket = change.framesPerPacket;
        for (const std::uint32_t first : {20U, 70U, 105U, 349U, 350U, 400U}) {
            const auto decoder = openDecoder();
            play(*decoder, first - 20);
            const std::uint64_t time = decoder->getTimestamp();
            EXPECT_FALSE(change.isMade(*decoder)) << change.name;
            EXPECT_EQ(decoder->getSamplingRate(), 100);
            EXPECT_EQ(decoder->getChannels(), 2);
            EXPECT_EQ(decoder->getTimestamp(), time);
            const std::string stream = std::to_string(first) + "-449";
            EXPECT_EQ(playToTheEnd(*decoder), stream) << change.name;
            EXPECT_TRUE(decoder->setSamplingRate(200));
            EXPECT_EQ(playToTheEnd(*decoder), "40-899") << change.name;
        }
    }
}

// Seven reads fill the start record.
TEST_F(Mp3DecoderTest, FailedReadOfTheLastSecondIsAFailedChangeToo) {
    const auto decoder = openDecoder();
    EXPECT_EQ(play(*decoder, 400), "0-399");
    platform().failures["ExtAudioFileRead"] = {-36, 9};
    EXPECT_FALSE(decoder->setChannels(1));
    EXPECT_EQ(decoder->getChannels(), 2);
    EXPECT_EQ(playToTheEnd(*decoder), "400-449");  // held in memory
}

TEST_F(Mp3DecoderTest, ReaderThatRefusesToGoBackFailsAsAReadDoes) {
    for (const char* call : {"ExtAudioFileSetProperty cfmt", "ExtAudioFileSeek"}) {
        const auto decoder = openDecoder();
        EXPECT_EQ(play(*decoder, 90), "0-89");
        platform().failures["ExtAudioFileRead"] = {-36, 3};
        platform().failures[call] = {-50, 1};
        EXPECT_FALSE(decoder->setChannels(1));
        platform().failures.clear();
        EXPECT_EQ(play(*decoder, 30), "90-99 failed -26275");
        EXPECT_TRUE(decoder->setChannels(2));  // the ones in force
        EXPECT_EQ(playToTheEnd(*decoder), "100-449");
    }
}

}  // namespace
}  // namespace atdp
