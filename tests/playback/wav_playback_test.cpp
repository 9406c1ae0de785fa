// The plug-in's decoder over real files.
#include "tests/support/wav_playback_test.h"

namespace atdp::test {
namespace {

TEST_F(WavPlayback, NamesTheStatusOfWhatCannotBeOpened) {
    const TemporaryFile text("no sound in here"), empty("");
    const TemporaryFile damaged(WaveBuilder{}.bytes().substr(0, 30));
    const TemporaryFile tooWide(WaveBuilder{.bits = 64, .data = "12345678"}.bytes());
    const TemporaryFile notForUs(WaveBuilder{.tag = 0x11, .bits = 4, .data = "...."}.bytes());
    const struct {
        std::string path, line;
    } cases[] = {
        {"/nowhere/at all.wav", "AudioFileOpenURL failed.(-43)"},
        {"/", "AudioFileOpenURL failed.(-36)"},
        {"/dev/zero", "AudioFileOpenURL failed.(-36)"},
        {text.path(), "AudioFileOpenURL failed.(1954115647)"},
        {empty.path(), "AudioFileOpenURL failed.(1954115647)"},
        {damaged.path(), "AudioFileOpenURL failed.(1685348671)"},
        {tooWide.path(),
         "ExtAudioFileSetProperty (kExtAudioFileProperty_ClientDataFormat) failed.(0x666D743F)"},
        {notForUs.path(),
         "ExtAudioFileSetProperty (kExtAudioFileProperty_ClientDataFormat) failed.(0x666D743F)"},
        {"", "CFURLCreateFromFileSystemRepresentation failed."},
    };
    for (const auto& expected : cases) {
        AudioToolboxWavDecoder decoder;
        log_.clear();
        EXPECT_EQ(decoder.openByPath(expected.path, nullptr), DECODER_RESULT_FAILED);
        ASSERT_FALSE(log_.empty()) << expected.path;
        EXPECT_EQ(log_.back(), expected.line) << expected.path;
        decoder.close();
    }
    log_.clear();
    decoder_.openByPath("/nowhere/at all.wav", nullptr);
    EXPECT_EQ(log_.front(), "url: file:///nowhere/at%20all.wav");
}

// A handle that was released, or belongs to something else, is refused and never followed.
TEST_F(WavPlayback, RefusesHandlesThatAreNotLive) {
    const ScopedCFURL url(CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const std::uint8_t*>(file_.path().data()),
        static_cast<long>(file_.path().size()), false));
    AudioFileID file = nullptr;
    ExtAudioFileRef reader = nullptr;
    ASSERT_EQ(AudioFileOpenURL(url.get(), kAudioFileReadPermission, 0, &file), noErr);
    ASSERT_EQ(ExtAudioFileWrapAudioFileID(file, false, &reader), noErr);
    EXPECT_EQ(ExtAudioFileDispose(reinterpret_cast<ExtAudioFileRef>(file)), -50);
    EXPECT_EQ(AudioFileClose(reinterpret_cast<AudioFileID>(reader)), -50);
    EXPECT_EQ(ExtAudioFileSeek(reader, -1), -66568);
    EXPECT_EQ(ExtAudioFileDispose(reader), noErr);
    EXPECT_EQ(AudioFileClose(file), noErr);
    EXPECT_EQ(ExtAudioFileDispose(reader), -50);
    EXPECT_EQ(AudioFileClose(file), -50);
    EXPECT_EQ(ExtAudioFileSeek(reader, 0), -50);
    for (const std::uintptr_t value : {0UL, 1UL, 0x100000012UL, ~0UL})
        EXPECT_EQ(ExtAudioFileSeek(reinterpret_cast<ExtAudioFileRef>(value), 0), -50);
}

}  // namespace
}  // namespace atdp::test
