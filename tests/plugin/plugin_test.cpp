// The choice of decoder class, over the scripted platform.
#include <tuple>

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

TEST_F(PluginTest, EachEncodingIsServedByItsDecoderOrNone) {
    const DecoderClass& wav = AudioToolboxWavDecoder::decoderClass();
    const DecoderClass& mp3 = AudioToolboxMP3Decoder::decoderClass();
    const DecoderClass& mp4 = AudioToolboxMP4Decoder::decoderClass();
    for (const auto& [code, decoderClass, name] :
         {std::tuple{fourCharCode("lpcm"), &wav, "AudioToolboxWavDecoder"},
          {fourCharCode(".mp1"), &mp3, "AudioToolboxMP3Decoder"},
          {fourCharCode(".mp2"), &mp3, "AudioToolboxMP3Decoder"},
          {fourCharCode(".mp3"), &mp3, "AudioToolboxMP3Decoder"},
          {fourCharCode("alac"), &mp4, "AudioToolboxMP4Decoder"}}) {
        platform().format.mFormatID = code;
        ASSERT_EQ(findClass(), decoderClass) << code;
        EXPECT_STREQ(decoderClass->name, name);
        EXPECT_EQ(decoderClass->getScoreByPath("/no/such/file"), 100U);
    }
    for (const std::uint32_t code :
         {fourCharCode("aac "), fourCharCode("LPCM"), fourCharCode(".mp4"), kAudioFormatULaw}) {
        platform().format.mFormatID = code;
        EXPECT_EQ(findClass(), nullptr) << code;
    }
    EXPECT_EQ(platform().log, Lines{});
    EXPECT_NE(dynamic_cast<AudioToolboxWavDecoder*>(wav.make().get()), nullptr);
    EXPECT_NE(dynamic_cast<AudioToolboxMP3Decoder*>(mp3.make().get()), nullptr);
    EXPECT_NE(dynamic_cast<AudioToolboxMP4Decoder*>(mp4.make().get()), nullptr);
}

TEST_F(PluginTest, TheFileIsAskedForItsFormatOnly) {
    platform().returnedSize["ExtAudioFileGetProperty ffmt"] = 4;  // not looked at
    EXPECT_NE(findClass(), nullptr);
    EXPECT_EQ(platform().calls,
              (Lines{"CFURLCreateFromFileSystemRepresentation /music/song.mp3 0",
                     "ExtAudioFileOpenURL url 1", "ExtAudioFileGetProperty ffmt reader 1 40",
                     "ExtAudioFileDispose reader 1", "CFRelease url 1"}));
}

TEST_F(PluginTest, FailuresGiveNoClassAndReleaseEverything) {
    const std::tuple<const char*, OSStatus, Lines> failures[] = {
        {"CFURLCreateFromFileSystemRepresentation",
         -1,
         {"CFURLCreateFromFileSystemRepresentation failed."}},
        {"ExtAudioFileOpenURL", kStatusFileNotFound, {}},
        {"ExtAudioFileGetProperty ffmt",
         -50,
         {"ExtAudioFileGetProperty (kExtAudioFileProperty_FileDataFormat) failed."
          "(0xFFFFFFFFFFFFFFCE)"}},
    };
    for (const auto& [call, status, log] : failures) {
        SCOPED_TRACE(call);
        startCase();
        platform().failures[call] = {status};
        EXPECT_EQ(findClass(), nullptr);
        EXPECT_EQ(platform().log, log);
    }
}

}  // namespace
}  // namespace atdp
