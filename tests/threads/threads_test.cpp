// Decoders on many threads at once, as a player has them that plays, prefetches and reads tags.
#include <gtest/gtest.h>

#include <random>

#include "tests/support/threads_test.h"

namespace atdp::test {
namespace {

// Many come first: what is made once is made by whoever comes first.
TEST_F(Threads, HearTheSameAsOneThread) {
    struct Heard {
        std::size_t file, delivery;
        std::vector<float> samples;
    };
    std::vector<Heard> heard[kThreads];
    together([&](std::size_t thread) {
        const auto own = AudioToolboxDecoderPlugin::initWithKey(kPluginKey);
        std::vector<std::size_t> order(files_.size());
        for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
        std::shuffle(order.begin(), order.end(), std::minstd_rand(static_cast<unsigned>(thread)));
        for (const std::size_t i : order) {
            const std::string& path = files_[i]->file.path();
            const std::size_t k = (thread + heard[thread].size()) % std::size(kDeliveries);
            heard[thread].push_back({i, k, playWhole(path, kDeliveries[k])});
            wrong_ += own->findDecoderClassByPath(path) != &files_[i]->sound.decoderClass;
        }
    });
    useOneThread();
    for (const auto& ofThread : heard)
        for (const auto& [file, delivery, samples] : ofThread)
            wrong_ += samples.empty() || samples != files_[file]->samples[delivery];
    EXPECT_EQ(wrong_, 0);
}

TEST_F(Threads, OpenReadTagsAndCloseWithoutRest) {
    useOneThread();
    together([this](std::size_t thread) {
        std::minstd_rand random{static_cast<unsigned>(thread)};
        for (int round = 0; round < 150; ++round) {
            const Expected& expected = *files_[random() % files_.size()];
            wrong_ += plugin().findDecoderClassByPath(expected.file.path()) !=
                      &expected.sound.decoderClass;
            const auto decoder = expected.sound.decoderClass.make();
            if (round % 5 == 0) {
                wrong_ += decoder->openByPath("/nowhere", nullptr) == DECODER_RESULT_OK;
                decoder->close();
                continue;
            }
            wrong_ += decoder->openByPath(expected.file.path(), nullptr) != DECODER_RESULT_OK;
            wrong_ += tagsOf(decoder->getMetaData().get()) != expected.tags;
            wrong_ += plugin().getProperties()->empty();
            if (round % 2 == 0) decoder->close();
        }
    });
    EXPECT_EQ(wrong_, 0);
}

}  // namespace
}  // namespace atdp::test
