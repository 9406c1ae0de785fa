// What the tests with many threads share.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/app_kit.h"
#include "tests/support/sample_sounds.h"

namespace atdp::test {

inline constexpr std::size_t kThreads = 8;

struct Expected {
    const SampleSound& sound;
    TemporaryFile file;
    std::vector<float> samples[std::size(kDeliveries)];
    std::vector<std::string> tags;

    explicit Expected(const SampleSound& of) : sound(of), file(of.bytes) {}
};

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
            expected->tags = tagsOf(openDecoder(expected->file.path())->getMetaData().get());
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

}  // namespace atdp::test
