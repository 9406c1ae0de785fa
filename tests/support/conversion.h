// A file of floats, and its frames as another rate and number of channels.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "services/convert/channel_matrix.h"
#include "services/convert/converting_reader.h"
#include "services/sound_file.h"
#include "tests/support/client_format.h"
#include "tests/support/temporary_file.h"
#include "tests/support/wave_builder.h"

namespace atdp::test {

using services::ConvertingReader;

// Floats in a WAVE file of one channel.
inline WaveBuilder waveOf(const std::vector<float>& samples, std::uint32_t rate) {
    WaveBuilder builder;
    builder.tag = 3;
    builder.bits = 32;
    builder.channels = 1;
    builder.rate = rate;
    builder.data.assign(reinterpret_cast<const char*>(samples.data()),
                        samples.size() * sizeof(float));
    return builder;
}

inline std::vector<float> noise(std::size_t frames) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> sample(-0.9F, 0.9F);
    std::vector<float> samples(frames);
    for (float& value : samples) value = sample(random);
    return samples;
}

inline ConvertingReader readerOf(const TemporaryFile& file) {
    auto sound = services::SoundFile::open(file.path());
    EXPECT_TRUE(sound);
    return ConvertingReader(*sound);
}

inline OSStatus deliverAt(ConvertingReader& reader, double rate, std::uint32_t channels) {
    return reader.setClientFormat(clientFormat(rate, channels));
}

inline std::vector<float> read(ConvertingReader& reader, std::uint32_t frames) {
    const std::uint32_t channels = reader.clientFormat().mChannelsPerFrame;
    std::vector<float> samples(std::size_t{frames} * channels);
    EXPECT_TRUE(reader.read(samples.data(), &frames));
    samples.resize(std::size_t{frames} * channels);
    return samples;
}

// To the end, in requests of a size that fits no block in use.
inline std::vector<float> readAll(ConvertingReader& reader) {
    std::vector<float> all;
    for (auto part = read(reader, 1001); !part.empty(); part = read(reader, 1001))
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

// What one channel of full scale gives, in thousandths of full scale.
inline std::vector<int> levels(std::uint32_t mask, std::uint32_t in, std::uint32_t out,
                               std::uint32_t channel) {
    std::vector<int> levels(out);
    for (const auto& term : services::channelGains(mask, in, out))
        if (term.in == channel) levels[term.out] += static_cast<int>(std::lround(1000 * term.gain));
    return levels;
}

}  // namespace atdp::test
