// The packets of Apple Lossless in CAF files, and which of their frames are sound.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include "services/sound_file.h"
#include "tests/support/caf_builder.h"
#include "tests/support/data_file.h"
#include "tests/support/frame_reading.h"
#include "tests/support/lossless_track.h"
#include "tests/support/temporary_file.h"

namespace atdp::test {
namespace {

// The head of a packet of two channels, and of one that states 1000 frames.
const std::string kWhole("2\0\0\0\0\0\0\0", 8);
const std::string kPart("2\0\x10\0\0\x07\xD0\0", 8);
const std::string kPackets = kWhole + std::string(200, 'x') + kPart;

std::string tracked(const std::string& table, std::uint32_t framesPerPacket = 4096) {
    CafBuilder file = losslessCaf(table, kPackets);
    file.framesPerPacket = framesPerPacket;
    return summary(file.bytes());
}

TEST(CafPackets, AreThoseThatTheSoundHolds) {
    const std::pair<std::vector<std::uint64_t>, const char*> cases[] = {
        {{8, 200, 8}, "28 x200 28 : 0, 9192"}, {{8, 200, 0, 8}, "28 x200 0 28 : 0, 13288"},
        {{8, 200, 9}, "28 x200 : 0, 8192"},    {{208}, "2208 : 0, 4096"},
        {{8, 0xFFFF'FFFF, 8}, "28 : 0, 4096"}, {{8, 1ULL << 34, 8}, "28 : 0, 4096"},
        {{8, 1ULL << 63, 8}, "28 : 0, 4096"},  {{}, ": 0, 0"},
    };
    for (const auto& [numbers, expected] : cases)
        EXPECT_EQ(tracked(cafPacketTable(numbers)), expected);
    EXPECT_TRUE(
        tracked(cafPacketTable(std::vector<std::uint64_t>(1000))).ends_with("0 : 0, 114688"));
    EXPECT_EQ(tracked(cafPacketTable({8, 200, 8}, 0, 0, 2)), "28 x200 : 0, 8192");
    EXPECT_EQ(tracked(cafPacketTable({8, 200, 8}, 0, 0, 1ULL << 63)), "28 x200 28 : 0, 9192");
    EXPECT_EQ(tracked(cafPacketTable({8, 4096, 200, 4096, 8, 1000}, 0, 0, 3), 0),
              "28 x200 28 : 0, 9192");
}

// What a table says of its frames is believed as far as the packets bear it out.
TEST(CafPackets, TellWhichFramesAreSound) {
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    const std::tuple<std::int64_t, std::int32_t, const char*> cases[] = {
        // valid, priming
        {8000, 500, "500, 8000"},  {9192, 0, "0, 9192"},    {12288, 0, "0, 9192"},
        {kMost, 500, "500, 8692"}, {0, 500, "500, 8692"},   {-1, -1, "0, 9192"},
        {8000, 9192, "0, 8000"},   {8000, 9191, "9191, 1"},
    };
    for (const auto& [valid, priming, expected] : cases)
        EXPECT_EQ(tracked(cafPacketTable({8, 200, 8}, valid, priming)),
                  std::string("28 x200 28 : ") + expected);
}

TEST(CafPackets, PlayAsThoseOfAnMpeg4File) {
    const auto mpeg4 = opened("lossless.m4a");
    const TemporaryFile file(asLosslessCaf(dataBytes("lossless.m4a")));
    const auto caf = services::SoundFile::open(file.path());
    ASSERT_TRUE(mpeg4 && caf);
    const auto frames = static_cast<std::uint32_t>(*mpeg4->lengthInFrames());
    EXPECT_EQ(*(*caf)->lengthInFrames(), frames);
    const auto counts = *(*caf)->gaplessCounts();
    ASSERT_TRUE(counts);
    EXPECT_EQ(counts->mRemainderFrames, 6 * 4096 - 22050);
    EXPECT_EQ(read(**(*caf)->makeReader(), 2, frames + 1),
              read(**mpeg4->makeReader(), 2, frames + 1));
    expectSeeksEqualAStraightRun(file.path(), 2);
}

TEST(CafPackets, AreDecodedByACookieInItsOldWrappers) {
    const std::string cookie = atom("frma", "alac") + fullAtom("alac", losslessConfig(24));
    const std::string table = cafPacketTable({8, 200, 8});
    for (const std::string& end : {std::string(), zeros(8), fullAtom("chan", zeros(12))})
        EXPECT_EQ(descriptionOf(losslessCaf(table, kPackets, cookie + end).bytes()),
                  "caff alac 3 0 0 4096 2 44100 0");
}

}  // namespace
}  // namespace atdp::test
