#include "bench/plugin_player.h"

#include <algorithm>
#include <vector>

#include "host/frame_exact_seek.h"
#include "host/plugin_module.h"

namespace atdp::bench {
namespace {

host::PluginModule& module() {
    static host::PluginModule loaded(host::defaultModulePath());
    return loaded;
}

class PluginPlayer final : public Player {
 public:
    PluginPlayer(const std::string& path, float rate) {
        const DecoderClass* found = module().plugin().findDecoderClassByPath(path);
        require(found != nullptr, "no decoder for a file");
        decoder_ = found->make();
        require(decoder_->openByPath(path, nullptr) == DECODER_RESULT_OK, "a file does not open");
        require(rate == 0 || decoder_->setSamplingRate(rate), "a rate is refused");
        channels_ = static_cast<std::uint32_t>(decoder_->getChannels());
    }
    ~PluginPlayer() override { decoder_->close(); }

    std::size_t read(float* samples, std::size_t frames) override {
        auto size = static_cast<std::uint32_t>(frames * channels_);
        require(decoder_->getNextSamples(samples, &size) == DECODER_RESULT_OK, "a read fails");
        return size / channels_;
    }

    // To a time at or before it, as times are in single precision, and on from there.
    void seek(std::uint64_t frame) override {
        const auto point = host::seekPointBefore(frame, decoder_->getSamplingRate());
        require(decoder_->seek(point.nanoseconds) == DECODER_RESULT_OK, "a seek fails");
        dropped_.resize(512 * channels_);
        for (std::uint64_t left = frame - point.frame; left > 0;) {
            const std::size_t got = read(dropped_.data(), std::min<std::uint64_t>(left, 512));
            require(got > 0, "a seek ends early");
            left -= got;
        }
    }

 private:
    std::unique_ptr<SeekableFileDecoder> decoder_;
    std::uint32_t channels_ = 0;
    std::vector<float> dropped_;
};

}  // namespace

void preparePlugin() {
    module();
}

std::unique_ptr<Player> openWithPlugin(const std::string& path, float rate) {
    return std::make_unique<PluginPlayer>(path, rate);
}

}  // namespace atdp::bench
