// Decodes the same packets with AlacDecoder and with libavcodec to interleaved floats, in turns on
// one thread, and prints the medians: alac_bench [repetitions]. FFmpeg's program makes the files.
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "services/codecs/alac_decoder.h"

namespace {

using atdp::services::AlacConfig;
using atdp::services::AlacDecoder;
using atdp::services::Bytes;

constexpr int kRate = 44100;
constexpr int kSeconds = 30;

struct Case {
    const char* name;
    int bits;
    double noise;  // share of full scale
    double tones;
    const char* options;
};

const Case kCases[] = {
    {"16 bit, orders 4 to 6", 16, 0.004, 0.5, ""},
    {"16 bit, order 8", 16, 0.004, 0.5, "-min_prediction_order 8 -max_prediction_order 8"},
    {"16 bit, order 4", 16, 0.004, 0.5, "-min_prediction_order 4 -max_prediction_order 4"},
    {"16 bit, quiet", 16, 0.0002, 0.02, ""},
    {"16 bit, noise", 16, 0.7, 0.0, ""},
    {"16 bit, silence", 16, 0.0, 0.0, ""},
    {"16 bit, order 16", 16, 0.004, 0.5, "-min_prediction_order 16 -max_prediction_order 16"},
    {"16 bit, order 30", 16, 0.004, 0.5, "-min_prediction_order 30 -max_prediction_order 30"},
    {"24 bit, orders 4 to 6", 24, 0.002, 0.5, ""},
    {"24 bit, order 8", 24, 0.002, 0.5, "-min_prediction_order 8 -max_prediction_order 8"},
};

// Decaying tones of many pitches that start over and over, each at its own place between the
// channels, and noise whose level follows theirs.
std::vector<float> makeSound(const Case& kind) {
    std::vector<float> samples(std::size_t{2} * kRate * kSeconds);
    std::minstd_rand random(1);
    std::uniform_real_distribution<double> unit(0, 1);
    const auto frames = static_cast<int>(samples.size() / 2);
    for (int start = 0; start < frames && kind.tones > 0; start += kRate / 8) {
        const double pitch = 55 * std::exp2(5 * unit(random)), place = unit(random);
        for (int partial = 1; partial < 6; ++partial) {
            const double turn = 2 * 3.141592653589793 * pitch * partial / kRate;
            double level = kind.tones * 0.3 / partial;
            for (int i = start; i < std::min(frames, start + kRate); ++i, level *= 0.99985) {
                const double value = level * std::sin(turn * (i - start));
                samples[static_cast<std::size_t>(2 * i)] += static_cast<float>(value * place);
                samples[static_cast<std::size_t>(2 * i + 1)] +=
                    static_cast<float>(value * (1 - place));
            }
        }
    }
    for (float& sample : samples) sample += static_cast<float>(kind.noise * (2 * unit(random) - 1));
    return samples;
}

struct File {
    std::vector<std::uint8_t> cookie;
    std::vector<AVPacket*> packets;
    AVCodecParameters* parameters = avcodec_parameters_alloc();
};

File demux(const std::string& path) {
    File file;
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, path.c_str(), nullptr, nullptr) < 0 ||
        avformat_find_stream_info(format, nullptr) < 0)
        throw std::runtime_error("cannot open " + path);
    const AVCodecParameters* parameters = format->streams[0]->codecpar;
    avcodec_parameters_copy(file.parameters, parameters);
    file.cookie.assign(parameters->extradata, parameters->extradata + parameters->extradata_size);
    AVPacket* packet = av_packet_alloc();
    while (av_read_frame(format, packet) >= 0) {
        file.packets.push_back(packet);
        packet = av_packet_alloc();
    }
    av_packet_free(&packet);
    avformat_close_input(&format);
    return file;
}

File makeFile(const Case& kind) {
    const auto directory = std::filesystem::temp_directory_path();
    const std::string raw = directory / "alac_bench.f32", path = directory / "alac_bench.m4a";
    const auto sound = makeSound(kind);
    std::FILE* out = std::fopen(raw.c_str(), "wb");
    if (!out || std::fwrite(sound.data(), 4, sound.size(), out) != sound.size())
        throw std::runtime_error("cannot write " + raw);
    std::fclose(out);
    const std::string command = "ffmpeg -v error -y -f f32le -ar 44100 -ac 2 -i " + raw +
                                " -c:a alac -sample_fmt " + (kind.bits == 16 ? "s16p " : "s32p ") +
                                kind.options + " " + path;
    if (std::system(command.c_str()) != 0) throw std::runtime_error(command);
    File file = demux(path);
    std::filesystem::remove(raw);
    std::filesystem::remove(path);
    return file;
}

// Of the thread, so that other programs disturb little.
double processorSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double seconds(const std::function<void()>& work) {
    const double start = processorSeconds();
    work();
    return processorSeconds() - start;
}

class Peer {
 public:
    explicit Peer(const File& file) : context_(avcodec_alloc_context3(nullptr)) {
        avcodec_parameters_to_context(context_, file.parameters);
        context_->thread_count = 1;
        if (avcodec_open2(context_, avcodec_find_decoder(AV_CODEC_ID_ALAC), nullptr) < 0)
            throw std::runtime_error("libavcodec does not open");
    }
    ~Peer() {
        av_frame_free(&frame_);
        avcodec_free_context(&context_);
    }
    std::uint32_t decode(const AVPacket* packet, float* samples) {
        if (avcodec_send_packet(context_, packet) < 0 ||
            avcodec_receive_frame(context_, frame_) < 0)
            throw std::runtime_error("libavcodec does not decode");
        const auto frames = static_cast<std::size_t>(frame_->nb_samples);
        if (samples && frame_->format == AV_SAMPLE_FMT_S16P)
            interleave<std::int16_t>(frames, 0x1p-15F, samples);
        else if (samples)
            interleave<std::int32_t>(frames, 0x1p-31F, samples);
        return static_cast<std::uint32_t>(frames);
    }

 private:
    template <class Integer>
    void interleave(std::size_t frames, float scale, float* samples) {
        const auto* left = reinterpret_cast<const Integer*>(frame_->extended_data[0]);
        const auto* right = reinterpret_cast<const Integer*>(frame_->extended_data[1]);
        for (std::size_t i = 0; i < frames; ++i) {
            samples[2 * i] = static_cast<float>(left[i]) * scale;
            samples[2 * i + 1] = static_cast<float>(right[i]) * scale;
        }
    }

    AVCodecContext* context_;
    AVFrame* frame_ = av_frame_alloc();
};

Bytes bytesOf(const AVPacket* packet) {
    return {reinterpret_cast<const std::byte*>(packet->data),
            static_cast<std::size_t>(packet->size)};
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

void run(const Case& kind, int repetitions) {
    const File file = makeFile(kind);
    const auto config = atdp::services::parseAlacConfig(
        std::as_bytes(std::span(file.cookie.data(), file.cookie.size())));
    if (!config) throw std::runtime_error("unusable configuration");
    AlacDecoder decoder(*config);
    AlacDecoder plainDecoder(*config, atdp::services::plainAlacKernels());
    Peer peer(file);
    std::vector<float> ours(std::size_t{2} * config->frameLength), theirs(ours);
    for (const AVPacket* packet : file.packets) {
        const std::uint32_t frames = peer.decode(packet, theirs.data());
        if (decoder.decode(bytesOf(packet), ours.data()) != frames ||
            std::memcmp(ours.data(), theirs.data(), std::size_t{8} * frames) != 0)
            throw std::runtime_error("the decoders differ");
    }
    std::vector<double> our, plain, their, theirInteger;
    for (int i = 0; i < repetitions; ++i) {
        our.push_back(seconds([&] {
            for (const AVPacket* packet : file.packets)
                decoder.decode(bytesOf(packet), ours.data());
        }));
        their.push_back(seconds([&] {
            for (const AVPacket* packet : file.packets) peer.decode(packet, theirs.data());
        }));
        theirInteger.push_back(seconds([&] {
            for (const AVPacket* packet : file.packets) peer.decode(packet, nullptr);
        }));
        plain.push_back(seconds([&] {
            for (const AVPacket* packet : file.packets)
                plainDecoder.decode(bytesOf(packet), ours.data());
        }));
    }
    const double perSample = 1e9 / (2.0 * kRate * kSeconds);
    std::printf("%-22s %6.2f %6.2f %8.2f %8.2f %8.2f %8.2f\n", kind.name, median(our) * perSample,
                median(plain) * perSample, median(their) * perSample,
                median(theirInteger) * perSample, median(their) / median(our),
                median(theirInteger) / median(our));
}

}  // namespace

int main(int argc, char** argv) try {
    const int repetitions = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
    std::printf("%-22s %6s %6s %8s %8s %8s %8s\n", "ns per sample", "ours", "plain", "libav",
                "integers", "ratio", "integers");
    for (const Case& kind : kCases) run(kind, repetitions);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "alac_bench: %s\n", error.what());
    return 1;
}
