// The whole plug-in, as a host drives it, in any order of calls.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "decoder/option_keys.h"
#include "decoder/time_arithmetic.h"
#include "fuzz/bytes_read.h"
#include "fuzz/contract.h"
#include "fuzz/input.h"
#include "fuzz/memory_file.h"
#include "fuzz/metadata_check.h"
#include "mp3/audio_toolbox_mp3_decoder.h"
#include "mp4/audio_toolbox_mp4_decoder.h"
#include "platform/app_kit.h"
#include "platform/log.h"
#include "plugin/audio_toolbox_decoder_plugin.h"
#include "plugin/module.h"

namespace {

using namespace atdp;

constexpr std::uint8_t kMostCalls = 40;
constexpr float kUntouched = 12345.0F;

// A host that knows at any time what the decoder must answer.
class Host {
 public:
    Host(const DecoderClass& decoderClass, const fuzz::MemoryFile& file)
        : decoder_(decoderClass.make()), file_(file) {}

    void call(fuzz::Input& input) {
        fuzz::ReadAllowance allowance;
        allowance.grant(fuzz::kReadsToOpen, file_);
        switch (input.take<std::uint8_t>() % 11) {
            case 0:
                return open(input.take<std::uint8_t>());
            case 1:
                return seek(input.take<std::uint32_t>() * std::uint64_t{1000});
            case 2:
                return seek(input.take<std::uint64_t>());
            case 3:
                return setRate(input.take<float>());
            case 4:
                return setRate(static_cast<float>(1000 * (1 + input.take<std::uint8_t>() % 96)));
            case 5:
                return setChannels(input.take<std::int8_t>());
            case 6:
                return askAll();
            case 7:
                return close(input.take<std::uint8_t>());
            case 8:
                return passNull();
            default:
                return read(input.take<std::uint16_t>() % 5000);
        }
    }

 private:
    void open(std::uint8_t threshold) {
        const Options options{
            {DECODER_OPTION_KEY_MP3_THREASHOLD_DB, -static_cast<double>(threshold)}};
        // A file whose first second cannot be read stays open.
        const bool opened =
            decoder_->openByPath(file_.path(), threshold == 0 ? nullptr : &options) !=
            DECODER_RESULT_FAILED;
        fuzz::require(!opened || !wasOpened_, "an open decoder is not opened again");
        if (!opened) return;
        wasOpened_ = isOpen_ = true;
        position_ = 0;
        fuzz::require(decoder_->getTimestamp() == 0, "an open file is at its start");
    }

    void read(std::uint32_t count) {
        std::vector<float> samples(count + 1, kUntouched);
        std::uint32_t got = count;
        const std::int32_t result = decoder_->getNextSamples(samples.data(), &got);
        fuzz::require(got <= count, "no more samples than asked for");
        // A remainder that makes no whole frame stays in the count, and is not written.
        const auto frameSamples = static_cast<std::uint32_t>(std::max(decoder_->getChannels(), 1));
        fuzz::require(std::all_of(samples.begin() + got - got % frameSamples, samples.end(),
                                  [](float sample) { return sample == kUntouched; }),
                      "nothing is written behind what is counted");
        fuzz::require(got % frameSamples == 0 || got % frameSamples == count % frameSamples,
                      "only whole frames are delivered");
        if (!isOpen_) {
            fuzz::require(got == 0 && (result != DECODER_RESULT_OK), "only an open file is read");
            return;
        }
        const auto channels = static_cast<std::uint32_t>(decoder_->getChannels());
        position_ += got / channels;
        fuzz::require(decoder_->getTimestamp() ==
                          nanosecondsFromFrames(position_, decoder_->getSamplingRate()),
                      "the time follows from the frames delivered");
    }

    // A host's null pointers are answered, not followed.
    void passNull() {
        std::uint32_t count = 100;
        const std::int32_t results[] = {decoder_->getNextSamples(nullptr, &count),
                                        decoder_->getNextSamples(nullptr, nullptr)};
        for (const std::int32_t result : results)
            fuzz::require(result == DECODER_RESULT_READ_FAILED, "samples need room");
        fuzz::require(count == 0, "nothing is delivered to nowhere");
        decoder_->getDummySamples(nullptr, &count);
        decoder_->getDummySamples(nullptr, nullptr);
    }

    void seek(std::uint64_t nanoseconds) {
        const std::uint64_t before = decoder_->getTimestamp();
        const bool moved = decoder_->seek(nanoseconds) == DECODER_RESULT_OK;
        fuzz::require(isOpen_ || !moved, "only an open file is sought in");
        fuzz::require(decoder_->getTimestamp() == (moved ? nanoseconds : before),
                      "the time is that of the seek, or stays");
        if (moved) position_ = framesFromNanoseconds(nanoseconds, decoder_->getSamplingRate());
    }

    void setRate(float rate) {
        const float before = decoder_->getSamplingRate();
        const bool changed = decoder_->setSamplingRate(rate);
        fuzz::require(!changed || (rate > 0 && isOpen_), "only a rate is accepted");
        fuzz::require(decoder_->getSamplingRate() == (changed ? rate : before),
                      "a rate is in force, or the old one stays");
        if (changed) position_ = 0;
    }

    void setChannels(std::int32_t channels) {
        const std::int32_t before = decoder_->getChannels();
        const bool changed = decoder_->setChannels(channels);
        fuzz::require(!changed || (channels >= 1 && channels <= 64), "only a count is accepted");
        fuzz::require(decoder_->getChannels() == (changed ? channels : before),
                      "a count is in force, or the old one stays");
    }

    void askAll() {
        const auto metadata = decoder_->getMetaData();
        fuzz::require(isOpen_ || !metadata, "only an open file has metadata");
        if (metadata) fuzz::checkTexts(*metadata);
        decoder_->getDuration();
        decoder_->getPreferredBufferSize();
        decoder_->getPrimingFrames();
        decoder_->getRemainderFrames();
        decoder_->getBitRate();
        fuzz::require(decoder_->getBits() == 32, "samples have 32 bits");
    }

    // Seldom, so that most calls meet an open file.
    void close(std::uint8_t choice) {
        if (choice % 4 != 0) return;
        decoder_->close();
        isOpen_ = false;
    }

    std::unique_ptr<SeekableFileDecoder> decoder_;
    const fuzz::MemoryFile& file_;
    bool wasOpened_ = false;
    bool isOpen_ = false;
    std::uint64_t position_ = 0;  // in frames delivered, as the interface counts them
};

}  // namespace

// The class and the release, how many bytes of calls, the calls, and the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Input input(bytes, size);
    const auto kind = input.take<std::uint8_t>();
    const auto calls = input.take<std::uint8_t>();
    const std::size_t callBytes = std::min<std::size_t>(calls, input.rest().size());
    fuzz::Input order(input.rest().data(), callBytes);
    const fuzz::MemoryFile file(input.rest().subspan(callBytes));

    AudioToolboxDecoderPluginSetLogSink([](const char*, void*) {}, nullptr);
    NSAppKitVersionNumber = (kind & 4) != 0 ? 1137 : 1138;
    const auto plugin = AudioToolboxDecoderPlugin::initWithKey(kPluginKey);
    const DecoderClass* found = plugin->findDecoderClassByPath(file.path());
    const DecoderClass* const classes[] = {found, &AudioToolboxWavDecoder::decoderClass(),
                                           &AudioToolboxMP3Decoder::decoderClass(),
                                           &AudioToolboxMP4Decoder::decoderClass()};
    const DecoderClass* chosen = classes[kind % 4];
    if (chosen == nullptr) return 0;
    Host host(*chosen, file);
    for (std::uint8_t i = 0; i < kMostCalls && !order.isEmpty(); ++i) host.call(order);
    return 0;
}
