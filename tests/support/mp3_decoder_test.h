// What the tests of the MP3 decoder share.
#pragma once

#include <string>
#include <utility>

#include "decoder/option_keys.h"
#include "mp3/audio_toolbox_mp3_decoder.h"
#include "tests/support/failing_malloc.h"
#include "tests/support/wav_decoder_test.h"

namespace atdp {

// A file of 4.5 seconds at 100 Hz, in packets of 16 frames: the start record covers frames 0 to 99,
// the end record 350 to 449.
class Mp3DecoderTest : public scripted::ScriptedTest {
 protected:
    Mp3DecoderTest() { setFile(450); }

    static void setFile(std::int64_t frames) {
        platform().format = {100, kAudioFormatMPEGLayer3, 0, 0, 16, 0, 2, 0, 0};
        platform().frames = frames;
    }

    static void setGaplessComment(const std::string& text) {
        platform().fileProperties["id3t"] = scripted::Bytes(1);
        platform().tag = scripted::gaplessTag(text);
    }

    static std::unique_ptr<AudioToolboxMP3Decoder> openDecoder(const Options* options = nullptr) {
        auto decoder = std::make_unique<AudioToolboxMP3Decoder>();
        EXPECT_EQ(decoder->openByPath("/music/song.mp3", options), DECODER_RESULT_OK);
        platform().calls.clear();
        return decoder;
    }
};

// A change of the delivery format in which something fails.
struct FailedChange {
    const char* name;
    const char* call;
    int callsBefore;
    std::size_t memory;  // blocks from this size on are not to be had; 0: all are
    float rate;
    std::int32_t channels;  // 0: the rate is what changes
    std::uint32_t framesPerPacket = 16;

    bool isMade(SeekableFileDecoder& decoder) const {
        if (*call != '\0') platform().failures[call] = {-36, callsBefore};
        const scripted::FailingMalloc noMemory(memory > 0 ? memory : SIZE_MAX);
        const bool changed =
            channels == 0 ? decoder.setSamplingRate(rate) : decoder.setChannels(channels);
        platform().failures.clear();
        return changed;
    }
};

// A time in the middle of that frame at 100 Hz, where no rounding matters.
constexpr std::uint64_t timeOf(std::uint64_t frame) {
    return frame * 10'000'000 + 5'000'000;
}

// Asks a decoder for frames, once or until a request delivers less than it asked for. The
// answer names the frames: "20-99 350" is eighty frames and one, "~3" three that hold what no frame
// of the file holds. A result that is no success stands at the end.
class Playback {
 public:
    explicit Playback(SeekableFileDecoder& decoder) : decoder_(decoder) {}

    std::string play(std::uint32_t frames) {
        request(frames);
        return text();
    }

    std::string playToTheEnd(std::uint32_t framesAtATime) {
        int requests = 0;
        while (request(framesAtATime) && ++requests < 1000) continue;
        return text();
    }

 private:
    struct Run {
        std::int64_t first;  // -1: no frame of the file
        std::int64_t frames;
    };

    bool request(std::uint32_t frames) {
        const auto channels = static_cast<std::uint32_t>(decoder_.getChannels());
        const auto [result, count, samples] = deliver(decoder_, channels * frames);
        for (std::uint32_t i = 0; channels > 0 && i + channels <= count; i += channels)
            add(&samples[i], channels);
        for (std::size_t i = count; i < samples.size(); ++i) EXPECT_EQ(samples[i], -1.0F);
        result_ = result;
        return result == DECODER_RESULT_OK && count == channels * frames;
    }

    void add(const float* samples, std::uint32_t channels) {
        std::int64_t frame = static_cast<std::int64_t>(samples[0]) / 8;
        for (std::uint32_t channel = 0; channel < channels; ++channel)
            if (samples[channel] != sampleAt(frame, channel)) frame = -1;
        Run* last = runs_.empty() ? nullptr : &runs_.back();
        if (last && frame == (last->first < 0 ? -1 : last->first + last->frames))
            ++last->frames;
        else
            runs_.push_back({frame, 1});
    }

    std::string text() {
        std::string text;
        for (const Run& run : std::exchange(runs_, {})) {
            if (!text.empty()) text += ' ';
            text += run.first < 0 ? "~" + std::to_string(run.frames) : std::to_string(run.first);
            if (run.first >= 0 && run.frames > 1)
                text += '-' + std::to_string(run.first + run.frames - 1);
        }
        return result_ == DECODER_RESULT_OK ? text : text + " failed " + std::to_string(result_);
    }

    SeekableFileDecoder& decoder_;
    std::vector<Run> runs_;
    std::int32_t result_ = DECODER_RESULT_OK;
};

inline std::string play(SeekableFileDecoder& decoder, std::uint32_t frames) {
    return Playback(decoder).play(frames);
}

inline std::string playToTheEnd(SeekableFileDecoder& decoder, std::uint32_t framesAtATime = 48) {
    return Playback(decoder).playToTheEnd(framesAtATime);
}

}  // namespace atdp
