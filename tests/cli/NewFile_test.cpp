// A result in a file: whole or not at all.
#include "cli/NewFile.h"

#include <sys/stat.h>

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "cli/Command.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using thermika::cli::Problem;
using thermika::cli::writeNewFile;
using thermika_test::readFile;
using thermika_test::TempDir;
using thermika_test::writeFile;

/// "" when it was written.
std::string problemOf(const std::string& path, bool mayReplace) {
    try {
        writeNewFile(path, "new", mayReplace);
        return "";
    } catch (const Problem& problem) {
        return problem.what();
    }
}

std::size_t entries(const TempDir& folder) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()));
}

TEST(NewFile, isWrittenWithTheUsualMode) {
    const TempDir folder;
    const mode_t before = umask(027);
    EXPECT_EQ(problemOf(folder / "file", false), "");
    umask(before);
    EXPECT_EQ(readFile(folder / "file"), "new");
    EXPECT_EQ(fs::status(folder / "file").permissions(), fs::perms(0640));
    EXPECT_EQ(entries(folder), 1U);
}

TEST(NewFile, replacesAFileOnlyWhenToldTo) {
    const TempDir folder;
    writeFile(folder / "file", "old");
    EXPECT_EQ(problemOf(folder / "file", false),
              "cannot write " + (folder / "file") + ": File exists (--force replaces it)");
    EXPECT_EQ(readFile(folder / "file"), "old");
    EXPECT_EQ(entries(folder), 1U);
    EXPECT_EQ(problemOf(folder / "file", true), "");
    EXPECT_EQ(readFile(folder / "file"), "new");
    EXPECT_EQ(entries(folder), 1U);
}

TEST(NewFile, replacesALinkNotWhatItLeadsTo) {
    const TempDir folder;
    writeFile(folder / "victim", "old");
    fs::create_symlink("victim", folder / "file");
    EXPECT_NE(problemOf(folder / "file", false), "");
    EXPECT_EQ(problemOf(folder / "file", true), "");
    EXPECT_EQ(readFile(folder / "victim"), "old");
    EXPECT_FALSE(fs::is_symlink(folder / "file"));
}

TEST(NewFile, leavesNothingWhereItCannotBeWritten) {
    const TempDir folder;
    EXPECT_EQ(
        problemOf(folder / "none/file", false),
        "cannot write " + (folder / "none/file") +
            ": No such file or directory (is there such a directory, and may you write to it?)");
    fs::create_directory(folder / "dir");
    EXPECT_EQ(problemOf(folder / "dir", false),
              "cannot write " + (folder / "dir") + ": File exists (choose another name)");
    EXPECT_EQ(problemOf(folder / "dir", true),
              "cannot write " + (folder / "dir") + ": Is a directory (choose another name)");
    EXPECT_EQ(entries(folder), 1U);
}

}  // namespace
