// What files of chunks, sound and broken ones, are described as; and files of every kind cut and
// changed anywhere.
#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <utility>

#include "tests/support/aiff_builder.h"
#include "tests/support/au_builder.h"
#include "tests/support/caf_builder.h"
#include "tests/support/damage.h"
#include "tests/support/lossless_track.h"
#include "tests/support/mpeg4_builder.h"
#include "tests/support/tag_reading.h"
#include "tests/support/wave64_builder.h"
#include "tests/support/wave_builder.h"

namespace atdp::test {
namespace {

using services::Failure;

const std::string kData(400, 'd');

TEST(Containers, DescribeTheFormatsTheyHold) {
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
    const auto caf = [](std::uint32_t flags, std::uint32_t bits, std::uint32_t packetBytes) {
        return CafBuilder{
            .flags = flags, .bits = bits, .bytesPerPacket = packetBytes, .data = kData}
            .bytes();
    };
    const auto au = [](std::uint32_t encoding, const char* mark = ".snd") {
        return AuBuilder{.mark = mark, .encoding = encoding, .data = kData}.bytes();
    };
    const auto wave64 = [](std::uint16_t tag, std::uint16_t bits,
                           std::optional<std::uint16_t> valid = {}) {
        return Wave64Builder{{.tag = tag, .bits = bits, .validBits = valid, .data = kData}}.bytes();
    };
    const std::pair<std::string, const char*> cases[] = {
        {plain(1, 8), "WAVE lpcm 8 8 2 1 2 44100 200"},
        {plain(1, 16), "WAVE lpcm 12 16 4 1 2 44100 100"},
        {plain(1, 20), "WAVE lpcm 20 20 6 1 2 44100 66"},
        {plain(1, 24), "WAVE lpcm 12 24 6 1 2 44100 66"},
        {plain(1, 32), "WAVE lpcm 12 32 8 1 2 44100 50"},
        {plain(3, 32), "WAVE lpcm 9 32 8 1 2 44100 50"},
        {plain(3, 64), "WAVE lpcm 9 64 16 1 2 44100 25"},
        {extensible(1, 24, 20), "WAVE lpcm 20 20 6 1 2 44100 66"},
        {extensible(1, 32, 24), "WAVE lpcm 20 24 8 1 2 44100 50"},
        {extensible(3, 32, 32), "WAVE lpcm 9 32 8 1 2 44100 50"},
        {WaveBuilder{.bits = 24, .frameBytes = 8, .data = kData}.bytes(),
         "WAVE lpcm 20 24 8 1 2 44100 50"},
        {plain(7, 8), "WAVE ulaw 0 0 0 0 2 44100 0"},
        {plain(6, 8), "WAVE alaw 0 0 0 0 2 44100 0"},
        {plain(0x11, 4), "WAVE 1836253201 0 0 0 0 2 44100 0"},
        {largeWave("RF64", kData, 400, 1000), "RF64 lpcm 12 16 4 1 2 44100 100"},
        {largeWave("BW64", kData, 80, 1000), "RF64 lpcm 12 16 4 1 2 44100 20"},
        {largeWave("RF64", kData, 0, 0), "RF64 lpcm 12 16 4 1 2 44100 100"},
        {largeWave("RF64", kData, ~0ULL, ~0ULL), "RF64 lpcm 12 16 4 1 2 44100 100"},
        {aiff(16), "AIFF lpcm 14 16 4 1 2 44100 100"},
        {aiff(8), "AIFF lpcm 12 8 2 1 2 44100 200"},
        {aiff(20), "AIFF lpcm 22 20 6 1 2 44100 66"},
        {aiffC("NONE", 24), "AIFC lpcm 14 24 6 1 2 44100 25"},
        {aiffC("twos", 16), "AIFC lpcm 14 16 4 1 2 44100 25"},
        {aiffC("sowt", 16), "AIFC lpcm 12 16 4 1 2 44100 25"},
        {aiffC("raw ", 8), "AIFC lpcm 8 8 2 1 2 44100 25"},
        {aiffC("in24", 16), "AIFC lpcm 14 24 6 1 2 44100 25"},
        {aiffC("in32", 16), "AIFC lpcm 14 32 8 1 2 44100 25"},
        {aiffC("fl32", 16), "AIFC lpcm 11 32 8 1 2 44100 25"},
        {aiffC("FL64", 16), "AIFC lpcm 11 64 16 1 2 44100 25"},
        {aiffC("ULAW", 8), "AIFC ulaw 0 0 0 0 2 44100 0"},
        {aiffC("ima4", 4), "AIFC ima4 0 0 0 0 2 44100 0"},
        {caf(0, 8, 2), "caff lpcm 12 8 2 1 2 44100 200"},
        {caf(0, 16, 4), "caff lpcm 14 16 4 1 2 44100 100"},
        {caf(2, 16, 4), "caff lpcm 12 16 4 1 2 44100 100"},
        {caf(2, 24, 8), "caff lpcm 20 24 8 1 2 44100 50"},
        {caf(1, 32, 8), "caff lpcm 11 32 8 1 2 44100 50"},
        {caf(3, 64, 16), "caff lpcm 9 64 16 1 2 44100 25"},
        {CafBuilder{.format = "aac ", .data = kData}.bytes(), "caff aac  0 0 0 0 2 44100 0"},
        {losslessCaf(cafPacketTable({400}), kData).bytes(), "caff alac 1 0 0 4096 2 44100 0"},
        {au(2), "NeXT lpcm 12 8 2 1 2 44100 200"},
        {au(4), "NeXT lpcm 14 24 6 1 2 44100 66"},
        {au(7), "NeXT lpcm 11 64 16 1 2 44100 25"},
        {au(6, "dns."), "NeXT lpcm 9 32 8 1 2 44100 50"},
        {au(1), "NeXT ulaw 0 0 0 0 2 44100 0"},
        {au(27), "NeXT alaw 0 0 0 0 2 44100 0"},
        {wave64(1, 8), "W64f lpcm 8 8 2 1 2 44100 200"},
        {wave64(1, 32, 24), "W64f lpcm 20 24 8 1 2 44100 50"},
        {wave64(3, 64), "W64f lpcm 9 64 16 1 2 44100 25"},
        {wave64(6, 8), "W64f alaw 0 0 0 0 2 44100 0"},
    };
    for (const auto& [bytes, description] : cases) EXPECT_EQ(descriptionOf(bytes), description);
}

// Headers that lie about sizes, as interrupted and streaming writers leave them.
TEST(Containers, FindTheSoundWhereSizesLie) {
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
    const auto caf = [](std::uint64_t bytes) {
        return CafBuilder{.data = kData, .statedDataBytes = bytes}.bytes();
    };
    const auto au = [](std::uint32_t bytes) {
        return AuBuilder{.annotation = "odd", .data = kData, .statedBytes = bytes}.bytes();
    };
    const auto wave64 = [](std::uint64_t bytes, std::optional<std::uint64_t> form = {}) {
        return Wave64Builder{
            .wave = {.data = kData}, .statedDataBytes = bytes, .statedFormBytes = form}
            .bytes();
    };
    constexpr std::uint64_t kMost = 0x7FFF'FFFF'FFFF'FFFF;
    const std::tuple<std::string, std::uint64_t, std::uint64_t> cases[] = {
        // offset, frames
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
        {caf(~0ULL), 68, 100},
        {caf(kMost), 68, 100},
        {caf(44), 68, 10},
        {caf(3), 67, 0},
        {CafBuilder{.data = kData, .chunksBefore = cafChunk("free", "odd")}.bytes(), 83, 100},
        {au(~0U), 27, 100},
        {au(0), 27, 100},
        {au(40), 27, 10},
        {wave64(kMost), 104, 100},
        {wave64(24, 0), 104, 100},
        {wave64(24), 104, 0},
        {wave64(23, 0), 104, 100},
        {wave64(24 + 40), 104, 10},
        {Wave64Builder{.wave = {.data = kData}, .chunksBefore = wave64Chunk("junk", "odd")}.bytes(),
         136, 100},
    };
    for (const auto& [bytes, offset, frames] : cases) {
        const auto sound = describe(bytes);
        ASSERT_TRUE(sound);
        EXPECT_EQ(std::pair(sound->data.offset, sound->frames), std::pair(offset, frames));
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
        CafBuilder{.channels = 0, .bytesPerPacket = 4, .data = kData}.bytes(),
        CafBuilder{.rate = std::nan(""), .data = kData}.bytes(),
        CafBuilder{.bytesPerPacket = 0, .data = kData}.bytes(),
        CafBuilder{.bytesPerPacket = 5, .data = kData}.bytes(),
        CafBuilder{.framesPerPacket = 0, .data = kData}.bytes(),
        CafBuilder{.flags = 1, .bits = 16, .bytesPerPacket = 8, .data = kData}.bytes(),
        CafBuilder{.flags = 1, .bits = 0x8000'0000, .data = kData}.bytes(),
        CafBuilder{.format = ".mp3", .data = kData}.bytes(),
        CafBuilder{.data = kData}.bytes().substr(0, 50),
        losslessCaf("", kData).bytes(),
        losslessCaf(cafPacketTable({400}), kData, "").bytes(),
        losslessCaf(cafPacketTable({400}), kData, losslessConfig(16, 9)).bytes(),
        AuBuilder{.data = kData}.bytes().substr(0, 23),
        AuBuilder{.channels = 0, .data = kData}.bytes(),
        AuBuilder{.data = kData, .statedOffset = 23}.bytes(),
        AuBuilder{.data = kData, .statedOffset = 1000}.bytes(),
        Wave64Builder{{.channels = 0, .frameBytes = 4, .data = kData}}.bytes(),
        Wave64Builder{{.data = kData}}.bytes().substr(0, 80),
    };
    for (const std::string& bytes : damaged)
        EXPECT_EQ(refusal(bytes), Failure::kDamaged) << &bytes - damaged;
    EXPECT_EQ(refusal(AuBuilder{.encoding = 23, .data = kData}.bytes()),
              Failure::kUnsupportedFormat);
    for (const char* text :
         {"", "RIFF", "caff", "riff.\x91\xCF\x11", "hello, this is a text", "RIFF\0\0\0\0AVI LIST"})
        EXPECT_EQ(refusal(text), Failure::kUnknownFileType) << text;
}

// What is left is described, or refused, and nothing is read beyond it.
TEST(Damage, LeavesNothingToBeReadOutsideOfTheFile) {
    const std::string sound = kData.substr(0, 40);
    for (const std::string& whole :
         {WaveBuilder{.data = sound}.bytes(), AiffBuilder{.data = sound}.bytes(),
          largeWave("RF64", sound, 40, 10), tagsOfEveryKind(), CafBuilder{.data = sound}.bytes(),
          losslessCaf(cafPacketTable({20, 15, 5}, 10000, 7), sound).bytes(),
          AuBuilder{.data = sound}.bytes(), Wave64Builder{{.data = sound}}.bytes(),
          Mpeg4Builder{.edits = editList(0, {{8000, 1000}})}.bytes()})
        forEachDamage(whole, [](const std::string& bytes) {
            const auto described = describe(bytes);
            EXPECT_TRUE(!described || described->data.end() <= bytes.size());
            summary(bytes);
            mpegInformation(bytes);
        });
}

}  // namespace
}  // namespace atdp::test
