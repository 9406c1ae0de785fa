#include "bench/libav_player.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <algorithm>

namespace atdp::bench {
namespace {

// A packet's bits may start 511 bytes back, of which the smallest packets of 1152 frames hold 58
// each, and its transform overlaps that of one more.
constexpr int kPacketsBefore = 10;
constexpr int kFewPacketsBefore = 3;

class LibavPlayer final : public Player {
 public:
    LibavPlayer(const std::string& path, int packetsBefore) {
        av_log_set_level(AV_LOG_QUIET);
        require(avformat_open_input(&format_, path.c_str(), nullptr, nullptr) >= 0 &&
                    avformat_find_stream_info(format_, nullptr) >= 0,
                "libavformat does not open a file");
        const int number = av_find_best_stream(format_, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
        require(number >= 0, "libavformat finds no sound");
        stream_ = format_->streams[number];
        const AVCodec* codec = avcodec_find_decoder(stream_->codecpar->codec_id);
        codec_ = avcodec_alloc_context3(codec);
        avcodec_parameters_to_context(codec_, stream_->codecpar);
        codec_->thread_count = 1;
        require(avcodec_open2(codec_, codec, nullptr) >= 0, "libavcodec does not open a codec");
        channels_ = static_cast<std::size_t>(stream_->codecpar->ch_layout.nb_channels);
        if (codec->id != AV_CODEC_ID_ALAC) framesBefore_ = 1152 * packetsBefore;
    }
    ~LibavPlayer() override {
        av_frame_free(&frame_);
        av_packet_free(&packet_);
        avcodec_free_context(&codec_);
        avformat_close_input(&format_);
    }

    std::size_t read(float* samples, std::size_t frames) override {
        std::size_t done = 0;
        while (done < frames && (used_ < held() || decode())) {
            const std::size_t count = std::min(held() - used_, frames - done);
            interleave(samples + done * channels_, count);
            used_ += count;
            done += count;
        }
        return done;
    }

    void seek(std::uint64_t frame) override {
        const AVRational perFrame{1, codec_->sample_rate};
        const std::int64_t first =
            stream_->start_time == AV_NOPTS_VALUE
                ? 0
                : av_rescale_q(stream_->start_time, stream_->time_base, perFrame);
        const std::int64_t target = first + static_cast<std::int64_t>(frame);
        const std::int64_t early = std::max<std::int64_t>(target - framesBefore_, 0);
        require(av_seek_frame(format_, stream_->index,
                              av_rescale_q(early, perFrame, stream_->time_base),
                              AVSEEK_FLAG_BACKWARD) >= 0,
                "a seek fails");
        avcodec_flush_buffers(codec_);
        av_frame_unref(frame_);
        for (;;) {
            require(decode(), "a seek ends early");
            const std::int64_t start = av_rescale_q(frame_->pts, stream_->time_base, perFrame);
            if (start + frame_->nb_samples <= target) continue;
            used_ = static_cast<std::size_t>(std::max<std::int64_t>(target - start, 0));
            return;
        }
    }

 private:
    std::size_t held() const { return static_cast<std::size_t>(frame_->nb_samples); }

    bool decode() {
        used_ = 0;
        for (;;) {
            const int status = avcodec_receive_frame(codec_, frame_);
            if (status >= 0) return true;
            if (status == AVERROR_EOF) return false;
            const bool isRead = av_read_frame(format_, packet_) >= 0;
            if (isRead && packet_->stream_index == stream_->index)
                avcodec_send_packet(codec_, packet_);
            else if (!isRead)
                avcodec_send_packet(codec_, nullptr);
            av_packet_unref(packet_);
        }
    }

    void interleave(float* samples, std::size_t frames) const {
        switch (frame_->format) {
            case AV_SAMPLE_FMT_FLTP:
                return interleavePlanes<float>(samples, frames, 1.0F);
            case AV_SAMPLE_FMT_S16P:
                return interleavePlanes<std::int16_t>(samples, frames, 0x1p-15F);
            case AV_SAMPLE_FMT_S32P:
                return interleavePlanes<std::int32_t>(samples, frames, 0x1p-31F);
            default:
                require(false, "libavcodec gives another format");
        }
    }

    template <class Sample>
    void interleavePlanes(float* samples, std::size_t frames, float scale) const {
        require(channels_ == 2, "two channels are compared");
        const auto* left = reinterpret_cast<const Sample*>(frame_->extended_data[0]) + used_;
        const auto* right = reinterpret_cast<const Sample*>(frame_->extended_data[1]) + used_;
        for (std::size_t i = 0; i < frames; ++i) {
            samples[2 * i] = static_cast<float>(left[i]) * scale;
            samples[2 * i + 1] = static_cast<float>(right[i]) * scale;
        }
    }

    AVFormatContext* format_ = nullptr;
    AVStream* stream_ = nullptr;
    AVCodecContext* codec_ = nullptr;
    AVPacket* packet_ = av_packet_alloc();
    AVFrame* frame_ = av_frame_alloc();
    std::size_t channels_ = 0;
    std::int64_t framesBefore_ = 0;  // decoded before a frame that is sought
    std::size_t used_ = 0;           // frames of frame_ that were read
};

}  // namespace

std::unique_ptr<Player> openWithLibav(const std::string& path) {
    return std::make_unique<LibavPlayer>(path, kPacketsBefore);
}

std::unique_ptr<Player> openWithHastyLibav(const std::string& path) {
    return std::make_unique<LibavPlayer>(path, kFewPacketsBefore);
}

}  // namespace atdp::bench
