// Opening and closing: order, failures, and who holds which handle.
#include "tests/support/wav_decoder_test.h"

namespace atdp {
namespace {

using scripted::bytesOf;

TEST_F(WavDecoderTest, OpenAndCloseCallThePlatformInOrder) {
    platform().frames = 441'000;
    platform().fileProperties["pnfo"] = bytesOf(AudioFilePacketTableInfo{900, 60, 40});
    platform().format = {44100, kAudioFormatAppleLossless, 1, 0, 4096, 0, 2, 0, 7};
    AudioToolboxWavDecoder decoder;
    ASSERT_EQ(decoder.openByPath(path + std::string("\0.mp3", 5), nullptr), DECODER_RESULT_OK);
    EXPECT_EQ(decoder.getPrimingFrames(), 60);
    EXPECT_EQ(decoder.getRemainderFrames(), 40);
    EXPECT_EQ(decoder.getDuration(), 10'000'000'000U);  // of all frames, not the valid ones
    decoder.close();
    std::erase(platform().calls, "CFRelease url 1");  // any time after its last use
    EXPECT_EQ(
        platform().calls,
        (Lines{"CFURLCreateFromFileSystemRepresentation /music/song.wav 0",
               "AudioFileOpenURL url 1 1 0", "ExtAudioFileWrapAudioFileID file 1 0",
               "ExtAudioFileGetProperty #frm reader 1 8", "ExtAudioFileGetProperty afil reader 1 8",
               "AudioFileGetProperty pnfo file 1 16", "ExtAudioFileGetProperty ffmt reader 1 40",
               "ExtAudioFileSetProperty cfmt reader 1 40 44100 lpcm 9 8 1 8 2 32 7",
               "ExtAudioFileDispose reader 1", "AudioFileClose file 1"}));
    EXPECT_EQ(platform().log, Lines{});
}

constexpr const char* kBoth = "file 1\nreader 1\n";
const std::string kGetProperty = "ExtAudioFileGetProperty (kExtAudioFileProperty_";

const BadAnswer kFatalAnswers[] = {
    {"url", "CFURLCreateFromFileSystemRepresentation", -1, 0,
     "CFURLCreateFromFileSystemRepresentation failed.\n", ""},
    {"file", "AudioFileOpenURL", -43, 0,
     "url: file:///music/song.wav\nAudioFileOpenURL failed.(-43)\n", ""},
    {"reader", "ExtAudioFileWrapAudioFileID", kStatusUnsupportedFormat, 0,
     "ExtAudioFileWrapAudioFileID failed.(0x666D743F)\n", "file 1\n"},
    {"length", "ExtAudioFileGetProperty #frm", -50, 0,
     kGetProperty + "FileLengthFrames) failed.(0xFFFFFFFFFFFFFFCE)\n", kBoth},
    {"size of the length", "ExtAudioFileGetProperty #frm", noErr, 4,
     kGetProperty + "FileLengthFrames) failed.(0x0)\n", kBoth},
    {"format", "ExtAudioFileGetProperty ffmt", 7, 0,
     kGetProperty + "FileDataFormat) failed.(0x7)\n", kBoth},
    {"size of the format", "ExtAudioFileGetProperty ffmt", noErr, 36,
     kGetProperty + "FileDataFormat) failed.(0x0)\n", kBoth},
    {"client format", "ExtAudioFileSetProperty cfmt", -50, 0,
     "ExtAudioFileSetProperty (kExtAudioFileProperty_ClientDataFormat) failed."
     "(0xFFFFFFFFFFFFFFCE)\n",
     kBoth},
};

TEST_F(WavDecoderTest, FailedOpenIsLoggedAndHoldsWhatItGotUntilClose) {
    for (const BadAnswer& bad : kFatalAnswers) {
        SCOPED_TRACE(bad.name);
        bad.give();
        AudioToolboxWavDecoder decoder;
        EXPECT_EQ(decoder.openByPath(path, nullptr), DECODER_RESULT_FAILED);
        EXPECT_EQ(joined(platform().log), bad.log);
        EXPECT_EQ(joined(platform().live()), bad.held);
        EXPECT_EQ(deliver(decoder, 8), Delivery(DECODER_RESULT_READ_FAILED, 0, room(8, 0, 0)));
        decoder.close();
        decoder.close();
        startCase();
        bad.give();
        AudioToolboxWavDecoder().openByPath(path, nullptr);
        leftOpen = platform().live();
        EXPECT_EQ(joined(leftOpen), bad.held);  // the destructor closes none of it
        startCase();
    }
}

const std::string kGetFile =
    "ExtAudioFileGetProperty(file_ref_, kExtAudioFileProperty_AudioFile) failed.";

TEST_F(WavDecoderTest, MissingGaplessCountsAreNotAFailure) {
    for (const BadAnswer& bad : {
             BadAnswer{"file", "ExtAudioFileGetProperty afil", -50, 0,
                       kGetFile + "(0xFFFFFFFFFFFFFFCE)\n", ""},
             {"size of the file", "ExtAudioFileGetProperty afil", noErr, 4, kGetFile + "(0x0)\n",
              ""},
             {"table", "AudioFileGetProperty pnfo", kStatusUnknownProperty, 0, "", ""},
             {"size of the table", "AudioFileGetProperty pnfo", noErr, 12, "", ""},
         }) {
        SCOPED_TRACE(bad.name);
        startCase();
        bad.give();
        platform().frames = 441'000;
        platform().fileProperties["pnfo"] = bytesOf(AudioFilePacketTableInfo{900, 60, 40});
        const auto decoder = openDecoder();
        EXPECT_EQ(joined(platform().log), bad.log);
        EXPECT_EQ(decoder->getPrimingFrames(), 0);
        EXPECT_EQ(decoder->getRemainderFrames(), 0);
        EXPECT_EQ(decoder->getDuration(), 10'000'000'000U);
    }
}

// They are asked for only where the file has no packet table, and replace the length.
TEST_F(WavDecoderTest, GaplessCountsOfTheTagAreReportedAndNotCut) {
    platform().frames = 1000;
    platform().fileProperties["id3t"] = scripted::Bytes(3);
    platform().tag = scripted::gaplessTag("00000000 00000840 000001CC 000000000006BAA8");
    const auto decoder = openDecoder();
    EXPECT_EQ(decoder->getPrimingFrames(), 2112);
    EXPECT_EQ(decoder->getRemainderFrames(), 460);
    EXPECT_EQ(decoder->getDuration(), 10'000'000'000U);
    EXPECT_EQ(deliver(*decoder, 2), Delivery(DECODER_RESULT_OK, 2, room(2, 0, 1)));
}

TEST_F(WavDecoderTest, OpenIsRefusedWhileAReaderIsSet) {
    const auto decoder = openDecoder();
    EXPECT_EQ(decoder->openByPath(path, nullptr), DECODER_RESULT_FAILED);
    EXPECT_EQ(deliver(*decoder, 2), Delivery(DECODER_RESULT_OK, 2, room(2, 0, 1)));
    decoder->close();
    EXPECT_EQ(decoder->openByPath(path, nullptr), DECODER_RESULT_FAILED);

    platform().failures["ExtAudioFileGetProperty #frm"] = {-50};
    AudioToolboxWavDecoder failed;
    failed.openByPath(path, nullptr);
    platform().log.resize(2);
    EXPECT_EQ(failed.openByPath(path, nullptr), DECODER_RESULT_FAILED);
    failed.close();
    EXPECT_EQ(platform().log, Lines(3, "Already Opened."));
}

TEST_F(WavDecoderTest, NewOpenClosesTheFileThatAFailedOneLeft) {
    platform().failures["ExtAudioFileWrapAudioFileID"] = {-50};
    AudioToolboxWavDecoder decoder;
    decoder.openByPath(path, nullptr);
    platform().failures["AudioFileOpenURL"] = {-43};
    decoder.openByPath(path, nullptr);
    EXPECT_EQ(platform().live(), Lines{});
    platform().failures.clear();
    EXPECT_EQ(decoder.openByPath(path, nullptr), DECODER_RESULT_OK);
    EXPECT_EQ(platform().live(), (Lines{"file 2", "reader 1"}));
    decoder.close();

    platform().failures["ExtAudioFileWrapAudioFileID"] = {-50};
    AudioToolboxWavDecoder closed;
    closed.openByPath(path, nullptr);
    closed.close();  // and nothing twice
    platform().failures.clear();
    EXPECT_EQ(closed.openByPath(path, nullptr), DECODER_RESULT_OK);
}

TEST_F(WavDecoderTest, NotOpenYet) {
    AudioToolboxWavDecoder decoder;
    expectNotOpen(decoder);
    EXPECT_EQ(decoder.getDuration() + decoder.getTimestamp(), 0U);
    EXPECT_EQ(std::tuple(decoder.getSamplingRate(), decoder.getChannels(), decoder.getBitRate(),
                         decoder.getPrimingFrames(), decoder.getRemainderFrames(),
                         decoder.getPreferredBufferSize()),
              std::tuple(0, 0, 0, 0, 0, 0U));
    decoder.close();
    expectNotOpen(decoder);
}

TEST_F(WavDecoderTest, ClosedKeepsWhatTheFileWas) {
    openDecoder();  // its destructor closes it
    EXPECT_EQ(platform().calls, (Lines{"ExtAudioFileDispose reader 1", "AudioFileClose file 1"}));
    startCase();
    const auto decoder = openDecoder();
    deliver(*decoder, 88'200);
    decoder->close();
    decoder->close();
    expectNotOpen(*decoder);
    EXPECT_EQ(decoder->getTimestamp(), 999'999'936U);
    EXPECT_EQ(decoder->getChannels(), 2);
    EXPECT_EQ(decoder->getBitRate(), 176'400);
}

}  // namespace
}  // namespace atdp
