// MPEG audio among tags, junk and other streams, and what is not MPEG audio.
#include <gtest/gtest.h>

#include <random>

#include "tests/support/mpeg_builder.h"
#include "tests/support/mpeg_packets.h"
#include "tests/support/wave_builder.h"

namespace atdp::test {
namespace {

TEST(MpegContainer, FindsThePacketsAmongWhateverElseIsThere) {
    std::mt19937 random(9);
    std::string junk;
    for (int i = 0; i < 3000; ++i) junk += static_cast<char>(random());
    const std::string otherRate = repeated(packetWithHeader("\xFF\xFB\x94\x00"), 3);
    const std::string otherLayer = repeated(packetWithHeader("\xFF\xFD\x90\x00"), 3);
    const std::string mono = packetWithHeader("\xFF\xFB\x90\xC0");
    std::string claimsTooMuch = silentLayer3Packet();
    claimsTooMuch[2] = '\xE0';  // 320 kbit/s, but the next packet follows after 417 bytes
    const struct {
        std::string bytes;
        std::size_t packets;
    } cases[] = {
        {sound(1), 1},
        {sound(2), 2},
        {sound(50), 50},
        {falseId3v2(3000) + sound(5), 5},
        {falseId3v2(300, true) + falseId3v2(20) + sound(1), 1},
        {falseId3v2(300, false, 200'000'000) + sound(5), 5},
        {falseId3v2(10) + std::string(1024, '\0') + sound(4), 4},
        {sound(2) + id3v1Tag(""), 2},
        {sound(2) + falseApe(400) + falseLyrics3() + id3v1Tag(""), 2},
        {sound(2) + falseId3v2(100, true), 2},
        {falseApe(40'000) + sound(2), 2},
        {sound(5) + "999999LYRICS200", 5},
        {sound(5) + std::string(417, 'x') + sound(5), 11},  // a packet whose header is damaged
        {sound(5) + junk, 5},
        {junk + sound(5), 5},
        {sound(5) + junk + sound(5), 10},
        {sound(5) + falseId3v2(2000) + sound(5), 10},
        {sound(5) + id3v1Tag("") + falseId3v2(99) + infoFrame(5, "LAME3.100", 576, 700) + sound(5),
         10},
        {sound(5) + otherRate + sound(5), 10},
        {sound(5) + otherLayer + sound(5), 10},
        {sound(5) + mono + sound(5), 11},
        {sound(5) + claimsTooMuch + sound(5), 11},
        {sound(5).substr(0, 5 * 417 - 1), 4},
        {infoFrame(5, "LAME3.100", 576, 700) + sound(5), 5},
        {infoFrame(99999, "", 0, 0, "Xing") + sound(5), 5},
        {WaveBuilder{.tag = 0x55, .data = sound(5)}.bytes(), 5},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(&expected - cases);
        const auto found = packetsOf(expected.bytes);
        ASSERT_TRUE(found);
        EXPECT_EQ(found->packets.size(), expected.packets);
        for (const auto& packet : found->packets)
            EXPECT_NE(expected.bytes.substr(packet.offset(), 2).find_first_of("\xFFx"),
                      std::string::npos);
    }
}

TEST(MpegContainer, BelievesCountsThatThePacketsBearOut) {
    const std::pair<std::string, const char*> cases[] = {
        {infoFrame(5, "LAME3.100", 576, 1200) + sound(5), "1105 671"},
        {infoFrame(5, "Lavc58.54", 1105, 300) + sound(5), "1634 0"},
        {infoFrame(5, "", 576, 1200) + sound(5), "none"},
        {infoFrame(5, "LAME3.100", 0, 0) + sound(5), "none"},
        {infoFrame(50, "LAME3.100", 576, 1200) + sound(5), "1105 0"},  // cut short
        {infoFrame(5, "LAME3.100", 576, 1200) + sound(5).substr(0, 5 * 417 - 1), "1105 0"},
        {infoFrame(1, "LAME3.100", 576, 4095) + sound(2), "none"},
        {sound(5), "none"},
    };
    for (const auto& [bytes, counts] : cases)
        EXPECT_EQ(gaplessCountsOf(bytes), counts) << bytes.size();
}

TEST(MpegContainer, TakesNothingElseForMpeg) {
    std::mt19937 random(4);
    std::string noise;
    for (int i = 0; i < 2'000'000; ++i) noise += static_cast<char>(random());
    const std::string cases[] = {
        "",
        noise,
        std::string(100'000, '\xFF'),
        std::string(100'000, '\0'),
        sound(2).substr(1),  // two packets are few, and something else is there too
        "\x89PNG\r\n\x1A\n" + sound(9),
        "PK\x03\x04" + sound(9),
        std::string("\0\0\0\x18", 4) + "ftypM4A " + sound(9),
        repeated("\xFF\xFB\x02\x01", 50'000),  // free format that never fits
        falseId3v2(1000),
        WaveBuilder{.tag = 0x55, .data = std::string(5000, 'x')}.bytes(),
    };
    for (const std::string& bytes : cases) EXPECT_FALSE(describe(bytes)) << &bytes - cases;
}

}  // namespace
}  // namespace atdp::test
