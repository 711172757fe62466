// Which directory stands for the one that a caller names.
#include "sdk/base/CaliDirectory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/ProcessState.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using dax::caliDirectory;
using thermika_test::TempDir;

/// Works in a folder of its own.
class CaliDirectory : public testing::Test {
protected:
    const std::string& folder() const { return m_folder.path(); }

private:
    const TempDir m_folder;
    const thermika_test::WorkingDirectory m_here{m_folder.path()};
};

TEST_F(CaliDirectory, isTheOneNamed) {
    EXPECT_EQ(caliDirectory("/some/where", 260), "/some/where");
    EXPECT_EQ(caliDirectory("relative/", 260), "relative/");
    EXPECT_EQ(caliDirectory(" ", 260), " ");
}

TEST_F(CaliDirectory, isTheOneNamedHoweverLong) {
    const std::string longer(300, 'd');
    EXPECT_EQ(caliDirectory(longer.c_str(), 260), longer);
    EXPECT_EQ(caliDirectory("d", 0), "d");
}

TEST_F(CaliDirectory, isImagerBelowTheWorkingDirectoryWhenNoneIsNamed) {
    EXPECT_EQ(caliDirectory("", 260), folder() + "/Imager");
    EXPECT_FALSE(fs::exists(folder() + "/Imager"));
}

TEST_F(CaliDirectory, cutsItsOwnNameAndNoOther) {
    EXPECT_EQ(caliDirectory("", 260, 2), folder() + "/Im");
    EXPECT_EQ(caliDirectory("", 260, 6), folder() + "/Imager");
    EXPECT_EQ(caliDirectory("", 260, 0), folder() + "/");
    EXPECT_EQ(caliDirectory("named", 260, 2), "named");
}

TEST_F(CaliDirectory, keepsTheSlashOfTheRootDirectory) {
    fs::current_path("/");
    EXPECT_EQ(caliDirectory("", 260), "//Imager");
}

TEST_F(CaliDirectory, needsBytesForTheWorkingDirectoryAndItsTerminator) {
    const std::size_t exact = folder().size() + 1;
    EXPECT_EQ(caliDirectory("", exact), folder() + "/Imager");
    EXPECT_EQ(caliDirectory("", exact - 1), std::nullopt);
    EXPECT_EQ(caliDirectory("", 1), std::nullopt);
    EXPECT_EQ(caliDirectory("", 0), std::nullopt);
}

TEST_F(CaliDirectory, isNothingWhenTheWorkingDirectoryIsGone) {
    fs::create_directory(folder() + "/gone");
    fs::current_path(folder() + "/gone");
    fs::remove(folder() + "/gone");
    EXPECT_EQ(caliDirectory("", 260), std::nullopt);
    EXPECT_EQ(caliDirectory("named", 260), "named");
}

}  // namespace
