// Opening and closing, metadata, and descriptions that no sound has.
#include <cmath>

#include "tests/support/failing_malloc.h"
#include "tests/support/metadata_test.h"
#include "tests/support/mp3_decoder_test.h"

namespace atdp {
namespace {

TEST_F(Mp3DecoderTest, OpenDecodesTheFirstSecondAndNoMore) {
    AudioToolboxMP3Decoder decoder;
    ASSERT_EQ(decoder.openByPath("/music/song.mp3", nullptr), DECODER_RESULT_OK);
    const auto& calls = platform().calls;
    ASSERT_GT(calls.size(), 7U);
    EXPECT_EQ(Lines(calls.end() - 8, calls.end() - 6),
              (Lines{"ExtAudioFileSetProperty cfmt reader 1 40 100 lpcm 9 8 1 8 2 32 0",
                     "ExtAudioFileRead reader 1 16 1 2 128"}));
    EXPECT_EQ(calls.back(), "ExtAudioFileRead reader 1 16 1 2 128");
    EXPECT_EQ(decoder.getBitRate(), 0);
    EXPECT_EQ(decoder.getDuration(), 4'499'999'744U);
    EXPECT_EQ(decoder.getTimestamp(), 0U);
}

TEST_F(Mp3DecoderTest, FailureInOpenIsPassedOnAndLeavesAFileToBeClosed) {
    platform().failures["AudioFileOpenURL"] = {-43};
    EXPECT_EQ(AudioToolboxMP3Decoder().openByPath("/music/song.mp3", nullptr),
              DECODER_RESULT_FAILED);
    startCase();
    setFile(450);
    platform().failures["ExtAudioFileRead"] = {-36, 3};
    AudioToolboxMP3Decoder decoder;
    EXPECT_EQ(decoder.openByPath("/music/song.mp3", nullptr), DECODER_RESULT_READ_FAILED);
    EXPECT_EQ(platform().log, Lines{"ExtAudioFileRead() failed. (0xFFFFFFFFFFFFFFDC)"});
    EXPECT_EQ(platform().live(), (Lines{"file 1", "reader 1"}));
    platform().failures.clear();
    playToTheEnd(decoder);
    decoder.seek(timeOf(400));
    playToTheEnd(decoder);
}

TEST_F(Mp3DecoderTest, WithoutMemoryOpenFails) {
    const struct {
        double rate;
        std::uint32_t framesPerPacket;
        std::size_t memory;  // blocks from this size on are not to be had
        std::int32_t result;
        Lines log;
    } cases[] = {
        {44100, 16, 300'000, DECODER_RESULT_FAILED, {"AllocationFailed"}},  // for the records
        {100,
         8192,
         65536,
         DECODER_RESULT_READ_FAILED,  // for the buffer
         {"AllocationFailed", "ExtAudioFileRead() failed. (0xFFFFFFFFFFFFFFCE)"}},
    };
    for (const auto& expected : cases) {
        startCase();
        setFile(1'000'000);
        platform().format.mSampleRate = expected.rate;
        platform().format.mFramesPerPacket = expected.framesPerPacket;
        const scripted::FailingMalloc noMemory(expected.memory);
        AudioToolboxMP3Decoder decoder;
        EXPECT_EQ(decoder.openByPath("/music/song.mp3", nullptr), expected.result);
        EXPECT_EQ(platform().log, expected.log);
        if (expected.result == DECODER_RESULT_FAILED) {
            EXPECT_EQ(deliver(decoder, 4), Delivery(DECODER_RESULT_READ_FAILED, 0, room(4, 0, 0)));
        }
        decoder.close();
    }
}

TEST_F(Mp3DecoderTest, NotOpenNothingIsAskedOfThePlatform) {
    const auto decoder = openDecoder();
    decoder->close();
    expectNotOpen(*decoder);
    AudioToolboxMP3Decoder unopened;
    expectNotOpen(unopened);
}

// The file's format comes first, so the nominal bit rate finds its place taken.
TEST_F(Mp3DecoderTest, MetadataIsTheFormatAndThenTheInformationDictionary) {
    const auto decoder = openDecoder();
    Lines lines = {"SrcSampleRate=100.000000", "Channels=2", "SrcBits=0"};
    EXPECT_EQ(linesOf(*decoder->getMetaData()), lines);
    platform().information = dictionary({{"title", {"Song"}}, {"nominal bit rate", {"128000"}}});
    lines.push_back("Title=\"Song\"");
    EXPECT_EQ(linesOf(*decoder->getMetaData()), lines);
    EXPECT_EQ(platform().calls.back(), "CFRelease dictionary 1");
}

// Whatever the platform says of a file, delivery stays inside what is held, and ends.
TEST_F(Mp3DecoderTest, OddDescriptionsAreHarmless) {
    const double nan = std::nan("");
    const char* const unreadable = " failed -26275";
    const char* const sevenZs = "0 14 A 7FFFFFFFFFFFFFFF";
    const struct {
        const char* name;
        double rate;
        std::uint32_t channels, framesPerPacket;
        const char* comment;  // gapless
        std::int32_t opened;
        const char* played;
    } oddities[] = {
        {"rate not a number", nan, 2, 16, "", DECODER_RESULT_OK, "0-449"},
        {"rate infinite", HUGE_VAL, 2, 16, "", DECODER_RESULT_OK, "0-449"},
        {"rate and length out of range", nan, 2, 16, "0 0 0 FFFFFFFFFFFFFFFF",
         DECODER_RESULT_FAILED, unreadable},
        {"rate beyond the limit", 33'554'433, 2, 16, sevenZs, DECODER_RESULT_FAILED, unreadable},
        {"rate 0", 0, 2, 16, "", DECODER_RESULT_OK, "0-449"},
        {"rate negative", -1, 2, 16, "", DECODER_RESULT_OK, "0-449"},
        {"length negative", 100, 2, 16, "0 14 A FFFFFFFFFFFFFFFF", DECODER_RESULT_OK, "20-449"},
        {"length most negative", 100, 2, 16, "0 14 A 8000000000000000", DECODER_RESULT_OK,
         "20-449"},
        {"length huge", 100, 2, 16, sevenZs, DECODER_RESULT_OK, "20-449"},
        {"no channels", 100, 0, 16, "", DECODER_RESULT_OK, unreadable},
        {"no channels, no rate", nan, 0, 16, sevenZs, DECODER_RESULT_FAILED, unreadable},
        {"channels that wrap", 100, 0x40000001, 16, "", DECODER_RESULT_FAILED, unreadable},
        {"packets of nothing", 100, 2, 0, "", DECODER_RESULT_OK, "~100"},
        {"packets that wrap", 100, 2, 0x20000000, "", DECODER_RESULT_OK, "~100"},
        {"packets that wrap to few", 100, 2, 0x20000010, "", DECODER_RESULT_OK, "0-449"},
    };
    for (const auto& odd : oddities) {
        startCase();
        setFile(450);
        platform().format.mSampleRate = odd.rate;
        platform().format.mChannelsPerFrame = odd.channels;
        platform().format.mFramesPerPacket = odd.framesPerPacket;
        if (*odd.comment != '\0') setGaplessComment(odd.comment);
        const Options options{{DECODER_OPTION_KEY_MP3_THREASHOLD_DB, "-60"}};
        for (const Options* given : {static_cast<const Options*>(nullptr), &options}) {
            AudioToolboxMP3Decoder decoder;
            EXPECT_EQ(decoder.openByPath("/music/song.mp3", given), odd.opened) << odd.name;
            const std::string played = playToTheEnd(decoder);
            if (given == nullptr) {
                EXPECT_EQ(played, odd.played) << odd.name;
            }
            for (const std::uint64_t time : {std::uint64_t{0}, timeOf(200), ~std::uint64_t{0}}) {
                decoder.seek(time);
                playToTheEnd(decoder);
            }
            for (const float rate : {50.0F, 0.0F, -0.5F, -1.0F, 1e30F, HUGE_VALF, std::nanf("")}) {
                decoder.setSamplingRate(rate);
                play(decoder, 120);
                decoder.setChannels(0);
                decoder.setChannels(4);
                playToTheEnd(decoder);
            }
            decoder.close();
        }
    }
}

}  // namespace
}  // namespace atdp
