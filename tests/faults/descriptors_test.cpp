// File descriptors that run out, and many decoders at once.
#include <gtest/gtest.h>

#include <random>

#include "tests/support/process.h"
#include "tests/support/sample_sounds.h"

namespace atdp::test {
namespace {

TEST(Descriptors, RunOutWithoutHarmToFiveHundredDecodersThatPlay) {
    constexpr std::size_t kDecoders = 500;
    const SilentLog silent;
    const auto sounds = sampleSounds();
    std::vector<std::unique_ptr<TemporaryFile>> files;
    std::vector<std::vector<float>> expected;
    for (const SampleSound& sound : sounds) {
        files.push_back(std::make_unique<TemporaryFile>(sound.bytes));
        expected.push_back(playWhole(files.back()->path(), {}));
        ASSERT_FALSE(expected.back().empty());
    }
    std::vector<Playing> decoders;
    for (std::size_t i = 0; i < kDecoders; ++i) {
        const std::size_t k = i % files.size();
        decoders.push_back({openDecoder(files[k]->path()), &expected[k], {}});
        ASSERT_TRUE(decoders.back().decoder) << i;
        ASSERT_TRUE(decoders.front().playsRightAfterATurn());
    }
    const auto playOnAndFailToOpen = [&](const std::string& suffix) {
        for (std::size_t k = 0; k < files.size(); ++k) {
            const std::string path = files[k]->path() + suffix;
            EXPECT_EQ(plugin().findDecoderClassByPath(path), nullptr);
            const auto decoder = sounds[k].decoderClass.make();
            EXPECT_EQ(decoder->openByPath(path, nullptr), DECODER_RESULT_FAILED);
            decoder->close();
        }
        for (Playing& playing : decoders) {
            EXPECT_TRUE(playing.playsRightAfterATurn());
            EXPECT_TRUE(playing.decoder->getMetaData());
        }
    };
    // Rehearsed, since the sanitizer of types opens a pipe when it first sees one.
    playOnAndFailToOpen(", which is not there");
    {
        const NoDescriptorsLeft none;
        playOnAndFailToOpen("");
    }
    std::shuffle(decoders.begin(), decoders.end(), std::minstd_rand(1));
    while (!decoders.empty()) {
        EXPECT_TRUE(decoders[decoders.size() / 2].playsRightAfterATurn());
        decoders.back().decoder->close();
        decoders.pop_back();
    }
    for (std::size_t k = 0; k < files.size(); ++k)
        EXPECT_TRUE(playWhole(files[k]->path(), {}) == expected[k]);
}

}  // namespace
}  // namespace atdp::test
