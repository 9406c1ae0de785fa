// Packets of Apple Lossless that cannot be decoded as they are.
#include <gtest/gtest.h>

#include "services/codecs/alac_packet_decoder.h"
#include "tests/support/memory_source.h"

namespace atdp::test {
namespace {

using services::PacketPlace;

// What comes of a packet there, in a file of 9000 bytes that are no packet.
std::string decoded(PacketPlace place) {
    const auto source = std::make_shared<MemorySource>(std::string(9000, '~'));
    const auto packets =
        std::make_shared<const std::vector<PacketPlace>>(std::vector<PacketPlace>{place});
    services::AlacConfig config;
    config.frameLength = 4;
    config.bitDepth = 16;
    config.channels = 2;
    config.sampleRate = 44100;
    services::AlacPacketDecoder decoder(source, packets, config);
    std::vector<float> samples(4 * 2, 1.0F);
    if (!decoder.decode(0, samples.data())) return "failed";
    return samples == std::vector<float>(4 * 2) ? "silent" : "sound";
}

TEST(AlacPackets, AreSilentWhereTheyAreBrokenAndFailWhereTheirBytesAreGone) {
    EXPECT_EQ(decoded({}), "silent");         // none
    EXPECT_EQ(decoded({0, 8000}), "silent");  // larger than any
    EXPECT_EQ(decoded({8990, 10}), "silent");
    EXPECT_EQ(decoded({8990, 11}), "failed");
    EXPECT_EQ(decoded({PacketPlace::kMaxOffset, 1}), "failed");
}

}  // namespace
}  // namespace atdp::test
