// The list of missing files: counting, appending, and never a byte outside the buffer.
#include "sdk/camera/MissingFileList.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using dax::MissingFileList;

constexpr int kMostBytes = std::numeric_limits<int>::max();

TEST(MissingFileList, countsNamesAndSeparatorsOntoTheSizeGiven) {
    int size = 5;
    MissingFileList list(nullptr, &size);
    list.add("four", ";");
    EXPECT_EQ(size, 10);
    list.add("", "");
    EXPECT_EQ(size, 10);
    list.add("three", " | ");
    EXPECT_EQ(size, 18);
}

TEST(MissingFileList, stopsCountingAtTheLargestInt) {
    int size = kMostBytes - 5;
    MissingFileList list(nullptr, &size);
    list.add("four", ";");
    EXPECT_EQ(size, kMostBytes);
    size = kMostBytes - 2;
    list.add("four", ";");
    EXPECT_EQ(size, kMostBytes);
    list.add("four", ";");
    EXPECT_EQ(size, kMostBytes);
}

TEST(MissingFileList, countsOnFromASizeBelowZero) {
    int size = -5;
    MissingFileList list(nullptr, &size);
    list.add("seven77", ";");
    EXPECT_EQ(size, 3);
    size = std::numeric_limits<int>::min();
    list.add("four", ";");
    EXPECT_EQ(size, std::numeric_limits<int>::min() + 5);
}

TEST(MissingFileList, appendsToTheTextThatIsThere) {
    char text[32] = "one;";
    int size = 31;
    MissingFileList list(text, &size);
    list.add("two", ";");
    EXPECT_STREQ(text, "one;two;");
    list.add("three", "|");
    EXPECT_STREQ(text, "one;two;three|");
    EXPECT_EQ(size, 31);
}

TEST(MissingFileList, takesNamesForBytes) {
    char text[32] = "";
    int size = 31;
    MissingFileList list(text, &size);
    list.add("%s%n", "%i");
    EXPECT_STREQ(text, "%s%n%i");
}

TEST(MissingFileList, growsATextByWholePiecesOnly) {
    std::string text;
    MissingFileList list(text);
    EXPECT_TRUE(list.isEmpty());
    list.addDescription("Cali-12345678.xml", "; ");
    EXPECT_FALSE(list.isEmpty());
    list.add("second", ";");
    list.end();
    EXPECT_EQ(text, "Cali-12345678.xml; second;");
}

TEST(MissingFileList, boundsEachPieceByTheWholeSizeAndNotByTheRoomLeft) {
    char text[64] = "";
    int size = 6;
    MissingFileList list(text, &size);
    list.add("first", ";");
    list.add("the second", "separator");
    EXPECT_STREQ(text, "first;the sesepara");
    EXPECT_EQ(size, 6);
}

TEST(MissingFileList, takesNothingOfAPieceWhenTheSizeIsNegative) {
    for (int size : {-1, std::numeric_limits<int>::min()}) {
        char text[] = {'\0', '?'};
        MissingFileList list(text, &size);
        list.add("name", ";");
        EXPECT_EQ(std::string(text, 2), std::string("\0?", 2));
    }
}

TEST(MissingFileList, countsOneByteForTheEndAndNoneThatNoIntHolds) {
    int size = 9;
    MissingFileList counted(nullptr, &size);
    counted.end();
    EXPECT_EQ(size, 10);
    size = kMostBytes;
    counted.end();
    EXPECT_EQ(size, kMostBytes);
    char text[16] = "one;";
    size = 15;
    MissingFileList filled(text, &size);
    filled.end();
    EXPECT_EQ(size, 15);
    EXPECT_STREQ(text, "one;");
}

TEST(MissingFileList, countsOneByteLessForADescriptionThanItsListTakes) {
    int size = 0;
    MissingFileList counted(nullptr, &size);
    EXPECT_TRUE(counted.isEmpty());
    counted.addDescription("Cali-12345678.xml", "; ");
    EXPECT_EQ(size, 18);
    EXPECT_FALSE(counted.isEmpty());
    size = 0;
    counted.addDescription("", ";");
    EXPECT_EQ(size, 0);

    char text[32] = "";
    size = 18;
    MissingFileList filled(text, &size);
    EXPECT_TRUE(filled.isEmpty());
    filled.addDescription("Cali-12345678.xml", "; ");
    EXPECT_STREQ(text, "Cali-12345678.xml;");
    EXPECT_FALSE(filled.isEmpty());
}

}  // namespace
