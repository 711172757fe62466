// The view of the calibration data in order: keys, and the ranges that queries by key find.
#include "imgproc/internal/CaliView.h"

#include <gtest/gtest.h>

#include <string>

#include "support/CaliDescriptions.h"
#include "support/LogText.h"
#include "support/TestFiles.h"

namespace thermika_test {
namespace {

TEST(CaliView, showsTheBuiltInDescriptionBeforeAnyLoad) {
    ConfigCali cali;
    dax::CaliView view(cali);
    EXPECT_FALSE(view.hasEverLoaded());
    ASSERT_EQ(view.opticsCount(), 1U);
    EXPECT_EQ(view.keyAt(0).fov, 30);
    EXPECT_EQ(view.keyAt(0).text, nullptr);
    EXPECT_EQ(view.rangesByKeyOf(0).size(), 3U);
}

TEST(CaliView, showsTheRangesOfTheFirstOpticsWithTheSameKey) {
    LoadedCali cali(
        opticsList(opticsElement(30, "A", rangeElement("1", "2") + rangeElement("3", "4")) +
                   opticsElement(30, "", "") + opticsElement(30, "A", rangeElement("5", "6"))));
    dax::CaliView view(*cali);
    EXPECT_TRUE(view.hasEverLoaded());
    ASSERT_EQ(view.opticsCount(), 3U);
    for (const std::size_t index : {0U, 2U}) {
        OPTICS key = view.keyAt(index);
        EXPECT_EQ(key.fov, 30);
        EXPECT_STREQ(key.text, "A");
        ASSERT_EQ(view.rangesByKeyOf(index).size(), 2U);
        EXPECT_EQ(view.rangesByKeyOf(index)[1].TempLo, 3.0F);
        EXPECT_EQ(view.rangesByKeyOf(index)[1].TempHi, 4.0F);
        EXPECT_EQ(cali->getTempRangeCount(&key), 2);
    }
    EXPECT_TRUE(view.rangesByKeyOf(1).empty());
}

}  // namespace
}  // namespace thermika_test
