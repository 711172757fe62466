// What can be read as a directory, and who closes it.
#include "fetch/DirectoryStream.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

#include <gtest/gtest.h>

#include "support/TestFiles.h"

namespace {

using namespace thermika_test;
using thermika::fetch::Descriptor;
using thermika::fetch::DirectoryStream;
using thermika::fetch::openStream;

TEST(DirectoryStream, readsADirectoryAndClosesIt) {
    const TempDir home;
    const std::size_t before = openDescriptors();
    {
        const DirectoryStream entries =
            openStream(Descriptor(open(home.path().c_str(), O_RDONLY | O_CLOEXEC)));
        ASSERT_NE(entries, nullptr);
        EXPECT_NE(readdir(entries.get()), nullptr);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(DirectoryStream, ofAFileIsNoneAndTheFileIsClosed) {
    const TempDir home;
    writeFile(home / "file", "bytes");
    const std::size_t before = openDescriptors();
    EXPECT_EQ(openStream(Descriptor(open((home / "file").c_str(), O_RDONLY | O_CLOEXEC))), nullptr);
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(DirectoryStream, ofNothingIsNoneAndKeepsErrno) {
    errno = EACCES;
    EXPECT_EQ(openStream(Descriptor()), nullptr);
    EXPECT_EQ(errno, EACCES);
}

}  // namespace
