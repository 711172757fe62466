// The list of missing files: counting, appending, and never a byte outside the buffer.
#include "sdk/MissingFileList.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

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

TEST(MissingFileList, cutsAtEveryCapacityAndWritesNothingBehindIt) {
    const std::string full = "first;second;";
    for (std::size_t capacity = 0; capacity <= full.size() + 2; ++capacity) {
        int large = 1000;
        std::vector<char> watched(capacity + 1 + 16, '?');
        watched[0] = '\0';
        MissingFileList inWatched(watched.data(), &large, capacity);
        inWatched.add("first", ";");
        inWatched.add("second", ";");
        EXPECT_EQ(watched.data(), full.substr(0, capacity));
        EXPECT_EQ(std::string(watched.end() - 16, watched.end()), std::string(16, '?'));

        const std::unique_ptr<char[]> exact(new char[capacity + 1]);  // watched by sanitizers
        exact[0] = '\0';
        MissingFileList inExact(exact.get(), &large, capacity);
        inExact.add("first", ";");
        inExact.add("second", ";");
        EXPECT_EQ(exact.get(), full.substr(0, capacity));
    }
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

TEST(MissingFileList, leavesATextThatFillsItAsItIs) {
    char text[] = "full and more";
    int size = 100;
    MissingFileList list(text, &size, 4);
    list.add("name", ";");
    EXPECT_STREQ(text, "full and more");
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
