#include "bench/resamplers.h"

#include <samplerate.h>
#include <soxr.h>

#include <algorithm>
#include <vector>

#include "bench/sndfile_player.h"

namespace atdp::bench {
namespace {

constexpr double kFrom = 44100;
constexpr double kTo = 48000;
constexpr std::size_t kPacketFrames = 2048;

std::vector<float> load(const std::string& path) {
    const auto player = openWithSndfile(path);
    std::vector<float> sound;
    for (std::size_t got = 1; got > 0;) {
        const std::size_t end = sound.size();
        sound.resize(end + 2 * kPacketFrames);
        got = player->read(sound.data() + end, kPacketFrames);
        sound.resize(end + 2 * got);
    }
    return sound;
}

class SoxrPlayer final : public Player {
 public:
    explicit SoxrPlayer(const std::string& path) : sound_(load(path)) { seek(0); }
    ~SoxrPlayer() override { soxr_delete(soxr_); }

    std::size_t read(float* samples, std::size_t) override {
        std::size_t done = 0;
        while (done == 0 && at_ <= sound_.size()) {
            const std::size_t left = (sound_.size() - at_) / 2;
            const bool isEnd = left == 0;
            std::size_t used = 0;
            soxr_process(soxr_, isEnd ? nullptr : sound_.data() + at_,
                         std::min(left, kPacketFrames), &used, samples, kPacketFrames, &done);
            at_ += 2 * used;
            if (isEnd) break;
        }
        return done;
    }

    void seek(std::uint64_t frame) override {
        require(frame == 0, "only the start is sought");
        const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
        const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, SOXR_HI_PREC_CLOCK);
        soxr_delete(soxr_);
        soxr_ = soxr_create(kFrom, kTo, 2, nullptr, &io, &quality, nullptr);
        at_ = 0;
    }

 private:
    std::vector<float> sound_;
    soxr_t soxr_ = nullptr;
    std::size_t at_ = 0;
};

class SampleratePlayer final : public Player {
 public:
    explicit SampleratePlayer(const std::string& path) : sound_(load(path)) {
        int error = 0;
        state_ = src_new(SRC_SINC_BEST_QUALITY, 2, &error);
        require(state_ != nullptr, "libsamplerate does not start");
    }
    ~SampleratePlayer() override { src_delete(state_); }

    std::size_t read(float* samples, std::size_t) override {
        SRC_DATA data{};
        data.src_ratio = kTo / kFrom;
        data.data_out = samples;
        data.output_frames = kPacketFrames;
        do {
            const std::size_t left = (sound_.size() - at_) / 2;
            data.data_in = sound_.data() + at_;
            data.input_frames = static_cast<long>(std::min(left, kPacketFrames));
            data.end_of_input = left <= kPacketFrames ? 1 : 0;
            require(src_process(state_, &data) == 0, "libsamplerate fails");
            at_ += 2 * static_cast<std::size_t>(data.input_frames_used);
        } while (data.output_frames_gen == 0 && data.end_of_input == 0);
        return static_cast<std::size_t>(data.output_frames_gen);
    }

    void seek(std::uint64_t frame) override {
        require(frame == 0, "only the start is sought");
        src_reset(state_);
        at_ = 0;
    }

 private:
    std::vector<float> sound_;
    SRC_STATE* state_ = nullptr;
    std::size_t at_ = 0;
};

}  // namespace

std::unique_ptr<Player> openWithSoxr(const std::string& path) {
    return std::make_unique<SoxrPlayer>(path);
}

std::unique_ptr<Player> openWithSamplerate(const std::string& path) {
    return std::make_unique<SampleratePlayer>(path);
}

}  // namespace atdp::bench
