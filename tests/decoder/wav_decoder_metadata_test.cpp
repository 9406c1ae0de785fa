// Metadata: which source supplies what.
#include "tests/support/wav_decoder_metadata_test.h"
#include "tests/support/failing_malloc.h"

namespace atdp {
namespace {

using scripted::bytesOf;

TEST_F(WavDecoderMetadataTest, EarlierSourcesTakePrecedence) {
    const Lines tag = {"Title=\"tag title\"", "Artist=\"tag artist\""};
    const Lines list = {"Title=\"list title\"", "Artist=\"list artist\""};
    const Lines information = {"SrcBits=\"24\"", "SrcSampleRate=\"128000\"", "Track=3"};
    const Lines format = {"SrcSampleRate=44100.000000", "Channels=2", "SrcBits=16"};
    const Lines named = {"Artist=\"artist\"", "Title=\"title\""};
    const auto sum = [](Lines first, const Lines& second, const Lines& third) {
        first.insert(first.end(), second.begin(), second.end());
        first.insert(first.end(), third.begin(), third.end());
        return first;
    };
    const std::string noTag = "AudioFileCountUserData id3 ";
    const std::string noList = "AudioFileCountUserData LIST";
    const std::string noInformation = "AudioFileGetProperty info";
    const Lines channels = {"Channels=2"};
    const std::pair<Lines, Lines> failures[] = {
        {{}, sum(tag, information, channels)},
        {{noTag}, sum(list, information, channels)},
        {{noList}, sum(tag, information, channels)},
        {{noInformation}, sum(tag, format, {})},
        {{noTag, noList}, sum(named, information, channels)},
        {{noTag, noInformation}, sum(list, format, {})},
        {{noTag, noList, noInformation}, format},
        {{"AudioFileGetProperty ffmt"}, sum(named, information, channels)},
    };
    for (const auto& [calls, lines] : failures) {
        platform().failures.clear();
        for (const std::string& call : calls) platform().failures[call] = {kStatusIoError};
        EXPECT_EQ(read(), lines) << ::testing::PrintToString(calls);
    }
    EXPECT_EQ(platform().log, Lines{});
}

TEST_F(WavDecoderMetadataTest, OtherFilesAreNotAskedForUserData) {
    for (const std::uint32_t type : {kAudioFileAIFFType, kAudioFileAIFCType, kAudioFileRF64Type}) {
        platform().fileProperties["ffmt"] = bytesOf(type);
        const auto decoder = openDecoder();
        EXPECT_EQ(linesOf(*decoder->getMetaData()).front(), "Artist=\"artist\"");
        ASSERT_EQ(platform().calls.size(), 3U);
        EXPECT_EQ(platform().calls[0].find("AudioFileGetProperty ffmt file"), 0U);
        EXPECT_EQ(platform().calls[1].find("AudioFileGetProperty info file"), 0U);
        EXPECT_EQ(platform().calls[2].find("CFRelease dictionary"), 0U);
    }
}

TEST_F(WavDecoderMetadataTest, WithoutTagsOnlyTheFileFormatIsTold) {
    platform().userData.clear();
    platform().information.reset();
    platform().format = {96000, kAudioFormatULaw, 0, 6, 1, 6, 6, 0, 0};
    const auto decoder = openDecoder();
    EXPECT_TRUE(decoder->setChannels(2));
    EXPECT_TRUE(decoder->setSamplingRate(48000));
    EXPECT_EQ(linesOf(*decoder->getMetaData()),
              (Lines{"SrcSampleRate=96000.000000", "Channels=6", "SrcBits=0"}));
}

TEST_F(WavDecoderMetadataTest, WithoutMemoryASourceIsPassedOver) {
    const auto decoder = openDecoder();
    platform().tag.entries[0].value.text = std::string(1 << 16, 'x');
    {
        const scripted::FailingMalloc noMemory(1 << 16);
        const auto list = decoder->getMetaData();
        EXPECT_EQ(std::get<std::string>(list->at(0).value), "list title");
        EXPECT_EQ(list->size(), 6U);
    }
    const scripted::FailingMalloc noMemory(sizeof(MetadataList));
    EXPECT_EQ(decoder->getMetaData(), nullptr);
}

}  // namespace
}  // namespace atdp
