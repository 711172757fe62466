// A result in a file: whole or not at all.
#include "cli/NewFile.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
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

/// Whatever was synced, in order.
std::vector<ino_t> g_synced;

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
            thermika_test::failSystemCall(lack.number, lack.reason);
            const bool isWritten = problemOf(folder / "file", false).empty();
            return isWritten && !problemOf(folder / "file", false).empty() ? 0 : 1;
        });
        EXPECT_EQ(result, (thermika_test::RunResult{"", "", 0})) << lack.number;
        EXPECT_EQ(readFile(folder / "file"), "new");
        EXPECT_EQ(entries(folder), 1U);
    }
}

// Without it, the new name may be gone after the power was.
TEST(NewFile, isSyncedWithItsDirectory) {
    const TempDir folder;
    struct stat directory {};
    ASSERT_EQ(stat(folder.path().c_str(), &directory), 0);
    g_synced.clear();
    EXPECT_EQ(problemOf(folder / "file", false), "");
    struct stat file {};
    ASSERT_EQ(stat((folder / "file").c_str(), &file), 0);
    EXPECT_EQ(g_synced, (std::vector<ino_t>{file.st_ino, directory.st_ino}));
    // A name without a directory is in the working directory.
    g_synced.clear();
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    EXPECT_EQ(problemOf("file", true), "");
    fs::current_path(before);
    ASSERT_EQ(g_synced.size(), 2U);
    EXPECT_EQ(g_synced.back(), directory.st_ino);
}

// What Ctrl-C left beside the file was removed by nobody.
TEST(NewFile, leavesNothingBesideItselfWhenInterrupted) {
    const TempDir folder;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        for (int round = 0; round < 10; ++round) {
            const pid_t child = fork();
            if (child == 0) {
                alarm(60);
                while (true) writeNewFile(folder / "file", std::string(1U << 20U, 'n'), true);
            }
            ASSERT_GT(child, 0);
            while (!fs::exists(folder / "file")) usleep(1000);
            usleep(static_cast<useconds_t>(500 * round));
            ASSERT_EQ(kill(child, signal), 0);
            int status = 0;
            ASSERT_EQ(waitpid(child, &status, 0), child);
            EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
            EXPECT_EQ(entries(folder), 1U);
            EXPECT_EQ(fs::file_size(folder / "file"), 1U << 20U);
        }
}

// As a process of this number left them that was killed, on a machine that was started anew since.
TEST(NewFile, passesByNamesThatAreTaken) {
    const TempDir folder;
    const std::string part = folder / ".thermika-new-" + std::to_string(getpid()) + "-";
    writeFile(part + "0.part", "somebody else's");
    EXPECT_EQ(problemOf(folder / "file", false), "");
    EXPECT_EQ(readFile(folder / "file"), "new");
    EXPECT_EQ(readFile(part + "0.part"), "somebody else's");
    fs::remove(folder / "file");
    for (int i = 1; i < 100; ++i) writeFile(part + std::to_string(i) + ".part", "somebody else's");
    EXPECT_EQ(problemOf(folder / "file", false)
                  .find("cannot write " + (folder / "file") + ": File exists"),
              0U);
    EXPECT_FALSE(fs::exists(folder / "file"));
}

// The temporary name was the final one and more.
TEST(NewFile, mayHaveTheLongestNameThereIs) {
    const TempDir folder;
    const std::string longest(255, 'n');
    EXPECT_EQ(problemOf(folder / longest, false), "");
    EXPECT_EQ(readFile(folder / longest), "new");
    EXPECT_EQ(problemOf(folder / (longest + "n"), false),
              "cannot write " + (folder / (longest + "n")) +
                  ": File name too long (choose another name)");
    EXPECT_EQ(entries(folder), 1U);
}

TEST(NewFile, leavesNothingWhereTheDiskGivesUp) {
    const TempDir folder;
    const auto result = thermika_test::runInProcess([&] {
        thermika_test::failSystemCall(SYS_fsync, EIO);
        return problemOf(folder / "file", false).find("Input/output error (is the disk full?)") !=
                       std::string::npos
                   ? 0
                   : 1;
    });
    EXPECT_EQ(result, (thermika_test::RunResult{"", "", 0}));
    EXPECT_EQ(entries(folder), 0U);
}

// Its directory may be written but not read.
TEST(NewFile, isWrittenWhereItsDirectoryCannotBeSynced) {
    thermika_test::inSandbox([] {
        const std::string folder = "/usr/share/folder";
        fs::create_directory(folder);
        fs::permissions(folder, fs::perms(0300));
        EXPECT_EQ(problemOf(folder + "/file", false), "");
        EXPECT_EQ(readFile(folder + "/file"), "new");
    });
}

TEST(NewFile, saysWhyItCannotTakeAFilesPlace) {
    thermika_test::inSandbox([] {
        const std::string file = "/usr/share/file";
        writeFile(file, "old");
        ASSERT_EQ(mount(file.c_str(), file.c_str(), nullptr, MS_BIND, nullptr), 0);
        EXPECT_EQ(problemOf(file, true),
                  "cannot write " + file + ": Device or resource busy (choose another name)");
        EXPECT_EQ(readFile(file), "old");
    });
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

// In place of the C library's; does the same and notes it.
extern "C" int fsync(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) == 0) g_synced.push_back(status.st_ino);
    return static_cast<int>(syscall(SYS_fsync, descriptor));
}
