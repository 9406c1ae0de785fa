// A file of each kind that the plug-in plays, and a host that plays it.
#pragma once

#include <algorithm>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "decoder/audio_toolbox_wav_decoder.h"
#include "mp3/audio_toolbox_mp3_decoder.h"
#include "mp4/audio_toolbox_mp4_decoder.h"
#include "plugin/audio_toolbox_decoder_plugin.h"
#include "plugin/module.h"
#include "tests/support/aiff_builder.h"
#include "tests/support/id3_builder.h"
#include "tests/support/temporary_file.h"
#include "tests/support/wave_builder.h"

namespace atdp::test {

struct SampleSound {
    std::string name;
    std::string bytes;
    const DecoderClass& decoderClass;
};

inline std::string testData(const std::string& name) {
    std::ifstream file(std::string(ATDP_TEST_DATA) + "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// 16-bit samples that never repeat.
inline std::string noise(std::size_t samples) {
    std::string data;
    std::uint32_t state = 1;
    for (std::size_t i = 0; i < samples; ++i) {
        state = state * 1664525 + 1013904223;
        data += littleEndian(static_cast<std::uint16_t>(state >> 16));
    }
    return data;
}

inline std::string sampleTag() {
    return id3Tag(3, id3Frame(3, "TIT2", '\1' + raw("\xFF\xFE") + utf16Little("A title")) +
                         id3Frame(3, "TPE1", raw("\0An artist")) +
                         id3Frame(3, "TCON", raw("\0(17)Rock")) +
                         id3Frame(3, "COMM", raw("\0eng\0A comment")));
}

// Tagged, and each longer than the block in which files are read, but for those that end in
// "short": these have some thousand frames.
inline std::vector<SampleSound> sampleSounds() {
    const std::string info = riffChunk("LIST", "INFO" + riffChunk("INAM", "A title") +
                                                   riffChunk("IART", "\x83\x65\x83\x58\x83\x67"));
    const WaveBuilder wave{.data = noise(2 * 40'000),
                           .chunksBefore = riffChunk("id3 ", sampleTag())};
    const WaveBuilder shortWave{.channels = 1,
                                .rate = 8000,
                                .data = noise(2000),
                                .chunksBefore = riffChunk("id3 ", sampleTag()) + info};
    const AiffBuilder aiff{.channels = 3, .data = noise(3 * 30'000)};
    const std::string layer3 = testData("layer3-vbr2.mp3");
    const DecoderClass& linear = AudioToolboxWavDecoder::decoderClass();
    const DecoderClass& mpeg = AudioToolboxMP3Decoder::decoderClass();
    return {{"wave", wave.bytes(), linear},
            {"wave, short", shortWave.bytes(), linear},
            {"aiff", aiff.bytes(), linear},
            {"layer III", sampleTag() + layer3 + id3v1Tag("A title"), mpeg},
            {"layer III, short", sampleTag() + testData("layer3-mpeg25-8k.mp3"), mpeg},
            {"free format", testData("layer3-free.mp3"), mpeg},
            {"layer II", testData("layer2.mp2"), mpeg},
            {"layer III in MPEG-4, short", testData("layer3.mp4"), mpeg},
            {"lossless", testData("lossless.m4a"), AudioToolboxMP4Decoder::decoderClass()}};
}

inline bool isShort(const SampleSound& sound) {
    return sound.name.ends_with("short");
}

// A delivery format: nothing where it is 0.
struct Delivery {
    float rate;
    std::int32_t channels;
};
inline constexpr Delivery kDeliveries[] = {{0, 0}, {0, 5}, {0, 1}, {22050, 0}, {48000, 6}};

inline bool apply(const Delivery& delivery, SeekableFileDecoder& decoder) {
    return (delivery.rate == 0 || decoder.setSamplingRate(delivery.rate)) &&
           (delivery.channels == 0 || decoder.setChannels(delivery.channels));
}

inline PluginProtocol& plugin() {
    static const auto object = AudioToolboxDecoderPlugin::initWithKey(kPluginKey);
    return *object;
}

// An open decoder; null where a step fails.
inline std::unique_ptr<SeekableFileDecoder> openDecoder(const std::string& path) {
    const DecoderClass* found = plugin().findDecoderClassByPath(path);
    auto decoder = found == nullptr ? nullptr : found->make();
    if (decoder && decoder->openByPath(path, nullptr) != DECODER_RESULT_OK) decoder.reset();
    return decoder;
}

// Adds at most so many frames to `samples`, until the end or a failure. Answers the last result.
inline std::int32_t play(SeekableFileDecoder& decoder, std::vector<float>& samples,
                         std::size_t frames = SIZE_MAX) {
    constexpr std::size_t kRequestFrames = 1500;
    const auto channels = static_cast<std::size_t>(decoder.getChannels());
    while (frames > 0) {
        const std::size_t wanted = std::min(frames, kRequestFrames) * channels;
        const std::size_t before = samples.size();
        samples.resize(before + wanted);
        auto size = static_cast<std::uint32_t>(wanted);
        const std::int32_t result = decoder.getNextSamples(samples.data() + before, &size);
        samples.resize(before + size);
        if (result != DECODER_RESULT_OK || size < wanted) return result;
        frames -= wanted / channels;
    }
    return DECODER_RESULT_OK;
}

// The whole file in that delivery format; nothing where it cannot be played to its end.
inline std::vector<float> playWhole(const std::string& path, const Delivery& delivery) {
    std::vector<float> samples;
    const auto decoder = openDecoder(path);
    if (!decoder || !apply(delivery, *decoder) || play(*decoder, samples) != DECODER_RESULT_OK)
        samples.clear();
    return samples;
}

// Takes the log: faults are told there.
class SilentLog {
 public:
    SilentLog() {
        AudioToolboxDecoderPluginSetLogSink([](const char*, void*) {}, nullptr);
    }
    SilentLog(const SilentLog&) = delete;
    SilentLog& operator=(const SilentLog&) = delete;
    ~SilentLog() { AudioToolboxDecoderPluginSetLogSink(nullptr, nullptr); }
};

}  // namespace atdp::test
