// The stem that a range's calibration files share.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

#include "imgproc/Cali.h"
#include "support/CaliDescriptions.h"
#include "support/ProcessState.h"
#include "support/SpecialFloats.h"

namespace thermika_test {
namespace {

/// Both forms must compose alike.
std::string stem(int serial, int fov, const char* text, float min, float max, unsigned short rate) {
    char byBounds[512];
    char byRange[512];
    Range range{min, max};
    EXPECT_TRUE(ConfigCali::caliFilenameString(serial, fov, asText(text), min, max, rate, byBounds,
                                               sizeof byBounds));
    EXPECT_TRUE(ConfigCali::caliFilenameString(serial, fov, asText(text), &range, rate, byRange,
                                               sizeof byRange));
    EXPECT_STREQ(byBounds, byRange);
    return byBounds;
}

std::string bounds(float min, float max) { return stem(1, 2, nullptr, min, max, 0).substr(4); }

TEST(CaliNames, composesSerialOpticsBoundsAndRate) {
    EXPECT_EQ(stem(12345678, 30, nullptr, -20.0F, 100.0F, 0), "12345678-30-M20-100");
    EXPECT_EQ(stem(12345678, 30, "", 0.0F, 250.0F, 32), "12345678-30-0-250-32");
    EXPECT_EQ(stem(12345678, 60, "HT", 150.0F, 900.0F, 0), "12345678-60-HT-150-900");
    EXPECT_EQ(stem(12345678, 90, nullptr, -20.7F, 100.9F, 27), "12345678-90-M20-100-27");
    EXPECT_EQ(stem(12345678, 30, nullptr, -0.5F, 50.0F, 0), "12345678-30-M0-50");
    EXPECT_EQ(stem(1, 2, "T", -1.0F, -2.0F, 3), "1-2-T-M1-M2-3");
}

// Deliberate: the sign is that of the bound, the number is cut.
TEST(CaliNames, givesABoundThatIsCutToZeroItsSign) {
    EXPECT_EQ(bounds(-0.5F, -0.999F), "M0-M0");
    EXPECT_EQ(bounds(-1e-30F, 0.999F), "M0-0");
    EXPECT_EQ(bounds(-0.0F, 0.0F), "0-0") << "not below zero";
    EXPECT_EQ(bounds(-1.0F, -1.999F), "M1-M1");
}

TEST(CaliNames, writesWholeBoundsInFull) {
    EXPECT_EQ(bounds(-100.0F, 1000000.0F), "M100-1000000");
    EXPECT_EQ(bounds(-16777216.0F, 16777215.0F), "M16777216-16777215");
    EXPECT_EQ(bounds(2147483520.0F, -2147483520.0F), "2147483520-M2147483520");
}

TEST(CaliNames, saturatesBoundsThatNoIntHolds) {
    EXPECT_EQ(bounds(-1e30F, 1e30F), "M2147483647-2147483647");
    EXPECT_EQ(bounds(-2147483648.0F, 2147483648.0F), "M2147483647-2147483647");
    EXPECT_EQ(bounds(-kInfinity, kInfinity), "M2147483647-2147483647");
    EXPECT_EQ(bounds(kNaN, -kNaN), "0-0");
}

TEST(CaliNames, writesAnySerialFieldOfViewAndRate) {
    EXPECT_EQ(stem(INT_MIN, INT_MAX, nullptr, 1.0F, 2.0F, 65535),
              "-2147483648-2147483647-1-2-65535");
    EXPECT_EQ(stem(0, -1, nullptr, 1.0F, 2.0F, 1), "0--1-1-2-1");
}

TEST(CaliNames, takesTheTextAsItStands) {
    EXPECT_EQ(stem(1, 2, " a-b/%s\n", 3.0F, 4.0F, 0), "1-2- a-b/%s\n-3-4");
    const std::string longText(400, 'x');
    EXPECT_EQ(stem(1, 2, longText.c_str(), 3.0F, 4.0F, 5), "1-2-" + longText + "-3-4-5");
}

TEST(CaliNames, cutsToTheSizeAndTerminates) {
    const std::string whole = "1-2-T-M3-4-5";
    for (int size = 1; size <= static_cast<int>(whole.size()) + 2; ++size) {
        char out[32];
        std::memset(out, '#', sizeof out);
        EXPECT_TRUE(ConfigCali::caliFilenameString(1, 2, asText("T"), -3.0F, 4.0F, 5, out, size));
        EXPECT_EQ(out, whole.substr(0, static_cast<std::size_t>(size) - 1));
        EXPECT_EQ(std::string(out + size, out + sizeof out),
                  std::string(sizeof out - static_cast<std::size_t>(size), '#'));
    }
}

TEST(CaliNames, writesNothingWithoutRoom) {
    for (const int size : {0, -1, INT_MIN}) {
        char out[4] = "###";
        Range range{-3.0F, 4.0F};
        EXPECT_TRUE(ConfigCali::caliFilenameString(1, 2, nullptr, -3.0F, 4.0F, 5, out, size));
        EXPECT_TRUE(ConfigCali::caliFilenameString(1, 2, nullptr, &range, 5, out, size));
        EXPECT_STREQ(out, "###") << size;
    }
    EXPECT_TRUE(ConfigCali::caliFilenameString(1, 2, nullptr, -3.0F, 4.0F, 5, nullptr, 0));
}

TEST(CaliNames, refusesToComposeWithoutARange) {
    char out[32] = "untouched";
    EXPECT_FALSE(ConfigCali::caliFilenameString(1, 2, nullptr, nullptr, 0, out, sizeof out));
    EXPECT_STREQ(out, "untouched");
}

TEST(CaliNames, followsNoLocale) {
    const ScopedLocale comma({{LC_ALL, kDecimalCommaLocale}});
    EXPECT_EQ(bounds(-1234567.5F, 1000000.0F), "M1234567-1000000");
    EXPECT_EQ(numericLocale(), kDecimalCommaLocale) << "and changes none";
}

}  // namespace
}  // namespace thermika_test
