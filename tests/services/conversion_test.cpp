// Delivery at other rates and on other numbers of channels.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "services/convert/rate_ratio.h"
#include "tests/support/conversion.h"

namespace atdp::test {
namespace {

// Common ones, whole numbers with nothing in common, fractions.
constexpr std::pair<std::uint32_t, double> kRates[] = {
    {44100, 48000}, {96000, 44100},          {88200, 44100},          {8000, 192000},
    {44100, 44101}, {48000, 48000.01171875}, {11025, 22254.544921875}};

// So many that there is a joint between two segments.
std::size_t framesFor(double in, double out) {
    return static_cast<std::size_t>(140'000 * std::max(1.0, in / out));
}

TEST(RateConversion, GivesTheSameFramesFromAnywhereOn) {
    for (const auto& [in, out] : kRates) {
        SCOPED_TRACE(std::to_string(in) + " to " + std::to_string(out));
        const TemporaryFile file(waveOf(noise(framesFor(in, out)), in).bytes());
        auto reader = readerOf(file);
        ASSERT_EQ(deliverAt(reader, out, 1), noErr);
        const auto straight = readAll(reader);
        ASSERT_EQ(straight.size(),
                  std::llround(static_cast<double>(framesFor(in, out)) * out / in));

        std::mt19937_64 random(2);
        std::vector<std::size_t> targets = {0, 1, straight.size() - 1, straight.size() / 2};
        for (int i = 0; i < 20; ++i) targets.push_back(random() % straight.size());
        for (const std::size_t target : targets) {
            ASSERT_EQ(reader.seek(static_cast<std::int64_t>(target)), noErr);
            const auto part = read(reader, 3000);
            ASSERT_EQ(part.size(), std::min<std::size_t>(3000, straight.size() - target));
            ASSERT_TRUE(std::equal(part.begin(), part.end(), straight.data() + target)) << target;
        }
        EXPECT_EQ(reader.seek(static_cast<std::int64_t>(straight.size())), noErr);
        EXPECT_TRUE(read(reader, 10).empty());
        EXPECT_EQ(reader.seek(std::numeric_limits<std::int64_t>::max()), noErr);
        EXPECT_TRUE(read(reader, 10).empty());
    }
}

// A slow sine, which a band-limited conversion must hit at every place. The ends of the file are
// edges of the sine and ring.
TEST(RateConversion, KeepsTimeAndLevel) {
    for (const auto& [in, out] : kRates) {
        SCOPED_TRACE(std::to_string(in) + " to " + std::to_string(out));
        const double frequency = std::min<double>(in, out) / 50;
        const auto sineAt = [frequency](double seconds) {
            return 0.5 * std::sin(2 * M_PI * frequency * seconds);
        };
        std::vector<float> samples(framesFor(in, out));
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] = static_cast<float>(sineAt(static_cast<double>(i) / in));
        const TemporaryFile file(waveOf(samples, in).bytes());
        auto reader = readerOf(file);
        ASSERT_EQ(deliverAt(reader, out, 1), noErr);
        const auto converted = readAll(reader);
        const auto edge = static_cast<std::size_t>(1000 * std::max(1.0, out / in));
        double worst = 0;
        for (std::size_t i = edge; i + edge < converted.size(); ++i)
            worst = std::max(worst, std::fabs(converted[i] - sineAt(static_cast<double>(i) / out)));
        EXPECT_LT(worst, 2e-7);
    }
}

TEST(RateConversion, RefusesWhatIsOutOfRangeAndPlaysOn) {
    const TemporaryFile file(waveOf(noise(3000), 44100).bytes());
    auto reader = readerOf(file);
    ASSERT_EQ(deliverAt(reader, 44100, 1), noErr);
    const auto straight = readAll(reader);
    reader.seek(1000);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double rate : {0.0, -44100.0, nan, infinity, -infinity, 999.9, 768000.1, 1e300})
        EXPECT_EQ(deliverAt(reader, rate, 1), kStatusUnsupportedFormat) << rate;
    for (const std::uint32_t channels : {0U, 65U, 0xFFFF'FFFFU})
        EXPECT_EQ(deliverAt(reader, 44100, channels), kStatusUnsupportedFormat) << channels;
    const auto rest = read(reader, 3000);
    EXPECT_TRUE(std::equal(rest.begin(), rest.end(), straight.begin() + 1000));
    for (const double rate : {1000.0, 768000.0, 44100.0}) {
        EXPECT_EQ(deliverAt(reader, rate, 64), noErr) << rate;
        EXPECT_EQ(deliverAt(reader, rate, 1), noErr) << rate;
    }
}

// A file may state any rate: its own is always delivered, others where a frame cannot cost seconds.
TEST(RateConversion, OfRatesFarApartIsRefused) {
    for (const auto& [in, out, status] :
         {std::tuple{0xFFFF'FFFFU, 768000.0, kStatusUnsupportedFormat},
          {0xFFFF'FFFFU, 4294967295.0, noErr},
          {768'000U, 1000.0, noErr},
          {1U, 1.0, noErr},
          {1U, 1024.0, noErr},
          {1U, 1025.0, kStatusUnsupportedFormat}}) {
        const TemporaryFile file(waveOf(noise(300), in).bytes());
        auto reader = readerOf(file);
        EXPECT_EQ(deliverAt(reader, out, 1), status) << in << " to " << out;
    }
}

TEST(RateConversion, ChangesInMidPlayKeepTheTime) {
    std::vector<float> samples(200'000);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<float>(i) / 200'000;
    const TemporaryFile file(waveOf(samples, 44100).bytes());
    auto reader = readerOf(file);
    ASSERT_EQ(deliverAt(reader, 44100, 1), noErr);
    read(reader, 44100);
    ASSERT_EQ(deliverAt(reader, 48000, 1), noErr);
    EXPECT_NEAR(read(reader, 48000)[0], samples[44100], 1e-6);
    ASSERT_EQ(deliverAt(reader, 48000, 2), noErr);
    const auto stereo = read(reader, 4800);
    EXPECT_NEAR(stereo[0], samples[2 * 44100], 1e-6);
    EXPECT_EQ(stereo[0], stereo[1]);
    ASSERT_EQ(deliverAt(reader, 44100, 1), noErr);
    EXPECT_EQ(read(reader, 1)[0], samples[2 * 44100 + 4410]);
}

TEST(RateRatio, IsInLowestTermsOrTheClosestThere) {
    const auto ratio = [](double in, double out) {
        const auto [i, o] = services::rateRatio(in, out, 1U << 24);
        return std::pair(i, o);
    };
    using Pair = std::pair<std::uint32_t, std::uint32_t>;
    EXPECT_EQ(ratio(44100, 48000), Pair(147, 160));
    EXPECT_EQ(ratio(192000, 1000), Pair(192, 1));
    EXPECT_EQ(ratio(44100, 44101), Pair(44100, 44101));
    EXPECT_EQ(ratio(767999, 768000), Pair(767999, 768000));
    EXPECT_EQ(ratio(244800.0 / 11, 44100), Pair(272, 539));  // an old computer's rate
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> rate(1000, 768000);
    for (int i = 0; i < 1000; ++i) {
        const double in = rate(random);
        const double out = rate(random);
        const auto [i24, o24] = ratio(in, out);
        EXPECT_NEAR(static_cast<double>(i24) / o24 * out / in, 1, 1e-10) << in << " " << out;
    }
}

using Levels = std::vector<int>;

TEST(ChannelMatrix, DealsSoundOut) {
    EXPECT_EQ(levels(0, 1, 3, 0), (Levels{1000, 1000, 1000}));
    EXPECT_EQ(levels(0, 2, 6, 1), (Levels{0, 1000, 0, 0, 0, 0}));
    EXPECT_EQ(levels(0, 2, 1, 0), (Levels{500}));
    // 5.1 to stereo and mono: left, center, low frequencies, left surround.
    EXPECT_EQ(levels(0, 6, 2, 0), (Levels{414, 0}));
    EXPECT_EQ(levels(0, 6, 2, 2), (Levels{293, 293}));
    EXPECT_EQ(levels(0, 6, 2, 3), (Levels{0, 0}));
    EXPECT_EQ(levels(0, 6, 2, 4), (Levels{293, 0}));
    EXPECT_EQ(levels(0, 6, 1, 0), (Levels{207}));
    EXPECT_EQ(levels(0, 6, 1, 2), (Levels{293}));
    // The same sound with its surrounds at the sides, and four channels with one in the back.
    EXPECT_EQ(levels(0x60F, 6, 2, 5), (Levels{0, 293}));
    EXPECT_EQ(levels(0x107, 4, 2, 3), (Levels{227, 227}));
    EXPECT_EQ(levels(0, 4, 2, 3), (Levels{0, 414}));
    EXPECT_EQ(levels(0, 8, 6, 7), (Levels{0, 0, 0, 0, 0, 414}));
}

TEST(ChannelMatrix, NeverClipsAndLosesNothingButLowFrequencies) {
    for (std::uint32_t in = 1; in <= 64; ++in)
        for (std::uint32_t out = 1; out <= 64; ++out)
            for (const std::uint32_t mask : {0U, 0x3FFFFU, 0x2D63FU, 0x8U, 0xFFFF'FFFFU}) {
                std::vector<double> sums(out);
                std::vector<bool> heard(in);
                for (const auto& term : services::channelGains(mask, in, out)) {
                    ASSERT_TRUE(term.in < in && term.out < out && term.gain > 0);
                    sums[term.out] += double{term.gain};
                    heard[term.in] = true;
                }
                for (const double sum : sums) ASSERT_LE(sum, 1 + 1e-6) << in << " " << out;
                ASSERT_LE(std::count(heard.begin(), heard.end(), false), 1) << in << " " << out;
            }
}

// The channel mask of a WAVE file is what the downmix goes by.
TEST(ChannelConversion, KnowsTheLayoutOfTheFile) {
    WaveBuilder builder;
    builder.channels = 3;
    builder.validBits = 16;
    builder.channelMask = 0xB;  // left, right, low frequencies
    for (int i = 0; i < 100; ++i)
        for (const int sample : {8192, 4096, 32767})
            builder.data += littleEndian(static_cast<std::uint16_t>(sample));
    const TemporaryFile file(builder.bytes());
    auto reader = readerOf(file);
    ASSERT_EQ(deliverAt(reader, 44100, 2), noErr);
    EXPECT_EQ(read(reader, 2), (std::vector<float>{0.25F, 0.125F, 0.25F, 0.125F}));
    ASSERT_EQ(deliverAt(reader, 44100, 5), noErr);
    EXPECT_EQ(read(reader, 1), (std::vector<float>{0.25F, 0.125F, 32767 / 32768.0F, 0, 0}));
    EXPECT_EQ(readAll(reader).size(), 97 * 5U);
}

}  // namespace
}  // namespace atdp::test
