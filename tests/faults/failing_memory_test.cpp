// Memory that runs out at any moment of a decoder's life, in the libraries as well.
#include "tests/support/failing_memory.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/app_kit.h"
#include "tests/support/host_use.h"

namespace atdp::test {
namespace {

using Mode = FailingMemory::Mode;

class FailingMemoryTest : public testing::Test {
 protected:
    FailingMemoryTest() { NSAppKitVersionNumber = 1000; }  // the plug-in reads MPEG-4 tags itself
    ~FailingMemoryTest() override { NSAppKitVersionNumber = 1138; }

    void failEveryAllocation(const SampleSound& sound) {
        SCOPED_TRACE(sound.name);
        const TemporaryFile file(sound.bytes);
        path_ = file.path();
        host_.use(path_, sound.decoderClass);  // makes what is kept
        tags_ = tagsOf(host_.metadata());
        tags_.push_back("Artist=テスト");  // of a source that is asked where another fails
        host_.end();
        for (const Mode mode : {Mode::kOnce, Mode::kFromOn}) {
            std::size_t n = 0;
            while (survives(sound, mode, n)) ++n;
            EXPECT_GT(n, 50U);
        }
        for (std::size_t bytes = 1 << 19; bytes > 16; bytes /= 2)
            survives(sound, Mode::kLargerThan, bytes);
    }

    // Fails the n-th allocation, or however n is meant. Answers whether there was one to fail.
    bool survives(const SampleSound& sound, Mode mode, std::size_t n) {
        SCOPED_TRACE(n);
        const std::int64_t before = blocksInUse();
        {
            const FailingMemory failing(mode, n);
            host_.use(path_, sound.decoderClass);
        }
        const bool isReached = FailingMemory::allocations() > n;
        EXPECT_STREQ(host_.wrong(), nullptr);
        for (const std::string& tag : tagsOf(host_.metadata()))
            EXPECT_NE(std::find(tags_.begin(), tags_.end(), tag), tags_.end()) << tag;
        std::vector<float> samples;
        if (host_.isOpen()) samples = host_.playAgain();
        const Delivery delivery = host_.end();
        if (!FailingMemory::hasFailedInTagLib()) {
            EXPECT_EQ(blocksInUse() - (samples.capacity() > 0), before);
        }
        if (host_.isOpen()) {
            EXPECT_TRUE(samples == host_.startIn(path_, delivery));
            EXPECT_TRUE(host_.heardWhatIsThere(path_));
        }
        EXPECT_TRUE(openDecoder(path_));
        return isReached;
    }

    std::string path_;
    std::vector<std::string> tags_;
    HostUse host_;
    SilentLog silent_;
};

TEST_F(FailingMemoryTest, FailsTheCallAndNothingElse) {
    for (const SampleSound& sound : sampleSounds())
        if (isShort(sound)) failEveryAllocation(sound);
}

TEST_F(FailingMemoryTest, FailsTheCallAndNothingElseInLongFiles) {
    for (const SampleSound& sound : sampleSounds())
        if (!isShort(sound)) failEveryAllocation(sound);
}

// Neither reading nor seeking takes memory, so a player can do both where it must not wait.
TEST(DeliveryMemory, IsAllTakenBefore) {
    for (const SampleSound& sound : sampleSounds()) {
        SCOPED_TRACE(sound.name);
        const TemporaryFile file(sound.bytes);
        const auto decoder = sound.decoderClass.make();
        ASSERT_EQ(decoder->openByPath(file.path(), nullptr), DECODER_RESULT_OK);
        std::vector<float> samples(64 * static_cast<std::size_t>(decoder->getChannels()));
        const auto deliver = [&](int times) {
            for (int i = 0; i < times; ++i) {
                auto size = static_cast<std::uint32_t>(samples.size());
                decoder->getNextSamples(samples.data(), &size);
            }
        };
        deliver(20);  // what is made once
        const FailingMemory counting(Mode::kFromOn, SIZE_MAX);
        deliver(500);
        decoder->seek(0);
        deliver(500);
        EXPECT_EQ(FailingMemory::allocations(), 0U);
    }
}

}  // namespace
}  // namespace atdp::test
