// A player that runs for days.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>

#include "tests/support/failing_memory.h"
#include "tests/support/sample_sounds.h"

namespace atdp::test {
namespace {

// Sanitizers take some ten times as long, and keep freed memory.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kRounds = 1000;
constexpr bool kMemoryIsComparable = false;
#else
constexpr int kRounds = 10'000;
constexpr bool kMemoryIsComparable = true;
#endif
constexpr int kFirstRounds = 100;
constexpr std::int64_t kMarginBytes = 2 << 20;  // of 10,000 rounds: a leak of 210 bytes each

struct Usage {
    std::int64_t descriptors = 0, residentBytes = 0, blocks = 0;
};

Usage usage() {
    Usage now;
    now.descriptors = std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                                    std::filesystem::directory_iterator());
    std::int64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    now.residentBytes = pages * ::sysconf(_SC_PAGESIZE);
    now.blocks = blocksInUse();
    return now;
}

bool plays(const TemporaryFile& file, int round, std::vector<float>& samples) {
    const auto decoder = openDecoder(file.path());
    const auto playSome = [&] {
        samples.clear();
        return play(*decoder, samples, 300) == DECODER_RESULT_OK;
    };
    if (!decoder || !playSome() || !decoder->getMetaData()) return false;
    if (decoder->seek(decoder->getDuration() / 3) != DECODER_RESULT_OK || !playSome()) return false;
    if (!decoder->setChannels(1 + round % 3) || !playSome()) return false;
    if (!decoder->setSamplingRate(11025) || !playSome()) return false;
    if (round % 2 == 0) decoder->close();
    return true;
}

TEST(LongUse, TakesNoMoreThanAtTheStart) {
    const SilentLog silent;
    std::vector<std::unique_ptr<TemporaryFile>> files;
    for (const SampleSound& sound : sampleSounds())
        files.push_back(std::make_unique<TemporaryFile>(sound.bytes));
    std::vector<float> samples;
    samples.reserve(100'000);
    Usage before;
    for (int round = 0; round < kRounds; ++round) {
        if (round == kFirstRounds) before = usage();
        const auto& file = *files[static_cast<std::size_t>(round) % files.size()];
        ASSERT_TRUE(plays(file, round, samples)) << round;
    }
    const Usage after = usage();
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_EQ(after.blocks, before.blocks);
    EXPECT_TRUE(!kMemoryIsComparable || after.residentBytes <= before.residentBytes + kMarginBytes);
    std::cout << before.residentBytes << " bytes after " << kFirstRounds << " rounds, "
              << after.residentBytes << " after " << kRounds << '\n';
}

}  // namespace
}  // namespace atdp::test
