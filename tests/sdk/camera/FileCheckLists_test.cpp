// The list of missing files as callers hold it: its size, its bytes, and never one outside the
// buffer.
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "sdk/camera/FileCheck.h"
#include "support/TestFiles.h"

namespace {

using dax::MissingFiles;

constexpr int kMostBytes = std::numeric_limits<int>::max();

const MissingFiles kTwo{{"first", "the second"}, false};
const MissingFiles kMissingDescription{{"Cali-12345678.xml"}, true};

/// What is written to a block of exactly `bytes` bytes.
std::string written(const MissingFiles& missing, const char* separator, int size,
                    std::size_t bytes) {
    const std::unique_ptr<char[]> list(new char[bytes]);
    std::memset(list.get(), '?', bytes);
    dax::writeList(missing, separator, list.get(), size);
    return {list.get(), bytes};
}

TEST(FileCheckLists, needNothingWhenNothingIsMissing) {
    EXPECT_EQ(dax::listBytes({}), 0);
    EXPECT_EQ(written({}, ";", 5, 6), std::string("\0?????", 6));
}

TEST(FileCheckLists, needEveryNameItsEndAndOneTerminator) {
    EXPECT_EQ(dax::listBytes(kTwo), 6 + 11 + 1);
    EXPECT_EQ(written(kTwo, " | ", 18, 18), std::string("first;the second;\0", 18));
    EXPECT_EQ(dax::listBytes({{"", ""}, false}), 3);
}

TEST(FileCheckLists, boundEachNameByTheWholeSizeAndNotByTheRoomLeft) {
    EXPECT_EQ(written(kTwo, ";", 6, 14), std::string("first;the se;\0", 14));
    EXPECT_EQ(written(kMissingDescription, ";", 10, 12), std::string("Cali-12345;\0", 12));
    EXPECT_EQ(written(kMissingDescription, " and ", 4, 9), std::string("Cali and\0", 9));
}

TEST(FileCheckLists, takeNothingOfANameWhenTheSizeIsNotPositive) {
    for (const int size : {0, -1, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(written(kTwo, ";", size, 2), std::string("\0?", 2));
        EXPECT_EQ(written(kMissingDescription, ";", size, 2), std::string("\0?", 2));
    }
}

TEST(FileCheckLists, needTheSeparatorsLengthMoreThanToldForADescription) {
    EXPECT_EQ(dax::listBytes(kMissingDescription), 18);
    EXPECT_EQ(written(kMissingDescription, ";", 18, 19), std::string("Cali-12345678.xml;\0", 19));
    EXPECT_EQ(written(kMissingDescription, "; ", 18, 20), std::string("Cali-12345678.xml; \0", 20));
    EXPECT_EQ(written(kMissingDescription, "", 18, 18), std::string("Cali-12345678.xml\0", 18));
    EXPECT_EQ(dax::listBytes({{""}, true}), 0);
}

// As a bounded copy does, which callers may rely on who look at bytes behind the list.
TEST(FileCheckLists, fillTheBytesBehindADescriptionWithZeros) {
    EXPECT_EQ(written(kMissingDescription, ";", 24, 26),
              "Cali-12345678.xml;" + std::string(6, '\0') + "??");
    EXPECT_EQ(written(kMissingDescription, "", 24, 26),
              "Cali-12345678.xml" + std::string(7, '\0') + "??");
}

/// Counts a missing file's name onto `size`.
int counted(int size, std::string name) {
    const thermika_test::TempDir dir;
    dax::recordFileIfMissing(dir.path().c_str(), name.c_str(), "%s", nullptr, &size);
    return size;
}

TEST(FileCheckLists, countOntoTheSizeGivenUpToTheLargestInt) {
    EXPECT_EQ(counted(5, "four"), 10);
    EXPECT_EQ(counted(kMostBytes - 5, "four"), kMostBytes);
    EXPECT_EQ(counted(kMostBytes - 4, "four"), kMostBytes);
    EXPECT_EQ(counted(kMostBytes, "four"), kMostBytes);
    EXPECT_EQ(counted(-5, "seven77"), 3);
    EXPECT_EQ(counted(std::numeric_limits<int>::min(), "four"),
              std::numeric_limits<int>::min() + 5);
}

TEST(FileCheckLists, takeNamesForBytes) {
    const thermika_test::TempDir dir;
    char list[32] = "one;";
    int size = 31;
    dax::recordFileIfMissing(dir.path().c_str(), "%s%n", "%s", list, &size);
    EXPECT_STREQ(list, "one;%s%n;");
    EXPECT_EQ(size, 31);
}

}  // namespace
