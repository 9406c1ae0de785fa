// A host that does everything there is to do with a decoder, goes on whatever fails, and notes what
// came of it.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/support/sample_sounds.h"

namespace atdp::test {

class HostUse {
    static constexpr std::uint32_t kMostSamples = 30'000;

 public:
    // Asks for so many samples at a time, whole frames of one, two or three channels.
    explicit HostUse(std::uint32_t samples = kMostSamples) : samples_(samples) {}

    // Allocates nothing itself.
    void use(const std::string& path, const DecoderClass& right) {
        outcomes_ = {};
        heard_ = 0;
        wrong_ = nullptr;
        const auto initWithKey = AudioToolboxDecoderPlugin::initWithKey(kPluginKey);
        plugin().getProperties();
        const DecoderClass* found = plugin().findDecoderClassByPath(path);
        if (found != nullptr && found != &right) wrong_ = "another class";
        opened_ = DECODER_RESULT_FAILED;
        decoder_ = right.make();
        if (!decoder_) return;
        opened_ = decoder_->openByPath(path, nullptr);
        if (opened_ != DECODER_RESULT_OK && opened_ != DECODER_RESULT_FAILED &&
            opened_ != DECODER_RESULT_READ_FAILED)
            wrong_ = "a result that opening does not have";
        metadata_ = decoder_->getMetaData();
        for (std::size_t step = 0; step < kSteps; ++step) step % 2 == 0 ? take(step) : change(step);
    }

    // Frees what the host has. Answers the delivery format at the end.
    Delivery end() {
        metadata_.reset();
        if (!decoder_) return {};
        const Delivery last{decoder_->getSamplingRate(), decoder_->getChannels()};
        decoder_->close();
        decoder_.reset();
        return last;
    }

    // What no failure may lead to; null where there was nothing of the kind.
    const char* wrong() const { return wrong_; }
    bool isOpen() const { return opened_ == DECODER_RESULT_OK; }
    const MetadataList* metadata() const { return metadata_.get(); }

    // With memory again it plays from its start. One that lost its buffer gets one with a format.
    std::vector<float> playAgain() {
        std::vector<float> samples;
        EXPECT_EQ(decoder_->seek(0), DECODER_RESULT_OK);
        if (play(*decoder_, samples, kStartFrames) == DECODER_RESULT_OK) return samples;
        EXPECT_TRUE(decoder_->setChannels(decoder_->getChannels()));
        EXPECT_EQ(decoder_->seek(0), DECODER_RESULT_OK);
        samples.clear();
        EXPECT_EQ(play(*decoder_, samples, kStartFrames), DECODER_RESULT_OK);
        return samples;
    }

    // The first samples in a delivery format.
    static const std::vector<float>& startIn(const std::string& path, const Delivery& delivery) {
        static std::map<std::tuple<std::string, float, std::int32_t>, std::vector<float>> starts;
        auto& samples = starts[{path, delivery.rate, delivery.channels}];
        if (samples.empty()) {
            const auto decoder = openDecoder(path);
            apply(delivery, *decoder);
            play(*decoder, samples, kStartFrames);
        }
        return samples;
    }

    // Whether a decoder that is asked for no more than what succeeded gives the same samples, and
    // as many.
    bool heardWhatIsThere(const std::string& path) const {
        static std::map<std::pair<std::string, Outcomes>, std::vector<float>> known;
        const auto [entry, isNew] = known.try_emplace({path, outcomes_});
        if (isNew) entry->second = repeated(path);
        return std::equal(room().begin(), room().begin() + heard_, entry->second.begin(),
                          entry->second.end());
    }

 private:
    static constexpr std::size_t kStartFrames = 1000;
    static constexpr std::size_t kSteps = 9;
    // Of a take the samples asked for, or those that came before a failure; of a change whether it
    // was made.
    using Outcomes = std::array<std::uint32_t, kSteps>;

    static std::array<float, 5 * kMostSamples>& room() {
        static std::array<float, 5 * kMostSamples> samples;
        return samples;
    }

    void take(std::size_t step) {
        std::uint32_t size = samples_;
        const std::int32_t result = decoder_->getNextSamples(room().data() + heard_, &size);
        if (size > samples_) wrong_ = "more samples than asked for";
        if (result != DECODER_RESULT_OK && result != DECODER_RESULT_READ_FAILED)
            wrong_ = "a result that delivery does not have";
        if (opened_ == DECODER_RESULT_FAILED && result == DECODER_RESULT_OK)
            wrong_ = "samples of a file that is not open";
        if (wrong_ != nullptr) return;
        outcomes_[step] = result == DECODER_RESULT_OK ? samples_ : size;
        heard_ += size;
    }

    void change(std::size_t step) {
        const float rate = decoder_->getSamplingRate();
        const std::int32_t channels = decoder_->getChannels();
        outcomes_[step] = changes(*decoder_, step);
        if (outcomes_[step] == 0 &&
            (decoder_->getSamplingRate() != rate || decoder_->getChannels() != channels))
            wrong_ = "another format after a change that failed";
    }

    static bool changes(SeekableFileDecoder& decoder, std::size_t step) {
        switch (step) {
            case 1:
                return decoder.setChannels(3);
            case 3:
                return decoder.seek(decoder.getDuration() / 2) == DECODER_RESULT_OK;
            case 5:
                return decoder.setSamplingRate(22050);
            default:
                return decoder.seek(decoder.getDuration()) == DECODER_RESULT_OK;
        }
    }

    std::vector<float> repeated(const std::string& path) const {
        std::vector<float> samples;
        const auto decoder = openDecoder(path);
        for (std::size_t step = 0; step < kSteps; ++step)
            if (step % 2 == 0)
                play(*decoder, samples,
                     outcomes_[step] / static_cast<std::size_t>(decoder->getChannels()));
            else if (outcomes_[step] != 0)
                changes(*decoder, step);
        return samples;
    }

    std::uint32_t samples_;
    std::unique_ptr<SeekableFileDecoder> decoder_;
    std::unique_ptr<MetadataList> metadata_;
    std::int32_t opened_ = 0;
    Outcomes outcomes_{};
    std::uint32_t heard_ = 0;
    const char* wrong_ = nullptr;
};

}  // namespace atdp::test
