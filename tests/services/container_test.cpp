// What WAVE and AIFF files, sound and broken ones, are described as.
#include <gtest/gtest.h>

#include "tests/support/aiff_builder.h"
#include "tests/support/described_sound.h"
#include "tests/support/wave_builder.h"

namespace atdp::test {
namespace {

using services::Failure;

const std::string kData(400, 'd');

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
        return AiffBuilder{
            .bits = bits, .compression = compression, .data = kData, .statedFrames = 25}
            .bytes();
    };
    const auto extensible = [](std::uint16_t tag, std::uint16_t bits, std::uint16_t valid) {
        return WaveBuilder{.tag = tag, .bits = bits, .validBits = valid, .data = kData}.bytes();
    };
    const auto plain = [](std::uint16_t tag, std::uint16_t bits) {
        return WaveBuilder{.tag = tag, .bits = bits, .data = kData}.bytes();
    };
    const auto aiff = [](std::uint16_t bits) {
        return AiffBuilder{.bits = bits, .data = kData}.bytes();
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
        {WaveBuilder{.bits = 24, .frameBytes = 8, .data = kData}.bytes(), wav, lpcm, 20, 24, 8, 50},
        {plain(7, 8), wav, fourCharCode("ulaw"), 0, 0, 0, 0},
        {plain(6, 8), wav, fourCharCode("alaw"), 0, 0, 0, 0},
        {plain(0x11, 4), wav, 0x6D730011, 0, 0, 0, 0},
        {largeWave("RF64", kData, 400, 1000), rf64, lpcm, 12, 16, 4, 100},
        {largeWave("BW64", kData, 80, 1000), rf64, lpcm, 12, 16, 4, 20},
        {largeWave("RF64", kData, 0, 0), rf64, lpcm, 12, 16, 4, 100},
        {largeWave("RF64", kData, ~0ULL, ~0ULL), rf64, lpcm, 12, 16, 4, 100},
        {aiff(16), aif, lpcm, 14, 16, 4, 100},
        {aiff(8), aif, lpcm, 12, 8, 2, 200},
        {aiff(20), aif, lpcm, 22, 20, 6, 66},
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
    using Size = std::optional<std::uint32_t>;
    const auto withSizes = [](Size bytes, Size form = {}) {
        return WaveBuilder{.data = kData, .statedDataBytes = bytes, .statedFormBytes = form}
            .bytes();
    };
    const auto behind = [](const std::string& chunk) {
        return WaveBuilder{.data = kData, .chunksBefore = chunk}.bytes();
    };
    const auto aiff = [](Size frames, Size bytes = {}, Size form = {}) {
        return AiffBuilder{.data = kData,
                           .statedFrames = frames,
                           .statedSoundBytes = bytes,
                           .statedFormBytes = form}
            .bytes();
    };
    const Case cases[] = {
        {behind(list), 44 + 18, 100},
        {behind(unpadded), 44 + 17, 100},
        {behind(paddedWithBlank), 44 + 18, 100},
        {WaveBuilder{.data = kData, .chunksAfter = list}.bytes(), 44, 100},
        {WaveBuilder{.data = kData.substr(1)}.bytes(), 44, 99},
        {withSizes(0xFFFFFFFF, 0xFFFFFFFF), 44, 100},
        {withSizes(0, 0), 44, 100},
        {withSizes(0), 44, 0},  // the form's size was filled in, so the 0 is true
        {withSizes(0, 36), 44, 100},
        {withSizes(0, 500), 44, 0},
        {withSizes(0x7FFFF000), 44, 100},
        {withSizes(401), 44, 100},
        {withSizes({}).substr(0, 44 + 50), 44, 12},
        {AiffBuilder{.data = kData, .soundOffset = 10}.bytes(), 54 + 10, 100},
        {aiff(40), 54, 40},
        {aiff(0x7F000000), 54, 100},
        {aiff(0, 0, 0), 54, 100},
        {aiff({}, 0xFFFFFFFF), 54, 100},
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
    const std::string damaged[] = {
        WaveBuilder{.channels = 0, .frameBytes = 4, .data = kData}.bytes(),
        WaveBuilder{.channels = 65, .data = kData}.bytes(),
        WaveBuilder{.rate = 0, .data = kData}.bytes(),
        WaveBuilder{.bits = 0, .frameBytes = 4, .data = kData}.bytes(),
        WaveBuilder{.frameBytes = 0, .data = kData}.bytes(),
        WaveBuilder{.frameBytes = 5, .data = kData}.bytes(),
        WaveBuilder{.bits = 24, .frameBytes = 4, .data = kData}.bytes(),
        WaveBuilder{.bits = 8, .frameBytes = 8, .data = kData}.bytes(),
        WaveBuilder{.tag = 3, .bits = 16, .frameBytes = 8, .data = kData}.bytes(),
        WaveBuilder{.bits = 16, .validBits = 17, .data = kData}.bytes(),
        WaveBuilder{.data = kData}.bytes().substr(0, 30),
        "RIFF" + littleEndian(4) + "WAVE",
        AiffBuilder{.channels = 0, .data = kData}.bytes(),
        AiffBuilder{.bits = 0, .data = kData, .statedFrames = 1}.bytes(),
        AiffBuilder{.rate = 0.5, .data = kData}.bytes(),
        AiffBuilder{.rate = 1e10, .data = kData}.bytes(),
        AiffBuilder{.data = kData, .hasSound = false}.bytes(),
        AiffBuilder{.data = kData}.bytes().substr(0, 34),
    };
    for (const std::string& bytes : damaged)
        EXPECT_EQ(refusal(bytes), Failure::kDamaged) << &bytes - damaged;
    for (const char* text : {"", "RIFF", "hello, this is a text", "RIFF\0\0\0\0AVI LIST"})
        EXPECT_EQ(refusal(text), Failure::kUnknownFileType) << text;
}

// Cut anywhere, a file is described with the sound that is left, or refused.
TEST(Containers, BearBeingCutAtEveryByte) {
    for (const std::string& whole :
         {WaveBuilder{.data = kData}.bytes(), AiffBuilder{.data = kData}.bytes(),
          largeWave("RF64", kData, 400, 1000)})
        for (std::size_t bytes = 0; bytes < whole.size(); ++bytes) {
            const auto sound = describe(whole.substr(0, bytes));
            EXPECT_TRUE(!sound || sound->data.end() <= bytes) << bytes;
        }
}

}  // namespace
}  // namespace atdp::test
