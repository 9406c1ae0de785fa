#include "bench/sounds.h"

#include <stdlib.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <vector>

namespace atdp::bench {
namespace {

constexpr int kRate = 44100;

// Decaying tones of many pitches that start over and over, each at its own place between the
// channels, and a little noise: what encoders meet in music.
std::vector<float> makeMusic(double seconds) {
    const auto frames = static_cast<int>(kRate * seconds);
    std::vector<float> samples(std::size_t{2} * static_cast<std::size_t>(frames));
    std::minstd_rand random(1);
    std::uniform_real_distribution<double> unit(0, 1);
    for (int start = 0; start < frames; start += kRate / 8) {
        const double pitch = 55 * std::exp2(5 * unit(random)), place = unit(random);
        for (int partial = 1; partial < 6; ++partial) {
            const double turn = 2 * 3.141592653589793 * pitch * partial / kRate;
            double level = 0.15 / partial;
            for (int i = start; i < std::min(frames, start + kRate); ++i, level *= 0.99985) {
                const double value = level * std::sin(turn * (i - start));
                samples[static_cast<std::size_t>(2 * i)] += static_cast<float>(value * place);
                samples[static_cast<std::size_t>(2 * i + 1)] +=
                    static_cast<float>(value * (1 - place));
            }
        }
    }
    for (float& sample : samples) sample += static_cast<float>(0.004 * (2 * unit(random) - 1));
    return samples;
}

void run(const std::string& command) {
    if (std::system(command.c_str()) != 0) throw std::runtime_error(command);
}

}  // namespace

Sounds::Sounds(double seconds) {
    std::string name = std::filesystem::temp_directory_path() / "atdp-bench-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for sound files");
    folder_ = name;
    const auto music = makeMusic(seconds);
    std::FILE* out = std::fopen(path("music.f32").c_str(), "wb");
    if (!out || std::fwrite(music.data(), sizeof(float), music.size(), out) != music.size())
        throw std::runtime_error("a sound file cannot be written");
    std::fclose(out);

    const std::string in = "cd '" + folder_.string() + "' && ";
    const std::string sox = in + "sox -D -t f32 -r 44100 -c 2 music.f32 ";
    run(sox + "-b 16 16.wav && " + "cd '" + folder_.string() + "' && sox 16.wav 16.aiff");
    run(sox + "-b 24 24.wav && " + "cd '" + folder_.string() + "' && sox 24.wav 24.aiff");
    // Whose last read gives one frame.
    run(in + "sox -D 16.wav shrunk.wav trim 0 " +
        std::to_string(music.size() / 2 / 512 * 512 - 511) + "s");
    run(in + "lame --quiet -b 128 16.wav 128.mp3");
    run(in + "lame --quiet -b 320 16.wav 320.mp3");
    run(in + "lame --quiet -V 2 16.wav vbr.mp3");
    // Twenty times as long, without a frame that tells its length.
    run(in + "lame --quiet -t -b 192 16.wav once.mp3 && for i in $(seq " + std::to_string(kAlbum) +
        "); do cat once.mp3; done" + " > untold.mp3");
    run(in + "twolame --quiet -b 192 16.wav layer2.mp2");
    const std::string ffmpeg = in + "ffmpeg -nostdin -v error -i ";
    run(ffmpeg + "16.wav -c:a alac 16.m4a");
    run(ffmpeg + "24.wav -c:a alac 24.m4a");
}

Sounds::~Sounds() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

}  // namespace atdp::bench
