// A file of each kind that the plug-in plays, and a host that plays it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "decoder/audio_toolbox_wav_decoder.h"
#include "decoder/time_arithmetic.h"
#include "mp3/audio_toolbox_mp3_decoder.h"
#include "mp4/audio_toolbox_mp4_decoder.h"
#include "plugin/audio_toolbox_decoder_plugin.h"
#include "plugin/module.h"
#include "tests/support/aiff_builder.h"
#include "tests/support/au_builder.h"
#include "tests/support/caf_builder.h"
#include "tests/support/data_file.h"
#include "tests/support/id3_builder.h"
#include "tests/support/temporary_file.h"
#include "tests/support/wave64_builder.h"
#include "tests/support/wave_builder.h"

namespace atdp::test {

struct SampleSound {
    std::string name;
    std::string bytes;
    const DecoderClass& decoderClass;
};

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
    const CafBuilder caf{.data = noise(2 * 40'000),
                         .chunksAfter = cafChunk("info", big32(1) + raw("title\0A title\0"))};
    const AuBuilder au{.annotation = "Title=A title\n", .data = noise(2 * 40'000)};
    const Wave64Builder wave64{.wave = {.data = noise(2 * 40'000)},
                               .chunksAfter = wave64Chunk("id3 ", sampleTag())};
    const std::string layer3 = dataBytes("layer3-vbr2.mp3");
    const DecoderClass& linear = AudioToolboxWavDecoder::decoderClass();
    const DecoderClass& lossless = AudioToolboxMP4Decoder::decoderClass();
    const DecoderClass& mpeg = AudioToolboxMP3Decoder::decoderClass();
    return {{"wave", wave.bytes(), linear},
            {"wave, short", shortWave.bytes(), linear},
            {"aiff", aiff.bytes(), linear},
            {"layer III", sampleTag() + layer3 + id3v1Tag("A title"), mpeg},
            {"layer III, short", sampleTag() + dataBytes("layer3-mpeg25-8k.mp3"), mpeg},
            {"free format", dataBytes("layer3-free.mp3"), mpeg},
            {"layer II", dataBytes("layer2.mp2"), mpeg},
            {"layer III in MPEG-4, short", dataBytes("layer3.mp4"), mpeg},
            {"lossless", dataBytes("lossless.m4a"), lossless},
            {"caf", caf.bytes(), linear},
            {"lossless caf", asLosslessCaf(dataBytes("lossless.m4a")), lossless},
            {"au", au.bytes(), linear},
            {"wave64", wave64.bytes(), linear}};
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

// The texts of a list, each as "key=text"; none of none.
inline std::vector<std::string> tagsOf(const MetadataList* list) {
    std::vector<std::string> tags;
    if (list == nullptr) return tags;
    for (const auto& entry : *list)
        if (const auto* text = std::get_if<std::string>(&entry.value))
            tags.push_back(entry.key + '=' + *text);
    return tags;
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

inline bool isStartOf(const std::vector<float>& whole, const std::vector<float>& part) {
    return part.size() <= whole.size() && std::equal(part.begin(), part.end(), whole.begin());
}

// Calls `test` with a file of each kind in each delivery format, and its samples there.
template <class Test>
void forEachDelivery(const Test& test) {
    const SilentLog silent;
    for (const SampleSound& sound : sampleSounds())
        for (const Delivery& delivery : kDeliveries) {
            const TemporaryFile file(sound.bytes);
            SCOPED_TRACE(sound.name + " at " + std::to_string(delivery.rate) + " Hz, " +
                         std::to_string(delivery.channels) + " channels");
            const auto expected = playWhole(file.path(), delivery);
            ASSERT_FALSE(expected.empty());
            test(sound, delivery, file, expected);
        }
}

// One decoder among many that play in turns.
struct Playing {
    std::unique_ptr<SeekableFileDecoder> decoder;
    const std::vector<float>* expected;
    std::vector<float> samples;

    bool playsRightAfterATurn() {
        return play(*decoder, samples, 400) == DECODER_RESULT_OK && isStartOf(*expected, samples);
    }
};

// Opens the file, spoils it, plays until it fails, mends it, and plays on: each sample comes once
// and in its place. Answers how many frames came before the failure; 0 where the file was in
// memory.
template <class Spoil>
std::size_t playThroughFault(const Delivery& delivery, const TemporaryFile& file,
                             const std::vector<float>& expected, const Spoil& spoil) {
    const auto decoder = openDecoder(file.path());
    EXPECT_TRUE(decoder && apply(delivery, *decoder));
    std::vector<float> samples;
    std::size_t framesBefore = 0;
    {
        const auto spoilt = spoil();
        const std::int32_t result = play(*decoder, samples);
        EXPECT_TRUE(isStartOf(expected, samples));
        const auto frames = samples.size() / static_cast<std::size_t>(decoder->getChannels());
        EXPECT_EQ(decoder->getTimestamp(),
                  nanosecondsFromFrames(frames, decoder->getSamplingRate()));
        if (result != DECODER_RESULT_OK) {
            const std::size_t played = samples.size();
            EXPECT_EQ(play(*decoder, samples), DECODER_RESULT_READ_FAILED);
            EXPECT_EQ(samples.size(), played);
            framesBefore = frames;
        }
    }
    EXPECT_EQ(play(*decoder, samples), DECODER_RESULT_OK);
    EXPECT_TRUE(samples == expected);
    samples.clear();
    EXPECT_EQ(decoder->seek(0), DECODER_RESULT_OK);
    EXPECT_EQ(play(*decoder, samples), DECODER_RESULT_OK);
    EXPECT_TRUE(samples == expected);
    return framesBefore;
}

}  // namespace atdp::test
