// Delivery and seeking: counts, the buffer between reads, position and time.
#include <algorithm>

#include "tests/support/failing_malloc.h"
#include "tests/support/wav_decoder_test.h"

namespace atdp {
namespace {

TEST_F(WavDecoderTest, RequestsAreServedFromTheBufferBeforeTheNextRead) {
    const auto decoder = openDecoder();
    EXPECT_EQ(deliver(*decoder, 1000), Delivery(DECODER_RESULT_OK, 1000, room(1000, 0, 500)));
    EXPECT_EQ(platform().calls, (Lines{"ExtAudioFileRead reader 1 512 1 2 4096"}));
    EXPECT_EQ(deliver(*decoder, 24), Delivery(DECODER_RESULT_OK, 24, room(24, 500, 12)));
    EXPECT_EQ(platform().calls.size(), 1U);
    EXPECT_EQ(deliver(*decoder, 3000), Delivery(DECODER_RESULT_OK, 3000, room(3000, 512, 1500)));
    EXPECT_EQ(platform().calls.size(), 4U);
}

TEST_F(WavDecoderTest, CountsThatAreNotWholeFramesComeBackAsTheyWere) {
    for (const auto& [channels, count, delivered] :
         {std::tuple{2U, 5U, 2U}, {2U, 1U, 0U}, {6U, 20U, 3U}, {1U, 0U, 0U}}) {
        platform().format.mChannelsPerFrame = channels;
        const auto decoder = openDecoder();
        EXPECT_EQ(deliver(*decoder, count),
                  Delivery(DECODER_RESULT_OK, count, room(count, 0, delivered, channels)));
        EXPECT_EQ(platform().calls.size(), delivered > 0 ? 1U : 0U);
    }
}

TEST_F(WavDecoderTest, EndOfStreamDeliversWhatIsLeftAndThenNothing) {
    platform().frames = 700;
    const auto decoder = openDecoder();
    EXPECT_EQ(deliver(*decoder, 2000), Delivery(DECODER_RESULT_OK, 1400, room(2000, 0, 700)));
    const std::uint64_t end = decoder->getTimestamp();
    EXPECT_EQ(deliver(*decoder, 8), Delivery(DECODER_RESULT_OK, 0, room(8, 0, 0)));
    EXPECT_EQ(deliver(*decoder, 5), Delivery(DECODER_RESULT_OK, 1, room(5, 0, 0)));
    EXPECT_EQ(decoder->getTimestamp(), end);
    EXPECT_EQ(platform().log, Lines{});
}

// The room that the list names shrinks with a short read and is never restored.
TEST_F(WavDecoderTest, ShortReadLowersTheSizeOfTheReadsAfterIt) {
    platform().frames = 600;
    const auto decoder = openDecoder();
    deliver(*decoder, 1200);
    EXPECT_EQ(decoder->seek(0), DECODER_RESULT_OK);
    platform().calls.clear();
    EXPECT_EQ(deliver(*decoder, 200), Delivery(DECODER_RESULT_OK, 200, room(200, 0, 100)));
    EXPECT_EQ(platform().calls, Lines(2, "ExtAudioFileRead reader 1 512 1 2 704"));
}

TEST_F(WavDecoderTest, FailedReadKeepsTheFramesBeforeIt) {
    const auto decoder = openDecoder();
    platform().failures["ExtAudioFileRead"] = {0x3F, 1};
    EXPECT_EQ(deliver(*decoder, 2048),
              Delivery(DECODER_RESULT_READ_FAILED, 1024, room(2048, 0, 512)));
    EXPECT_EQ(decoder->getTimestamp(), 11'609'977U);

    platform().failures["ExtAudioFileRead"] = {-36};
    EXPECT_EQ(deliver(*decoder, 4), Delivery(DECODER_RESULT_READ_FAILED, 0, room(4, 0, 0)));
    EXPECT_EQ(platform().log, (Lines{"ExtAudioFileRead() failed. (0x0000003F)",
                                     "ExtAudioFileRead() failed. (0xFFFFFFFFFFFFFFDC)"}));

    platform().failures.clear();
    EXPECT_EQ(deliver(*decoder, 4), Delivery(DECODER_RESULT_OK, 4, room(4, 512, 2)));
}

TEST_F(WavDecoderTest, DummySamplesAreZerosAndMoveNothing) {
    const auto decoder = openDecoder();
    deliver(*decoder, 1000);
    const std::uint64_t time = decoder->getTimestamp();
    std::vector<float> samples(1025, -1.0F);
    std::uint32_t count = 1024;
    EXPECT_EQ(decoder->getDummySamples(samples.data(), &count), 0);
    EXPECT_EQ(count, 1024U);
    EXPECT_EQ(std::count(samples.begin(), samples.end() - 1, 0.0F), 1024);
    EXPECT_EQ(samples.back(), -1.0F);
    EXPECT_EQ(decoder->getTimestamp(), time);
    EXPECT_EQ(deliver(*decoder, 2), Delivery(DECODER_RESULT_OK, 2, room(2, 500, 1)));
}

TEST_F(WavDecoderTest, SeekGoesToTheFrameOfTheTimeAndDropsTheBuffer) {
    const auto decoder = openDecoder();
    const std::pair<std::uint64_t, std::int64_t> seeks[] = {
        {123'456'789, 5'444}, {0, 0}, {1'000'000'000, 44'100}};
    for (const auto& [time, frame] : seeks) {
        deliver(*decoder, 4);
        platform().calls.clear();
        EXPECT_EQ(decoder->seek(time), DECODER_RESULT_OK);
        EXPECT_EQ(platform().calls, Lines{"ExtAudioFileSeek reader 1 " + std::to_string(frame)});
        EXPECT_EQ(decoder->getTimestamp(), time);
        EXPECT_EQ(deliver(*decoder, 4), Delivery(DECODER_RESULT_OK, 4, room(4, frame, 2)));
    }
    EXPECT_EQ(decoder->seek(0), DECODER_RESULT_OK);
    deliver(*decoder, 2 * 44'100);
    EXPECT_EQ(decoder->getTimestamp(), 999'999'936U);  // in single precision
    deliver(*decoder, 2 * (441'000 - 44'100));
    EXPECT_EQ(decoder->getTimestamp(), 10'000'000'000U);
    platform().calls.clear();
    EXPECT_EQ(decoder->seek(100'000'000'000), DECODER_RESULT_OK);  // for the platform to judge
    EXPECT_EQ(platform().calls, Lines{"ExtAudioFileSeek reader 1 4410000"});
    EXPECT_EQ(deliver(*decoder, 4), Delivery(DECODER_RESULT_OK, 0, room(4, 0, 0)));
}

TEST_F(WavDecoderTest, FailedSeekChangesNothing) {
    const auto decoder = openDecoder();
    deliver(*decoder, 1000);
    const std::uint64_t time = decoder->getTimestamp();
    for (const OSStatus status : {0x3F, -50}) {
        platform().failures["ExtAudioFileSeek"] = {status};
        EXPECT_EQ(decoder->seek(1'000'000'000), DECODER_RESULT_FAILED);
    }
    EXPECT_EQ(platform().log, (Lines{"ExtAudioFileSeek Failed. (0x0000003F)",
                                     "ExtAudioFileSeek Failed. (0xFFFFFFFFFFFFFFCE)"}));
    EXPECT_EQ(decoder->getTimestamp(), time);
    platform().calls.clear();
    EXPECT_EQ(deliver(*decoder, 24), Delivery(DECODER_RESULT_OK, 24, room(24, 500, 12)));
    EXPECT_EQ(platform().calls, Lines{});
}

TEST_F(WavDecoderTest, ReadThatClaimsMoreThanItsRoomIsTakenForAFullOne) {
    platform().framesOverstated = 1000;
    const auto decoder = openDecoder();
    EXPECT_EQ(deliver(*decoder, 2048), Delivery(DECODER_RESULT_OK, 2048, room(2048, 0, 1024)));
}

TEST_F(WavDecoderTest, WithoutABufferDeliveryFailsAsAReadDoes) {
    AudioToolboxWavDecoder decoder;
    {
        const scripted::FailingMalloc noMemory(4096);
        EXPECT_EQ(decoder.openByPath(path, nullptr), DECODER_RESULT_OK);
    }
    EXPECT_EQ(platform().log, Lines{"AllocationFailed"});
    EXPECT_EQ(deliver(decoder, 4), Delivery(DECODER_RESULT_READ_FAILED, 0, room(4, 0, 0)));
}

}  // namespace
}  // namespace atdp
