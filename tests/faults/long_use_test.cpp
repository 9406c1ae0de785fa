// A player that runs for days.
#include <gtest/gtest.h>

#include <iostream>

#include "tests/support/host_use.h"
#include "tests/support/process.h"

namespace atdp::test {
namespace {

constexpr std::size_t kRounds = 10'000;
constexpr std::size_t kFirstRounds = 100;
constexpr std::int64_t kMarginBytes = 2 << 20;  // of 10,000 rounds: a leak of 210 bytes each

TEST(LongUse, TakesNoMoreThanAtTheStart) {
    const SilentLog silent;
    const auto sounds = sampleSounds();
    std::vector<std::unique_ptr<TemporaryFile>> files;
    for (const SampleSound& sound : sounds)
        files.push_back(std::make_unique<TemporaryFile>(sound.bytes));
    HostUse host(900);
    Usage before;
    for (std::size_t round = 0; round < kRounds; ++round) {
        if (round == kFirstRounds) before = usage();
        const std::size_t k = round % files.size();
        host.use(files[k]->path(), sounds[k].decoderClass);
        ASSERT_TRUE(host.isOpen() && host.metadata() != nullptr) << round;
        ASSERT_STREQ(host.wrong(), nullptr) << round;
        host.end();
    }
    const Usage after = usage();
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_EQ(after.blocks, before.blocks);
    EXPECT_LE(after.residentBytes, before.residentBytes + kMarginBytes);
    std::cout << before.residentBytes << " bytes after " << kFirstRounds << " rounds, "
              << after.residentBytes << " after " << kRounds << '\n';
}

}  // namespace
}  // namespace atdp::test
