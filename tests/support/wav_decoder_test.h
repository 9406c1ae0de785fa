// What the tests of the base decoder share.
#pragma once

#include <memory>
#include <tuple>
#include <vector>

#include "decoder/audio_toolbox_wav_decoder.h"
#include "tests/support/scripted_test.h"

namespace atdp {

using scripted::Lines;
using scripted::platform;
using scripted::sampleAt;

class WavDecoderTest : public scripted::ScriptedTest {
 protected:
    const std::string path = "/music/song.wav";

    std::unique_ptr<AudioToolboxWavDecoder> openDecoder() const {
        auto decoder = std::make_unique<AudioToolboxWavDecoder>();
        EXPECT_EQ(decoder->openByPath(path, nullptr), DECODER_RESULT_OK);
        platform().calls.clear();
        return decoder;
    }
};

inline std::string joined(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + '\n';
    return text;
}

// A result, the count as the call left it, and the room that was given: -1 where nothing was
// written.
using Delivery = std::tuple<std::int32_t, std::uint32_t, std::vector<float>>;

inline Delivery deliver(SeekableFileDecoder& decoder, std::uint32_t count) {
    std::vector<float> samples(count, -1.0F);
    const std::int32_t result = decoder.getNextSamples(samples.data(), &count);
    return {result, count, samples};
}

// What a room of that many floats holds after a delivery of `frames` frames from `frame` on.
inline std::vector<float> room(std::size_t floats, std::int64_t frame, std::uint32_t frames,
                               std::uint32_t channels = 2) {
    std::vector<float> samples;
    for (std::uint32_t i = 0; i < frames; ++i)
        for (std::uint32_t channel = 0; channel < channels; ++channel)
            samples.push_back(sampleAt(frame + i, channel));
    samples.resize(floats, -1.0F);
    return samples;
}

// What the platform answers to one call, and what is to come of it.
struct BadAnswer {
    const char* name;
    const char* call;
    OSStatus status;             // noErr: the size alone is wrong
    std::uint32_t returnedSize;  // 0: the value's own
    std::string log;
    std::string held;  // by the decoder afterwards

    void give() const {
        if (status != noErr) platform().failures[call] = {status};
        if (returnedSize != 0) platform().returnedSize[call] = returnedSize;
    }
};

// A decoder that never opened or is closed asks the platform for nothing.
inline void expectNotOpen(SeekableFileDecoder& decoder) {
    platform().calls.clear();
    EXPECT_EQ(deliver(decoder, 8), Delivery(-26275, 0, room(8, 0, 0)));
    EXPECT_EQ(decoder.seek(0), -25291);
    EXPECT_FALSE(decoder.setSamplingRate(48000));
    EXPECT_FALSE(decoder.setChannels(1));
    EXPECT_TRUE(decoder.setBits(32));
    EXPECT_EQ(decoder.getMetaData(), nullptr);
    EXPECT_EQ(decoder.getBits(), 32);
    EXPECT_EQ(decoder.getFormat(), 0x6C70636D);
    EXPECT_EQ(platform().calls, Lines{});
    EXPECT_EQ(platform().log, Lines{});
}

}  // namespace atdp
