// The plug-in's decoder over real files.
#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <vector>

#include "decoder/audio_toolbox_wav_decoder.h"
#include "platform/log.h"
#include "plugin/audio_toolbox_decoder_plugin.h"
#include "plugin/module.h"
#include "tests/support/aiff_builder.h"
#include "tests/support/temporary_file.h"
#include "tests/support/wave_builder.h"

namespace atdp::test {
namespace {

constexpr std::uint32_t kChannels = 2;
constexpr std::uint64_t kFrames = 30'011;  // no multiple of any block in use

// 16-bit stereo in which every frame tells its own number.
WaveBuilder numberedFrames() {
    WaveBuilder builder;
    for (std::uint64_t i = 0; i < kFrames; ++i)
        builder.data += littleEndian(static_cast<std::uint16_t>(i)) +
                        littleEndian(static_cast<std::uint16_t>(i >> 3));
    return builder;
}

std::int64_t frameNumber(float first) {
    return static_cast<std::int64_t>(first * 32768) & 0xFFFF;
}

// Pulls to the end of the stream in requests of `frames` frames.
std::vector<float> pullAll(AudioToolboxWavDecoder& decoder, std::uint32_t frames) {
    std::vector<float> all, request(std::size_t{frames} * kChannels);
    for (;;) {
        auto size = static_cast<std::uint32_t>(request.size());
        EXPECT_EQ(decoder.getNextSamples(request.data(), &size), DECODER_RESULT_OK);
        if (size == 0) return all;
        all.insert(all.end(), request.begin(), request.begin() + size);
    }
}

// The log is silent where nothing fails, and expected where something does.
class WavPlayback : public testing::Test {
 protected:
    WavPlayback() {
        AudioToolboxDecoderPluginSetLogSink(
            [](const char* line, void* log) {
                static_cast<std::vector<std::string>*>(log)->emplace_back(line);
            },
            &log_);
    }
    ~WavPlayback() override { AudioToolboxDecoderPluginSetLogSink(nullptr, nullptr); }

    std::vector<std::string> log_;
    TemporaryFile file_{numberedFrames().bytes()};
    AudioToolboxWavDecoder decoder_;
};

TEST_F(WavPlayback, TellsWhatItOpened) {
    ASSERT_EQ(decoder_.openByPath(file_.path(), nullptr), DECODER_RESULT_OK);
    EXPECT_EQ(decoder_.getSamplingRate(), 44100.0F);
    EXPECT_EQ(decoder_.getChannels(), 2);
    EXPECT_EQ(decoder_.getBitRate(), 176400);
    EXPECT_EQ(decoder_.getPreferredBufferSize(), 882U);
    EXPECT_EQ(decoder_.getPrimingFrames(), 0);
    EXPECT_EQ(decoder_.openByPath(file_.path(), nullptr), DECODER_RESULT_FAILED);
    EXPECT_EQ(log_, std::vector<std::string>{"Already Opened."});
}

TEST_F(WavPlayback, DeliversTheSameInRequestsOfAnySize) {
    ASSERT_EQ(decoder_.openByPath(file_.path(), nullptr), DECODER_RESULT_OK);
    const auto straight = pullAll(decoder_, kFrames);
    ASSERT_EQ(straight.size(), kFrames * kChannels);
    for (std::uint64_t i = 0; i < kFrames; ++i)
        ASSERT_EQ(frameNumber(straight[i * kChannels]), static_cast<std::int64_t>(i));
    for (const std::uint32_t frames : {1U, 7U, 511U, 512U, 1000U, 4096U}) {
        ASSERT_EQ(decoder_.seek(0), DECODER_RESULT_OK);  // back from the end, again and again
        EXPECT_EQ(pullAll(decoder_, frames), straight) << frames;
    }
    EXPECT_TRUE(log_.empty());
}

TEST_F(WavPlayback, SeeksToTheFrameThatTheTimeMeans) {
    ASSERT_EQ(decoder_.openByPath(file_.path(), nullptr), DECODER_RESULT_OK);
    std::mt19937_64 random(7);
    std::uniform_int_distribution<std::uint64_t> times(0, 700'000'000);  // a little past the end
    std::vector<float> request(3000 * kChannels);
    for (int i = 0; i < 200; ++i) {
        const std::uint64_t time = times(random);
        const float product = static_cast<float>(time) * 44100.0F;
        const auto frame = static_cast<std::uint64_t>(product / 1000000000.0F);
        ASSERT_EQ(decoder_.seek(time), DECODER_RESULT_OK);
        EXPECT_EQ(decoder_.getTimestamp(), time);
        auto size = static_cast<std::uint32_t>(request.size());
        ASSERT_EQ(decoder_.getNextSamples(request.data(), &size), DECODER_RESULT_OK);
        const std::uint64_t left = frame < kFrames ? kFrames - frame : 0;
        ASSERT_EQ(size, std::min<std::uint64_t>(3000, left) * kChannels) << time;
        for (std::uint32_t k = 0; k < size; k += kChannels)
            ASSERT_EQ(frameNumber(request[k]), static_cast<std::int64_t>(frame + k / kChannels));
    }
}

// The frames before the failure are delivered, then every request fails; what is still there can
// be played after a seek back.
TEST_F(WavPlayback, EndsInAnErrorWhenTheFileShrinks) {
    ASSERT_EQ(decoder_.openByPath(file_.path(), nullptr), DECODER_RESULT_OK);
    std::filesystem::resize_file(file_.path(), 44 + 20'000 * 4);
    std::vector<float> request(kFrames * kChannels);
    auto size = static_cast<std::uint32_t>(request.size());
    EXPECT_EQ(decoder_.getNextSamples(request.data(), &size), DECODER_RESULT_READ_FAILED);
    EXPECT_EQ(size, 20'000 * kChannels);
    EXPECT_EQ(log_, std::vector<std::string>{"ExtAudioFileRead() failed. (0xFFFFFFFFFFFFFFDC)"});
    size = 100;
    EXPECT_EQ(decoder_.getNextSamples(request.data(), &size), DECODER_RESULT_READ_FAILED);
    EXPECT_EQ(size, 0U);
    ASSERT_EQ(decoder_.seek(0), DECODER_RESULT_OK);
    size = 100;
    EXPECT_EQ(decoder_.getNextSamples(request.data(), &size), DECODER_RESULT_OK);
    EXPECT_EQ(size, 100U);
}

TEST_F(WavPlayback, NamesTheStatusOfWhatCannotBeOpened) {
    const TemporaryFile text("no sound in here"), empty("");
    const TemporaryFile damaged(numberedFrames().bytes().substr(0, 30));
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

TEST_F(WavPlayback, IsChosenByContentWhateverTheName) {
    const auto plugin = AudioToolboxDecoderPlugin::initWithKey(kPluginKey);
    const TemporaryFile wave(numberedFrames().bytes(), ".mp3");
    const TemporaryFile aiff(AiffBuilder{.data = "12345678"}.bytes(), ".wav");
    const TemporaryFile other(WaveBuilder{.tag = 7, .bits = 8, .data = "...."}.bytes(), ".wav");
    const TemporaryFile text("no sound in here", ".wav");
    EXPECT_EQ(plugin->findDecoderClassByPath(wave.path()), &AudioToolboxWavDecoder::decoderClass());
    EXPECT_EQ(plugin->findDecoderClassByPath(aiff.path()), &AudioToolboxWavDecoder::decoderClass());
    EXPECT_EQ(plugin->findDecoderClassByPath(other.path()), nullptr);
    EXPECT_EQ(plugin->findDecoderClassByPath(text.path()), nullptr);
    EXPECT_EQ(plugin->findDecoderClassByPath("/nowhere/at/all.wav"), nullptr);
    EXPECT_TRUE(log_.empty());
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
