// The line that shows how far a fetch is.
#include "cli/FetchProgress.h"

#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;
using thermika::cli::bytesText;
using thermika::cli::progressLine;
using thermika::fetch::Progress;

Progress progress(std::size_t done, std::size_t files, std::uint64_t bytes) {
    Progress result;
    result.files = files;
    result.filesDone = done;
    result.bytes = bytes;
    return result;
}

TEST(FetchProgress, showsBytesInTheUnitThatFits) {
    EXPECT_EQ(bytesText(0), "0 B");
    EXPECT_EQ(bytesText(1023), "1023 B");
    EXPECT_EQ(bytesText(1024), "1.0 KiB");
    EXPECT_EQ(bytesText(1024 * 1024 - 1), "1.0 MiB");
    EXPECT_EQ(bytesText(std::uint64_t{5} << 30), "5.0 GiB");
    EXPECT_EQ(bytesText(UINT64_MAX), "16777216.0 TiB");
}

TEST(FetchProgress, showsFilesBytesRateAndTimeLeft) {
    EXPECT_EQ(progressLine(progress(10, 40, 2 << 20), milliseconds(2000), 80),
              "10 of 40 files, 2.0 MiB, 1.0 MiB/s, 0:06 left");
    EXPECT_EQ(progressLine(progress(1, 1001, 1024), milliseconds(1000), 80),
              "1 of 1001 files, 1.0 KiB, 1.0 KiB/s, 16:40 left");
}

TEST(FetchProgress, waitsWithWhatWouldJumpAbout) {
    EXPECT_EQ(progressLine(progress(1, 40, 512), milliseconds(200), 80), "1 of 40 files, 512 B");
    EXPECT_EQ(progressLine(progress(0, 40, 512), milliseconds(1000), 80),
              "0 of 40 files, 512 B, 512 B/s");
}

TEST(FetchProgress, isCutToTheTerminal) {
    EXPECT_EQ(progressLine(progress(10, 40, 512), milliseconds(0), 11), "10 of 40 fi");
}

}  // namespace
