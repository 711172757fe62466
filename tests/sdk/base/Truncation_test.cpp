// Cutting a temperature to a whole number, at and beyond the limits of int.
#include "sdk/base/Truncation.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

#include "support/SpecialFloats.h"

namespace thermika_test {
namespace {

TEST(Truncation, dropsTheFraction) {
    EXPECT_EQ(dax::truncateToInt(0.0F), 0);
    EXPECT_EQ(dax::truncateToInt(-0.0F), 0);
    EXPECT_EQ(dax::truncateToInt(0.999F), 0);
    EXPECT_EQ(dax::truncateToInt(-0.999F), 0);
    EXPECT_EQ(dax::truncateToInt(20.7F), 20);
    EXPECT_EQ(dax::truncateToInt(-20.7F), -20);
    EXPECT_EQ(dax::truncateToInt(std::numeric_limits<float>::denorm_min()), 0);
}

TEST(Truncation, keepsWhatAnIntHolds) {
    EXPECT_EQ(dax::truncateToInt(16777216.0F), 16777216);
    EXPECT_EQ(dax::truncateToInt(2147483520.0F), 2147483520) << "the last float below the limit";
    EXPECT_EQ(dax::truncateToInt(-2147483520.0F), -2147483520);
    EXPECT_EQ(dax::truncateToInt(-2147483648.0F), INT_MIN);
}

TEST(Truncation, givesTheNearestIntBeyondTheLimits) {
    for (const float above : {2147483648.0F, 1e30F, kInfinity})
        EXPECT_EQ(dax::truncateToInt(above), INT_MAX) << above;
    for (const float below : {std::nextafter(-2147483648.0F, -kInfinity), -1e30F, -kInfinity})
        EXPECT_EQ(dax::truncateToInt(below), INT_MIN) << below;
}

TEST(Truncation, givesZeroForNaN) {
    EXPECT_EQ(dax::truncateToInt(std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(dax::truncateToInt(-std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(dax::truncateToInt(std::numeric_limits<float>::signaling_NaN()), 0);
}

}  // namespace
}  // namespace thermika_test
