// The choice of decoder class, over the scripted platform.
#include "decoder/audio_toolbox_wav_decoder.h"
#include "mp3/audio_toolbox_mp3_decoder.h"
#include "mp4/audio_toolbox_mp4_decoder.h"
#include "plugin/audio_toolbox_decoder_plugin.h"
#include "plugin/module.h"
#include "tests/support/scripted_test.h"

namespace atdp {
namespace {

using scripted::Lines;
using scripted::platform;

class PluginTest : public scripted::ScriptedTest {
 protected:
    // By content alone: the name, which ends at a NUL, says MPEG.
    static const DecoderClass* findClass() {
        return AudioToolboxDecoderPlugin::initWithKey(kPluginKey)
            ->findDecoderClassByPath(std::string("/music/song.mp3\0.wav", 20));
    }
};

TEST_F(PluginTest, LinearPcmIsServedByTheWavDecoder) {
    platform().returnedSize["ExtAudioFileGetProperty ffmt"] = 4;  // not looked at
    const DecoderClass* found = findClass();
    ASSERT_EQ(found, &AudioToolboxWavDecoder::decoderClass());
    EXPECT_STREQ(found->name, "AudioToolboxWavDecoder");
    EXPECT_EQ(found->getScoreByPath("/no/such/file"), 100U);
    const auto decoder = found->make();
    EXPECT_NE(dynamic_cast<AudioToolboxWavDecoder*>(decoder.get()), nullptr);
    EXPECT_EQ(platform().calls,
              (Lines{"CFURLCreateFromFileSystemRepresentation /music/song.mp3 0",
                     "ExtAudioFileOpenURL url 1", "ExtAudioFileGetProperty ffmt reader 1 40",
                     "ExtAudioFileDispose reader 1", "CFRelease url 1"}));
}

TEST_F(PluginTest, MpegAudioIsServedByTheMp3Decoder) {
    for (const std::uint32_t code :
         {fourCharCode(".mp1"), fourCharCode(".mp2"), fourCharCode(".mp3")}) {
        platform().format.mFormatID = code;
        const DecoderClass* found = findClass();
        ASSERT_EQ(found, &AudioToolboxMP3Decoder::decoderClass()) << code;
        EXPECT_STREQ(found->name, "AudioToolboxMP3Decoder");
        EXPECT_EQ(found->getScoreByPath("/no/such/file"), 100U);
        const auto decoder = found->make();
        EXPECT_NE(dynamic_cast<AudioToolboxMP3Decoder*>(decoder.get()), nullptr);
    }
}

TEST_F(PluginTest, AppleLosslessIsServedByTheMp4Decoder) {
    platform().format.mFormatID = fourCharCode("alac");
    const DecoderClass* found = findClass();
    ASSERT_EQ(found, &AudioToolboxMP4Decoder::decoderClass());
    EXPECT_STREQ(found->name, "AudioToolboxMP4Decoder");
    EXPECT_EQ(found->getScoreByPath("/no/such/file"), 100U);
    const auto decoder = found->make();
    EXPECT_NE(dynamic_cast<AudioToolboxMP4Decoder*>(decoder.get()), nullptr);
}

TEST_F(PluginTest, OtherEncodingsHaveNoDecoderAndAreNotLogged) {
    for (const std::uint32_t code :
         {fourCharCode("aac "), fourCharCode("LPCM"), fourCharCode(".mp4"), kAudioFormatULaw}) {
        platform().format.mFormatID = code;
        EXPECT_EQ(findClass(), nullptr) << code;
    }
    EXPECT_EQ(platform().log, Lines{});
}

struct ProbeFailure {
    const char* call;
    OSStatus status;
    Lines log;
};

TEST_F(PluginTest, FailuresGiveNoClassAndReleaseEverything) {
    const ProbeFailure failures[] = {
        {"CFURLCreateFromFileSystemRepresentation",
         -1,
         {"CFURLCreateFromFileSystemRepresentation failed."}},
        {"ExtAudioFileOpenURL", kStatusFileNotFound, {}},
        {"ExtAudioFileGetProperty ffmt",
         -50,
         {"ExtAudioFileGetProperty (kExtAudioFileProperty_FileDataFormat) failed."
          "(0xFFFFFFFFFFFFFFCE)"}},
    };
    for (const ProbeFailure& failure : failures) {
        scripted::resetPlatform();
        platform().failures[failure.call] = {failure.status};
        EXPECT_EQ(findClass(), nullptr);
        EXPECT_EQ(platform().log, failure.log);
        EXPECT_EQ(platform().live(), Lines{}) << failure.call;
        EXPECT_EQ(platform().faults, Lines{}) << failure.call;
    }
}

}  // namespace
}  // namespace atdp
