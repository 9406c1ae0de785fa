// Frames as a file's reader gives them.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "services/sound_file.h"
#include "tests/support/data_file.h"

namespace atdp::test {

inline std::vector<float> read(services::FrameReader& reader, std::uint32_t channels,
                               std::uint32_t frames) {
    std::vector<float> samples(std::size_t{frames} * channels);
    EXPECT_TRUE(reader.read(samples.data(), &frames));
    samples.resize(std::size_t{frames} * channels);
    return samples;
}

// A file under tests/data; null where it is none that can be played.
inline std::shared_ptr<services::SoundFile> opened(const std::string& name) {
    auto file = services::SoundFile::open(dataFile(name));
    return file ? *file : nullptr;
}

// Bit for bit. Seeks everywhere: far and near, forward and back, to both ends, with reads that do
// not divide a packet.
inline void expectSeeksEqualAStraightRun(const std::string& path, std::uint32_t channels) {
    auto file = services::SoundFile::open(path);
    ASSERT_TRUE(file);
    auto reader = (*file)->makeReader();
    ASSERT_TRUE(reader);
    const std::uint64_t frames = *(*file)->lengthInFrames();
    const auto straight = read(**reader, channels, static_cast<std::uint32_t>(frames) + 1);
    ASSERT_EQ(straight.size(), frames * channels);
    std::mt19937_64 random(3);
    for (int i = 0; i < 200; ++i) {
        const std::uint64_t frame = i == 0 ? frames - 1 : i == 1 ? 0 : random() % frames;
        (*reader)->seek(frame);
        const auto part = read(**reader, channels, 1 + static_cast<std::uint32_t>(random() % 3000));
        ASSERT_LE(frame * channels + part.size(), straight.size());
        for (std::size_t k = 0; k < part.size(); ++k)
            ASSERT_EQ(part[k], straight[frame * channels + k])
                << "seek " << i << " to frame " << frame << ", sample " << k;
    }
}

}  // namespace atdp::test
