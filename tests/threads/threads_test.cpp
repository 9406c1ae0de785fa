// Decoders on many threads at once, as a player has them that plays, prefetches and reads tags.
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <random>
#include <thread>

#include "platform/app_kit.h"
#include "tests/support/sample_sounds.h"

namespace atdp::test {
namespace {

constexpr std::size_t kThreads = 8;

struct Expected {
    const SampleSound& sound;
    TemporaryFile file;
    std::vector<float> samples[std::size(kDeliveries)];
    std::vector<std::string> tags;

    explicit Expected(const SampleSound& of) : sound(of), file(of.bytes) {}
};

std::vector<std::string> tagsOf(SeekableFileDecoder& decoder) {
    std::vector<std::string> tags;
    const auto list = decoder.getMetaData();
    for (const auto& entry : *list)
        if (const auto* text = std::get_if<std::string>(&entry.value))
            tags.push_back(std::string(entry.key) + '=' + *text);
    return tags;
}

// What one thread hears and reads is the measure for many.
class Threads : public testing::Test {
 protected:
    Threads() {
        NSAppKitVersionNumber = 1000;  // MPEG-4 tags are read by the plug-in itself
        for (const SampleSound& sound : sounds_)
            files_.push_back(std::make_unique<Expected>(sound));
    }
    void useOneThread() {
        for (const auto& expected : files_) {
            for (std::size_t i = 0; i < std::size(kDeliveries); ++i)
                expected->samples[i] = playWhole(expected->file.path(), kDeliveries[i]);
            expected->tags = tagsOf(*openDecoder(expected->file.path()));
        }
    }
    ~Threads() override { NSAppKitVersionNumber = 1138; }

    // Runs `work(thread)` on all threads.
    template <class Work>
    static void together(const Work& work) {
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < kThreads; ++i) threads.emplace_back(work, i);
        for (std::thread& thread : threads) thread.join();
    }

    SilentLog silent_;
    std::vector<SampleSound> sounds_ = sampleSounds();
    std::vector<std::unique_ptr<Expected>> files_;
    std::atomic<int> wrong_{0};
};

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
            wrong_ += tagsOf(*decoder) != expected.tags;
            wrong_ += plugin().getProperties()->empty();
            if (round % 2 == 0) decoder->close();
        }
    });
    EXPECT_EQ(wrong_, 0);
}

// Each decoder is played, sought in and closed by all threads in turn.
TEST_F(Threads, HandDecodersOn) {
    useOneThread();
    std::mutex mutex;
    std::condition_variable changed;
    for (const auto& expected : files_) {
        std::unique_ptr<SeekableFileDecoder> decoder;
        std::vector<float> samples;
        std::size_t turn = 0;
        together([&](std::size_t thread) {
            std::unique_lock lock(mutex);
            changed.wait(lock, [&] { return turn == thread; });
            if (thread == 0) decoder = openDecoder(expected->file.path());
            if (thread == 1) wrong_ += !apply(kDeliveries[3], *decoder);
            if (thread == 2) wrong_ += decoder->seek(0) != DECODER_RESULT_OK;
            if (thread >= 2)
                wrong_ += play(*decoder, samples, thread + 1 < kThreads ? 100 : SIZE_MAX) !=
                          DECODER_RESULT_OK;
            if (thread + 1 == kThreads) decoder.reset();
            ++turn;
            changed.notify_all();
        });
        EXPECT_TRUE(samples == expected->samples[3]) << expected->sound.name;
    }
    EXPECT_EQ(wrong_, 0);
}

}  // namespace
}  // namespace atdp::test
