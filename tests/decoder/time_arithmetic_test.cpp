#include "decoder/time_arithmetic.h"

#include <gtest/gtest.h>

#include <cmath>

namespace atdp {
namespace {

constexpr std::uint64_t kOutOfRange = ~std::uint64_t{0};

TEST(TimeArithmetic, QuotientsOutOfRangeGiveTheGreatestNumber) {
    const float notANumber = std::nanf("");
    EXPECT_EQ(truncatedToUint64(notANumber), kOutOfRange);
    EXPECT_EQ(truncatedToUint64(HUGE_VALF), kOutOfRange);
    EXPECT_EQ(truncatedToUint64(-HUGE_VALF), kOutOfRange);
    EXPECT_EQ(truncatedToUint64(-1.0F), kOutOfRange);
    EXPECT_EQ(truncatedToUint64(18446744073709551616.0F), kOutOfRange);
    EXPECT_EQ(truncatedToUint64(18446742974197923840.0F), 18446742974197923840U);
    EXPECT_EQ(truncatedToUint64(-0.999F), 0U);
    EXPECT_EQ(truncatedToUint64(2.999), 2U);

    EXPECT_EQ(nanosecondsFromFrames(0, 0), kOutOfRange);
    EXPECT_EQ(nanosecondsFromFrames(1, 0), kOutOfRange);
    EXPECT_EQ(nanosecondsFromFrames(1, -1), kOutOfRange);
    EXPECT_EQ(framesFromNanoseconds(1, notANumber), kOutOfRange);
    EXPECT_EQ(framesFromNanoseconds(kOutOfRange, 2e9F), kOutOfRange);
    EXPECT_EQ(nanosecondsFromFrames(18'446'744'074, 1), 290'448'384U);  // the product wraps

    EXPECT_EQ(truncatedToInt32(std::nan("")), 0);
    EXPECT_EQ(truncatedToInt32(3e9), 2147483647);
    EXPECT_EQ(truncatedToInt32(-3e9), -2147483647 - 1);
    EXPECT_EQ(truncatedToInt32(2147483646.9), 2147483646);
    EXPECT_EQ(truncatedToInt32(-2147483647.9), -2147483647);
}

}  // namespace
}  // namespace atdp
