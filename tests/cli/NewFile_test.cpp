// A result in a file: whole or not at all.
#include "cli/NewFile.h"

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/Command.h"
#include "support/Sandbox.h"
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
    EXPECT_EQ(entries(folder), 0U);
}

/// Makes one system call fail like this from here on.
void failSystemCall(unsigned int number, unsigned int reason) {
    sock_filter rules[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<unsigned int>(offsetof(seccomp_data, nr))),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | reason),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    sock_fprog filter{static_cast<unsigned short>(std::size(rules)), rules};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0)
        throw std::runtime_error("cannot filter system calls");
}

// As a FAT file system has no links, and a network file system may not have the other way.
TEST(NewFile, needsOnlyOneOfTwoWaysNotToReplace) {
    struct Lack {
        unsigned int number;
        unsigned int reason;
    };
    std::vector<Lack> lacks = {{SYS_linkat, EPERM}, {SYS_renameat2, EINVAL}};
#ifdef SYS_link
    lacks.push_back({SYS_link, EPERM});
#endif
    for (const Lack& lack : lacks) {
        const TempDir folder;
        const auto result = thermika_test::runInProcess([&] {
            failSystemCall(lack.number, lack.reason);
            const bool isWritten = problemOf(folder / "file", false).empty();
            return isWritten && !problemOf(folder / "file", false).empty() ? 0 : 1;
        });
        EXPECT_EQ(result, (thermika_test::RunResult{"", "", 0})) << lack.number;
        EXPECT_EQ(readFile(folder / "file"), "new");
        EXPECT_EQ(entries(folder), 1U);
    }
}

TEST(NewFile, takesNoPlaceOfADirectoryOrADevice) {
    const TempDir folder;
    fs::create_directory(folder / "dir");
    fs::create_symlink("/dev/null", folder / "link");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    for (const char* const name : {"dir", "dir/", "link", "pipe"})
        for (const bool mayReplace : {false, true})
            EXPECT_EQ(problemOf(folder / name, mayReplace),
                      "cannot write " + (folder / name) +
                          ": it is no regular file (choose another name)");
    EXPECT_EQ(entries(folder), 3U);
    EXPECT_TRUE(fs::is_empty(folder / "dir"));
}

}  // namespace
