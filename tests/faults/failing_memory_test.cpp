// Memory that runs out at any moment of a decoder's life, in the libraries as well.
#include "tests/support/failing_memory.h"

#include <gtest/gtest.h>

#include <array>

#include "platform/app_kit.h"
#include "tests/support/sample_sounds.h"

namespace atdp::test {
namespace {

using Mode = FailingMemory::Mode;

constexpr std::size_t kStartFrames = 1000;
constexpr float kOtherRate = 22050;
constexpr std::int32_t kOtherChannels = 3;

// Everything that a host does with a file, and on it goes whatever fails. Answers what is wrong;
// it allocates nothing itself.
const char* useDecoder(const std::string& path, const DecoderClass& right,
                       std::unique_ptr<SeekableFileDecoder>& decoder, bool& isOpen) {
    static std::array<float, 64 * 512> room;
    const char* wrong = nullptr;
    const auto initWithKey = AudioToolboxDecoderPlugin::initWithKey(kPluginKey);
    plugin().getProperties();
    const DecoderClass* found = plugin().findDecoderClassByPath(path);
    if (found != nullptr && found != &right) wrong = "another class";
    decoder = right.make();
    if (!decoder) return wrong;
    const std::int32_t opened = decoder->openByPath(path, nullptr);
    isOpen = opened == DECODER_RESULT_OK;
    const auto take = [&] {
        auto size = static_cast<std::uint32_t>(room.size());
        const std::int32_t result = decoder->getNextSamples(room.data(), &size);
        if (size > room.size()) wrong = "more samples than asked for";
        if (opened == DECODER_RESULT_FAILED && result == DECODER_RESULT_OK)
            wrong = "samples of a file that is not open";
    };
    decoder->getMetaData();
    take();
    const std::int32_t channels = decoder->getChannels();
    if (!decoder->setChannels(kOtherChannels) && decoder->getChannels() != channels)
        wrong = "other channels after a change that failed";
    take();
    decoder->seek(decoder->getDuration() / 2);
    take();
    const float rate = decoder->getSamplingRate();
    if (!decoder->setSamplingRate(kOtherRate) && decoder->getSamplingRate() != rate)
        wrong = "another rate after a change that failed";
    take();
    decoder->seek(decoder->getDuration());
    take();
    return wrong;
}

// The first samples in the delivery formats that a decoder can be left in.
struct Starts {
    explicit Starts(const std::string& path) {
        for (const float rate : {0.0F, kOtherRate})
            for (const std::int32_t channels : {0, kOtherChannels}) {
                const auto decoder = openDecoder(path);
                apply({rate, channels}, *decoder);
                all.push_back({decoder->getSamplingRate(), decoder->getChannels(), {}});
                play(*decoder, all.back().samples, kStartFrames);
            }
    }
    const std::vector<float>& of(SeekableFileDecoder& decoder) const {
        return std::find_if(all.begin(), all.end(),
                            [&](const Start& start) {
                                return start.rate == decoder.getSamplingRate() &&
                                       start.channels == decoder.getChannels();
                            })
            ->samples;
    }
    struct Start {
        float rate;
        std::int32_t channels;
        std::vector<float> samples;
    };
    std::vector<Start> all;
};

// Fails the n-th allocation, or however n is meant. Answers whether there was one to fail.
bool survives(const std::string& path, const DecoderClass& right, const Starts& starts, Mode mode,
              std::size_t n) {
    const std::int64_t before = blocksInUse();
    std::unique_ptr<SeekableFileDecoder> decoder;
    bool isOpen = false;
    const char* wrong = nullptr;
    {
        const FailingMemory failing(mode, n);
        wrong = useDecoder(path, right, decoder, isOpen);
    }
    EXPECT_STREQ(wrong, nullptr) << n;
    // With memory again it plays, unless it lost its buffer.
    if (isOpen && decoder->seek(0) == DECODER_RESULT_OK) {
        std::vector<float> samples;
        const std::int32_t result = play(*decoder, samples, kStartFrames);
        EXPECT_TRUE(result != DECODER_RESULT_OK || samples == starts.of(*decoder)) << n;
    }
    if (decoder) decoder->close();
    decoder.reset();
    if (!FailingMemory::hasFailedInTagLib()) {
        EXPECT_EQ(blocksInUse(), before) << n;
    }
    const bool isReached = FailingMemory::allocations() > n;
    decoder = openDecoder(path);
    EXPECT_TRUE(decoder) << n;
    return isReached;
}

class FailingMemoryTest : public testing::Test {
 protected:
    FailingMemoryTest() { NSAppKitVersionNumber = 1000; }  // the plug-in reads MPEG-4 tags itself
    ~FailingMemoryTest() override { NSAppKitVersionNumber = 1138; }
    SilentLog silent_;
};

void failEveryAllocation(const SampleSound& sound) {
    SCOPED_TRACE(sound.name);
    const TemporaryFile file(sound.bytes);
    const Starts starts(file.path());
    std::unique_ptr<SeekableFileDecoder> decoder;
    bool isOpen = false;
    useDecoder(file.path(), sound.decoderClass, decoder, isOpen);  // makes what is kept
    for (const Mode mode : {Mode::kOnce, Mode::kFromOn}) {
        std::size_t n = 0;
        while (survives(file.path(), sound.decoderClass, starts, mode, n)) ++n;
        EXPECT_GT(n, 50U);
    }
    for (std::size_t bytes = 1 << 19; bytes > 16; bytes /= 2)
        survives(file.path(), sound.decoderClass, starts, Mode::kLargerThan, bytes);
}

TEST_F(FailingMemoryTest, FailsTheCallAndNothingElse) {
    for (const SampleSound& sound : sampleSounds())
        if (isShort(sound)) failEveryAllocation(sound);
}

TEST_F(FailingMemoryTest, FailsTheCallAndNothingElseInLongFiles) {
    for (const SampleSound& sound : sampleSounds())
        if (!isShort(sound)) failEveryAllocation(sound);
}

}  // namespace
}  // namespace atdp::test
