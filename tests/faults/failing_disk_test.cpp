// Disks that fail while a file plays, and files that change.
#include "tests/support/failing_disk.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/sample_sounds.h"

namespace atdp::test {
namespace {

using Fault = FailingDisk::Fault;

TEST(FailingDisk, IsPlayedOnWhenItCanBeReadAgain) {
    int failures = 0;
    forEachDelivery(
        [&](const auto& sound, const auto& delivery, const auto& file, const auto& expected) {
            const std::size_t size = sound.bytes.size();
            for (const std::size_t from : {size * 7 / 10, size - 100}) {
                const std::size_t frames = playThroughFault(delivery, file, expected, [&] {
                    return std::make_unique<FailingDisk>(Fault::kUnreadable,
                                                         static_cast<std::int64_t>(from));
                });
                failures += frames > 0;
                // Every whole frame before the failure; the sound ends with its 40,000 frames.
                if (sound.name == "wave" && delivery.rate == 0 && frames > 0) {
                    EXPECT_EQ(frames, 40'000 - (size - from + 3) / 4);
                }
            }
        });
    EXPECT_GT(failures, 20);
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
    forEachDelivery([&](const auto& sound, const auto& delivery, const auto& file,
                        const auto& expected) {
        failures += 0 < playThroughFault(delivery, file, expected, [&] {
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
    const auto sounds = sampleSounds();
    forEachDelivery(
        [&](const auto& sound, const auto& delivery, const auto& file, const auto& expected) {
            for (const SampleSound& other : sounds) {
                overwrite(file.path(), sound.bytes);
                const auto decoder = openDecoder(file.path());
                ASSERT_TRUE(decoder && apply(delivery, *decoder));
                overwrite(file.path(), (other.bytes + std::string(sound.bytes.size(), '\x55'))
                                           .substr(0, sound.bytes.size()));
                std::vector<float> samples;
                play(*decoder, samples, 100);
                decoder->getMetaData();
                decoder->seek(decoder->getDuration() / 2);
                play(*decoder, samples, 1000);
                decoder->seek(0);
                samples.clear();
                play(*decoder, samples);
                EXPECT_LE(samples.size(), expected.size());
            }
        });
}

}  // namespace
}  // namespace atdp::test
