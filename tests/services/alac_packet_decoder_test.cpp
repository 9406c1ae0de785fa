// Packets of Apple Lossless that cannot be decoded as they are.
#include <gtest/gtest.h>

#include <algorithm>

#include "services/codecs/alac_packet_decoder.h"
#include "tests/support/memory_source.h"

namespace atdp::test {
namespace {

using services::PacketPlace;

class AlacPackets : public testing::Test {
 protected:
    static constexpr std::uint32_t kFrames = 4, kChannels = 2;

    bool decode(PacketPlace place) {
        const auto packets =
            std::make_shared<const std::vector<PacketPlace>>(std::vector<PacketPlace>{place});
        services::AlacConfig config;
        config.frameLength = kFrames;
        config.bitDepth = 16;
        config.channels = kChannels;
        config.sampleRate = 44100;
        services::AlacPacketDecoder decoder(source_, packets, config);
        samples_.assign(kFrames * kChannels, 1.0F);
        return decoder.decode(0, samples_.data());
    }
    bool isSilent() const {
        return std::ranges::all_of(samples_, [](float sample) { return sample == 0; });
    }

    std::shared_ptr<MemorySource> source_ = std::make_shared<MemorySource>(std::string(9000, '~'));
    std::vector<float> samples_;
};

TEST_F(AlacPackets, AreSilentWhereTheyAreNotThereOrTooLarge) {
    EXPECT_TRUE(decode({}));
    EXPECT_TRUE(isSilent());
    EXPECT_TRUE(decode({0, 8000}));
    EXPECT_TRUE(isSilent());
}

TEST_F(AlacPackets, FailWhereTheirBytesAreGone) {
    EXPECT_TRUE(decode({8990, 10}));
    EXPECT_FALSE(decode({8990, 11}));
    EXPECT_FALSE(decode({PacketPlace::kMaxOffset, 1}));
}

}  // namespace
}  // namespace atdp::test
