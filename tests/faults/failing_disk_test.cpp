// Disks that fail while a file plays, and files that change.
#include "tests/support/failing_disk.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "decoder/time_arithmetic.h"
#include "tests/support/sample_sounds.h"

namespace atdp::test {
namespace {

using Fault = FailingDisk::Fault;

void overwrite(const std::string& path, const std::string& bytes) {
    std::fstream(path, std::ios::binary | std::ios::in | std::ios::out) << bytes;
}

bool isStartOf(const std::vector<float>& whole, const std::vector<float>& part) {
    return part.size() <= whole.size() && std::equal(part.begin(), part.end(), whole.begin());
}

// Calls `test` with a file of each kind in each delivery format, and its samples there.
template <class Test>
void forEachDelivery(const Test& test) {
    const SilentLog silent;
    for (const SampleSound& sound : sampleSounds())
        for (const Delivery& delivery : kDeliveries) {
            const TemporaryFile file(sound.bytes);
            SCOPED_TRACE(sound.name + " at " + std::to_string(delivery.rate) + " Hz, " +
                         std::to_string(delivery.channels) + " channels");
            const auto expected = playWhole(file.path(), delivery);
            ASSERT_FALSE(expected.empty());
            test(sound, delivery, file, expected);
        }
}

// Opens the file, spoils it, plays until it fails, mends it, and plays on: each sample comes once
// and in its place. Some files are in memory by then; `failures` counts those that are not.
template <class Spoil>
void playThroughFault(const Delivery& delivery, const TemporaryFile& file,
                      const std::vector<float>& expected, int& failures, const Spoil& spoil) {
    const auto decoder = openDecoder(file.path());
    ASSERT_TRUE(decoder && apply(delivery, *decoder));
    std::vector<float> samples;
    {
        const auto spoilt = spoil();
        const std::int32_t result = play(*decoder, samples);
        failures += result == DECODER_RESULT_READ_FAILED;
        EXPECT_TRUE(isStartOf(expected, samples));
        const auto frames = samples.size() / static_cast<std::size_t>(decoder->getChannels());
        EXPECT_EQ(decoder->getTimestamp(),
                  nanosecondsFromFrames(frames, decoder->getSamplingRate()));
        if (result != DECODER_RESULT_OK) {
            const std::size_t played = samples.size();
            EXPECT_EQ(play(*decoder, samples), DECODER_RESULT_READ_FAILED);
            EXPECT_EQ(samples.size(), played);
        }
    }
    EXPECT_EQ(play(*decoder, samples), DECODER_RESULT_OK);
    EXPECT_TRUE(samples == expected);
    samples.clear();
    ASSERT_EQ(decoder->seek(0), DECODER_RESULT_OK);
    EXPECT_EQ(play(*decoder, samples), DECODER_RESULT_OK);
    EXPECT_TRUE(samples == expected);
}

TEST(FailingDisk, IsPlayedOnWhenItCanBeReadAgain) {
    int failures = 0;
    forEachDelivery(
        [&](const auto& sound, const auto& delivery, const auto& file, const auto& expected) {
            const auto size = static_cast<std::int64_t>(sound.bytes.size());
            for (const std::int64_t from : {size * 7 / 10, size - 100})
                playThroughFault(delivery, file, expected, failures, [&] {
                    return std::make_unique<FailingDisk>(Fault::kUnreadable, from);
                });
        });
    EXPECT_GT(failures, 20);
}

TEST(FailingDisk, GivesWhatComesBeforeTheFailure) {
    const SilentLog silent;
    const WaveBuilder wave{.data = noise(2 * 40'000)};
    const TemporaryFile file(wave.bytes());
    const auto decoder = openDecoder(file.path());
    const FailingDisk failing(Fault::kUnreadable, 44 + 4 * 20'000 + 3);
    std::vector<float> samples;
    EXPECT_EQ(play(*decoder, samples), DECODER_RESULT_READ_FAILED);
    EXPECT_EQ(samples.size(), 2U * 20'000);
}

// One that opens all the same has its full length.
TEST(FailingDisk, IsRefusedWhereOpeningMeetsTheFailure) {
    forEachDelivery(
        [](const auto& sound, const auto& delivery, const auto& file, const auto& expected) {
            const auto size = static_cast<std::int64_t>(sound.bytes.size());
            for (const std::int64_t from : {std::int64_t{0}, std::int64_t{100}, std::int64_t{4096},
                                            size / 3, size - 1000, size - 10}) {
                std::unique_ptr<FailingDisk> failing(new FailingDisk(Fault::kUnreadable, from));
                const DecoderClass* found = plugin().findDecoderClassByPath(file.path());
                EXPECT_TRUE(found == &sound.decoderClass || found == nullptr);
                const auto decoder = sound.decoderClass.make();
                const bool isOpen = decoder->openByPath(file.path(), nullptr) == DECODER_RESULT_OK;
                EXPECT_FALSE(isOpen && from == 0);
                decoder->getMetaData();
                const bool isApplied = isOpen && apply(delivery, *decoder);
                failing.reset();
                std::vector<float> samples;
                if (isApplied) {
                    EXPECT_EQ(play(*decoder, samples), DECODER_RESULT_OK) << from;
                    EXPECT_TRUE(samples == expected) << from;
                }
                decoder->close();
            }
            EXPECT_TRUE(playWhole(file.path(), delivery) == expected);
        });
}

TEST(FailingDisk, MayBeInterruptedAndSlow) {
    forEachDelivery(
        [](const auto& sound, const auto& delivery, const auto& file, const auto& expected) {
            for (const Fault fault : {Fault::kInterrupted, Fault::kByteByByte}) {
                if (fault == Fault::kByteByByte && !isShort(sound)) continue;  // takes too long
                const FailingDisk failing(fault);
                EXPECT_TRUE(playWhole(file.path(), delivery) == expected);
            }
        });
}

TEST(ChangingFile, IsPlayedOnWhenItsEndIsPutBack) {
    int failures = 0;
    forEachDelivery(
        [&](const auto& sound, const auto& delivery, const auto& file, const auto& expected) {
            playThroughFault(delivery, file, expected, failures, [&] {
                std::filesystem::resize_file(file.path(), sound.bytes.size() * 7 / 10);
                const auto putBack = [&](void*) { overwrite(file.path(), sound.bytes); };
                static int anything;
                return std::unique_ptr<void, decltype(putBack)>(&anything, putBack);
            });
        });
    EXPECT_GT(failures, 20);
}

TEST(ChangingFile, IsPlayedAsItWasWhenItGrowsOrAnotherTakesItsName) {
    forEachDelivery(
        [](const auto& sound, const auto& delivery, const auto& file, const auto& expected) {
            const auto decoder = openDecoder(file.path());
            ASSERT_TRUE(decoder && apply(delivery, *decoder));
            std::vector<float> samples;
            ASSERT_EQ(play(*decoder, samples, 100), DECODER_RESULT_OK);
            overwrite(file.path(), sound.bytes + sound.bytes);
            ASSERT_EQ(play(*decoder, samples, 1000), DECODER_RESULT_OK);
            const TemporaryFile other("another file");
            std::filesystem::rename(other.path(), file.path());
            EXPECT_EQ(play(*decoder, samples), DECODER_RESULT_OK);
            EXPECT_TRUE(samples == expected);
        });
}

// What is played then is nobody's sound, but no more of it than there was.
TEST(ChangingFile, MayBecomeAnyOther) {
    const SilentLog silent;
    const auto sounds = sampleSounds();
    for (const SampleSound& sound : sounds)
        for (const SampleSound& other : sounds)
            for (const Delivery& delivery : kDeliveries) {
                const TemporaryFile file(sound.bytes);
                const auto decoder = openDecoder(file.path());
                ASSERT_TRUE(decoder) << sound.name;
                const auto frames =
                    static_cast<std::uint64_t>(static_cast<double>(decoder->getDuration()) * 1e-9 *
                                               std::max(delivery.rate, decoder->getSamplingRate()));
                std::string bytes = other.bytes;
                bytes.resize(sound.bytes.size(), '\x55');
                overwrite(file.path(), bytes);
                std::vector<float> samples;
                play(*decoder, samples, 100);
                decoder->getMetaData();
                apply(delivery, *decoder);
                decoder->seek(decoder->getDuration() / 2);
                play(*decoder, samples, 1000);
                if (decoder->seek(0) != DECODER_RESULT_OK) continue;
                samples.clear();
                play(*decoder, samples);
                EXPECT_LE(samples.size() / static_cast<std::size_t>(decoder->getChannels()),
                          frames + 2);
            }
}

}  // namespace
}  // namespace atdp::test
