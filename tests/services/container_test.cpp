// What WAVE and AIFF files, sound and broken ones, are described as.
#include <gtest/gtest.h>

#include <functional>

#include "services/containers/recognition.h"
#include "tests/support/aiff_builder.h"
#include "tests/support/memory_source.h"
#include "tests/support/wave_builder.h"

namespace atdp::test {
namespace {

using services::describeSound;
using services::Failure;

services::Result<services::SoundDescription> describe(const std::string& bytes) {
    MemorySource source(bytes);
    return describeSound(source);
}

WaveBuilder wave(const std::function<void(WaveBuilder&)>& change = [](WaveBuilder&) {}) {
    WaveBuilder builder;
    builder.data = std::string(400, 'd');
    change(builder);
    return builder;
}

AiffBuilder aiff(const std::function<void(AiffBuilder&)>& change = [](AiffBuilder&) {}) {
    AiffBuilder builder;
    builder.data = std::string(400, 'd');
    change(builder);
    return builder;
}

std::string largeWave(const char* form, std::uint64_t dataBytes, std::uint64_t formBytes) {
    WaveBuilder builder = wave();
    const std::string sizes = riffChunk(
        "ds64", littleEndian(formBytes) + littleEndian(dataBytes) + std::string(12, '\0'));
    builder.statedDataBytes = 0xFFFFFFFF;
    std::string bytes = builder.bytes();
    bytes.insert(12, sizes);
    return form + littleEndian(std::uint32_t{0xFFFFFFFF}) + bytes.substr(8);
}

struct FormatCase {
    std::string bytes;
    std::uint32_t fileType, formatId, flags, bits, bytesPerFrame;
    std::uint64_t frames;
};

TEST(Containers, DescribeTheFormatsTheyHold) {
    const std::uint32_t wav = fourCharCode("WAVE"), rf64 = fourCharCode("RF64"),
                        aif = fourCharCode("AIFF"), aifc = fourCharCode("AIFC"),
                        lpcm = fourCharCode("lpcm");
    const auto aiffC = [](const char* compression, std::uint16_t bits) {
        return aiff([&](AiffBuilder& b) {
                   b.compression = compression;
                   b.bits = bits;
                   b.statedFrames = 25;
               })
            .bytes();
    };
    const auto extensible = [](std::uint16_t tag, std::uint16_t bits, std::uint16_t valid) {
        return wave([&](WaveBuilder& b) {
                   b.tag = tag;
                   b.bits = bits;
                   b.validBits = valid;
               })
            .bytes();
    };
    const auto plain = [](std::uint16_t tag, std::uint16_t bits) {
        return wave([&](WaveBuilder& b) {
                   b.tag = tag;
                   b.bits = bits;
               })
            .bytes();
    };
    const FormatCase cases[] = {
        {plain(1, 8), wav, lpcm, 8, 8, 2, 200},
        {plain(1, 16), wav, lpcm, 12, 16, 4, 100},
        {plain(1, 20), wav, lpcm, 20, 20, 6, 66},
        {plain(1, 24), wav, lpcm, 12, 24, 6, 66},
        {plain(1, 32), wav, lpcm, 12, 32, 8, 50},
        {plain(3, 32), wav, lpcm, 9, 32, 8, 50},
        {plain(3, 64), wav, lpcm, 9, 64, 16, 25},
        {extensible(1, 24, 20), wav, lpcm, 20, 20, 6, 66},
        {extensible(1, 32, 24), wav, lpcm, 20, 24, 8, 50},
        {extensible(3, 32, 32), wav, lpcm, 9, 32, 8, 50},
        {wave([](WaveBuilder& b) {
             b.bits = 24;
             b.frameBytes = 8;
         }).bytes(),
         wav, lpcm, 20, 24, 8, 50},
        {plain(7, 8), wav, fourCharCode("ulaw"), 0, 0, 0, 0},
        {plain(6, 8), wav, fourCharCode("alaw"), 0, 0, 0, 0},
        {plain(0x11, 4), wav, 0x6D730011, 0, 0, 0, 0},
        {largeWave("RF64", 400, 1000), rf64, lpcm, 12, 16, 4, 100},
        {largeWave("BW64", 80, 1000), rf64, lpcm, 12, 16, 4, 20},
        {largeWave("RF64", 0, 0), rf64, lpcm, 12, 16, 4, 100},
        {largeWave("RF64", ~0ULL, ~0ULL), rf64, lpcm, 12, 16, 4, 100},
        {aiff().bytes(), aif, lpcm, 14, 16, 4, 100},
        {aiff([](AiffBuilder& b) { b.bits = 8; }).bytes(), aif, lpcm, 12, 8, 2, 200},
        {aiff([](AiffBuilder& b) { b.bits = 20; }).bytes(), aif, lpcm, 22, 20, 6, 66},
        {aiffC("NONE", 24), aifc, lpcm, 14, 24, 6, 25},
        {aiffC("twos", 16), aifc, lpcm, 14, 16, 4, 25},
        {aiffC("sowt", 16), aifc, lpcm, 12, 16, 4, 25},
        {aiffC("raw ", 8), aifc, lpcm, 8, 8, 2, 25},
        {aiffC("in24", 16), aifc, lpcm, 14, 24, 6, 25},
        {aiffC("in32", 16), aifc, lpcm, 14, 32, 8, 25},
        {aiffC("fl32", 16), aifc, lpcm, 11, 32, 8, 25},
        {aiffC("FL64", 16), aifc, lpcm, 11, 64, 16, 25},
        {aiffC("ULAW", 8), aifc, fourCharCode("ulaw"), 0, 0, 0, 0},
        {aiffC("ima4", 4), aifc, fourCharCode("ima4"), 0, 0, 0, 0},
    };
    for (const FormatCase& expected : cases) {
        SCOPED_TRACE(&expected - cases);
        const auto sound = describe(expected.bytes);
        ASSERT_TRUE(sound);
        EXPECT_EQ(sound->fileType, expected.fileType);
        EXPECT_EQ(sound->format.mFormatID, expected.formatId);
        EXPECT_EQ(sound->format.mFormatFlags, expected.flags);
        EXPECT_EQ(sound->format.mBitsPerChannel, expected.bits);
        EXPECT_EQ(sound->format.mBytesPerFrame, expected.bytesPerFrame);
        EXPECT_EQ(sound->format.mChannelsPerFrame, 2U);
        EXPECT_EQ(sound->format.mSampleRate, 44100);
        EXPECT_EQ(sound->frames, expected.frames);
    }
}

// Headers that lie about sizes, as interrupted and streaming writers leave them.
TEST(Containers, FindTheSoundWhereSizesLie) {
    struct Case {
        std::string bytes;
        std::uint64_t offset, frames;
    };
    const std::string list = riffChunk("LIST", "INFOINAM\x02");
    std::string unpadded = list, paddedWithBlank = list;
    unpadded.pop_back();
    paddedWithBlank.back() = ' ';
    const auto withSize = [](std::uint32_t bytes, std::optional<std::uint32_t> form = {}) {
        return wave([&](WaveBuilder& b) {
                   b.statedDataBytes = bytes;
                   b.statedFormBytes = form;
               })
            .bytes();
    };
    const Case cases[] = {
        {wave([&](WaveBuilder& b) { b.chunksBefore = list; }).bytes(), 44 + 18, 100},
        {wave([&](WaveBuilder& b) { b.chunksBefore = unpadded; }).bytes(), 44 + 17, 100},
        {wave([&](WaveBuilder& b) { b.chunksBefore = paddedWithBlank; }).bytes(), 44 + 18, 100},
        {wave([&](WaveBuilder& b) { b.chunksAfter = list; }).bytes(), 44, 100},
        {wave([&](WaveBuilder& b) { b.data.resize(399); }).bytes(), 44, 99},
        {withSize(0xFFFFFFFF, 0xFFFFFFFF), 44, 100},
        {withSize(0, 0), 44, 100},
        {withSize(0), 44, 0},  // the form's size was filled in, so the 0 is true
        {withSize(0, 36), 44, 100},
        {withSize(0, 500), 44, 0},
        {withSize(0x7FFFF000), 44, 100},
        {withSize(401), 44, 100},
        {wave().bytes().substr(0, 44 + 50), 44, 12},
        {aiff([](AiffBuilder& b) { b.soundOffset = 10; }).bytes(), 54 + 10, 100},
        {aiff([](AiffBuilder& b) { b.statedFrames = 40; }).bytes(), 54, 40},
        {aiff([](AiffBuilder& b) { b.statedFrames = 0x7F000000; }).bytes(), 54, 100},
        {aiff([](AiffBuilder& b) {
             b.statedFrames = 0;
             b.statedSoundBytes = 0;
             b.statedFormBytes = 0;
         }).bytes(),
         54, 100},
        {aiff([](AiffBuilder& b) { b.statedSoundBytes = 0xFFFFFFFF; }).bytes(), 54, 100},
    };
    for (const Case& expected : cases) {
        SCOPED_TRACE(&expected - cases);
        const auto sound = describe(expected.bytes);
        ASSERT_TRUE(sound);
        EXPECT_EQ(sound->data.offset, expected.offset);
        EXPECT_EQ(sound->frames, expected.frames);
    }
}

TEST(Containers, RefuseWhatCannotBePlayed) {
    const auto changedWave = [](const std::function<void(WaveBuilder&)>& change) {
        return describe(wave(change).bytes());
    };
    const auto changedAiff = [](const std::function<void(AiffBuilder&)>& change) {
        return describe(aiff(change).bytes());
    };
    const services::Result<services::SoundDescription> damaged[] = {
        changedWave([](auto& b) {
            b.channels = 0;
            b.frameBytes = 4;
        }),
        changedWave([](auto& b) { b.channels = 65; }),
        changedWave([](auto& b) { b.rate = 0; }),
        changedWave([](auto& b) {
            b.bits = 0;
            b.frameBytes = 4;
        }),
        changedWave([](auto& b) { b.frameBytes = 0; }),
        changedWave([](auto& b) { b.frameBytes = 5; }),
        changedWave([](auto& b) {
            b.bits = 24;
            b.frameBytes = 4;
        }),
        changedWave([](auto& b) {
            b.bits = 8;
            b.frameBytes = 8;
        }),
        changedWave([](auto& b) {
            b.tag = 3;
            b.bits = 16;
            b.frameBytes = 8;
        }),
        changedWave([](auto& b) {
            b.bits = 16;
            b.validBits = 17;
        }),
        describe(wave().bytes().substr(0, 30)),
        describe("RIFF" + littleEndian(4) + "WAVE"),
        changedAiff([](auto& b) { b.channels = 0; }),
        changedAiff([](auto& b) {
            b.bits = 0;
            b.statedFrames = 1;
        }),
        changedAiff([](auto& b) { b.rate = 0.5; }),
        changedAiff([](auto& b) { b.rate = 1e10; }),
        changedAiff([](auto& b) { b.hasSound = false; }),
        describe(aiff().bytes().substr(0, 34)),
    };
    for (const auto& result : damaged) {
        SCOPED_TRACE(&result - damaged);
        ASSERT_FALSE(result);
        EXPECT_EQ(result.failure(), Failure::kDamaged);
    }
    for (const char* text : {"", "RIFF", "hello, this is a text", "RIFF\0\0\0\0AVI LIST"}) {
        const auto unknown = describe(text);
        ASSERT_FALSE(unknown);
        EXPECT_EQ(unknown.failure(), Failure::kUnknownFileType);
    }
}

// Cut anywhere, a file is described with the sound that is left, or refused.
TEST(Containers, BearBeingCutAtEveryByte) {
    for (const std::string& whole :
         {wave().bytes(), aiff().bytes(), largeWave("RF64", 400, 1000)}) {
        for (std::size_t bytes = 0; bytes < whole.size(); ++bytes) {
            const auto sound = describe(whole.substr(0, bytes));
            if (sound) {
                EXPECT_LE(sound->data.end(), bytes);
            }
        }
    }
}

}  // namespace
}  // namespace atdp::test
