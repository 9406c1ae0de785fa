// MPEG audio among tags, junk and other streams, and what is not MPEG audio.
#include <gtest/gtest.h>

#include <random>

#include "services/containers/mpeg.h"
#include "services/containers/recognition.h"
#include "tests/support/byte_builder.h"
#include "tests/support/memory_source.h"
#include "tests/support/mpeg_builder.h"
#include "tests/support/wave_builder.h"

namespace atdp::test {
namespace {

using services::MpegPackets;

std::string repeated(const std::string& packet, int count) {
    std::string bytes;
    while (count-- > 0) bytes += packet;
    return bytes;
}

std::string sound(int packets) {
    return repeated(silentLayer3Packet(), packets);
}

// The same with other bits of the header.
std::string packetWithHeader(const char (&header)[5]) {
    return std::string(header, 4) + silentLayer3Packet().substr(4);
}

std::string id3v2(std::size_t bodyBytes, bool withFooter = false, std::uint32_t claimed = 0) {
    const std::uint32_t size = claimed ? claimed : static_cast<std::uint32_t>(bodyBytes);
    std::string head = {'I', 'D', '3', 4, 0, static_cast<char>(withFooter ? 0x10 : 0)};
    for (int shift = 21; shift >= 0; shift -= 7) head += static_cast<char>(size >> shift & 0x7F);
    std::string tag = head + std::string(bodyBytes, '\xFF');  // nothing but false beginnings
    if (withFooter) tag += "3DI" + head.substr(3);
    return tag;
}

std::string id3v1() {
    return "TAG" + std::string(125, ' ');
}

std::string ape(std::size_t itemBytes) {
    const auto edge = [&](std::uint32_t flags) {
        return "APETAGEX" + littleEndian(std::uint32_t{2000}) +
               littleEndian(static_cast<std::uint32_t>(itemBytes + 32)) +
               littleEndian(std::uint32_t{1}) + littleEndian(flags) + std::string(8, '\0');
    };
    return edge(0xA0000000) + std::string(itemBytes, '\xFF') + edge(0x80000000);
}

std::string lyrics3() {
    const std::string body = "LYRICSBEGIN" + std::string(60, '\xFF');
    return body + "000071LYRICS200";
}

// The frame in front of an encoder's stream, with delay and padding where a name is given.
std::string infoFrame(std::uint32_t packets, const std::string& encoder, unsigned delay,
                      unsigned padding, const char* tag = "Info") {
    std::string body = std::string(32, '\0') + tag + bigEndian(std::uint32_t{15}) +
                       bigEndian(packets) + std::string(4 + 100 + 4, '\0') + encoder;
    body.resize(32 + 4 + 4 + 4 + 4 + 100 + 4 + 9 + 12);
    body += bigEndian(static_cast<std::uint32_t>(delay << 12 | padding)).substr(1);
    return (packetWithHeader("\xFF\xFB\x90\x64").substr(0, 4) + body + std::string(417, '\0'))
        .substr(0, 417);
}

std::optional<MpegPackets> packetsOf(const std::string& bytes) {
    auto source = std::make_shared<MemorySource>(bytes);
    const auto described = services::describeSound(*source);
    if (!described) return std::nullopt;
    auto packets = services::findMpegPackets(source, *described);
    if (!packets) return std::nullopt;
    return std::move(*packets);
}

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
        {id3v2(3000) + sound(5), 5},
        {id3v2(300, true) + id3v2(20) + sound(1), 1},
        {id3v2(300, false, 200'000'000) + sound(5), 5},
        {id3v2(10) + std::string(1024, '\0') + sound(4), 4},
        {sound(2) + id3v1(), 2},
        {sound(2) + ape(400) + lyrics3() + id3v1(), 2},
        {sound(2) + id3v2(100, true), 2},
        {ape(40'000) + sound(2), 2},
        {sound(5) + "999999LYRICS200", 5},
        {sound(5) + std::string(417, 'x') + sound(5), 11},  // a packet whose header is damaged
        {sound(5) + junk, 5},
        {junk + sound(5), 5},
        {sound(5) + junk + sound(5), 10},
        {sound(5) + id3v2(2000) + sound(5), 10},
        {sound(5) + id3v1() + id3v2(99) + infoFrame(5, "LAME3.100", 576, 700) + sound(5), 10},
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
    const struct {
        std::string bytes;
        bool hasCounts;
        std::uint32_t priming, remainder;
    } cases[] = {
        {infoFrame(5, "LAME3.100", 576, 1200) + sound(5), true, 1105, 671},
        {infoFrame(5, "Lavc58.54", 1105, 300) + sound(5), true, 1634, 0},
        {infoFrame(5, "", 576, 1200) + sound(5), false, 0, 0},
        {infoFrame(5, "LAME3.100", 0, 0) + sound(5), false, 0, 0},
        {infoFrame(50, "LAME3.100", 576, 1200) + sound(5), true, 1105, 0},  // cut short
        {infoFrame(5, "LAME3.100", 576, 1200) + sound(5).substr(0, 5 * 417 - 1), true, 1105, 0},
        {infoFrame(1, "LAME3.100", 576, 4095) + sound(2), false, 0, 0},
        {sound(5), false, 0, 0},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(&expected - cases);
        const auto found = packetsOf(expected.bytes);
        ASSERT_TRUE(found);
        EXPECT_EQ(found->hasGaplessCounts, expected.hasCounts);
        EXPECT_EQ(found->primingFrames, expected.priming);
        EXPECT_EQ(found->remainderFrames, expected.remainder);
    }
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
        id3v2(1000),
        WaveBuilder{.tag = 0x55, .data = std::string(5000, 'x')}.bytes(),
    };
    for (const std::string& bytes : cases) {
        MemorySource source(bytes);
        EXPECT_FALSE(services::describeSound(source)) << &bytes - cases;
    }
}

}  // namespace
}  // namespace atdp::test
