// The state of one file, which tells more than whether it can be opened.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "sdk/camera/FileCheck.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using dax::FileState;
using dax::fileStatus;
using thermika_test::TempDir;
using thermika_test::writeFile;

TEST(FileCheckStatus, isPresentWithItsSize) {
    const TempDir dir;
    writeFile(dir / "file", "12345");
    const dax::FileStatus status = fileStatus(dir / "file");
    EXPECT_EQ(status.state, FileState::kPresent);
    EXPECT_EQ(status.bytes, 5U);
    EXPECT_EQ(status.reason, 0);
}

TEST(FileCheckStatus, isMissingWhereNothingIsFound) {
    const TempDir dir;
    writeFile(dir / "file", "text");
    fs::create_symlink("nowhere", dir / "link");
    for (const char* const name : {"absent", "absent/inside", "file/inside", "link"}) {
        EXPECT_EQ(fileStatus(dir / name).state, FileState::kMissing) << name;
        EXPECT_EQ(fileStatus(dir / name).reason, 0) << name;
    }
}

TEST(FileCheckStatus, isEmptyWithoutAByte) {
    const TempDir dir;
    writeFile(dir / "file", "");
    EXPECT_EQ(fileStatus(dir / "file").state, FileState::kEmpty);
}

TEST(FileCheckStatus, isThatOfTheFileALinkLeadsTo) {
    const TempDir dir;
    writeFile(dir / "file", "text");
    fs::create_symlink("file", dir / "link");
    EXPECT_EQ(fileStatus(dir / "link").state, FileState::kPresent);
    EXPECT_EQ(fileStatus(dir / "link").bytes, 4U);
}

TEST(FileCheckStatus, isNotRegularForDirectoryPipeAndDevice) {
    const TempDir dir;
    ASSERT_EQ(mkfifo((dir / "pipe").c_str(), 0600), 0);
    for (const std::string& path : {dir.path(), dir / "pipe", std::string("/dev/null")})
        EXPECT_EQ(fileStatus(path).state, FileState::kNotRegular) << path;
}

TEST(FileCheckStatus, isUnreadableWithItsReason) {
    // Modes bind everybody in a sandbox.
    thermika_test::inSandbox([] {
        const TempDir dir;
        writeFile(dir / "file", "text");
        fs::permissions(dir / "file", fs::perms::none);
        EXPECT_EQ(fileStatus(dir / "file").state, FileState::kUnreadable);
        EXPECT_EQ(fileStatus(dir / "file").reason, EACCES);
        fs::create_symlink("loop", dir / "loop");
        EXPECT_EQ(fileStatus(dir / "loop").state, FileState::kUnreadable);
        EXPECT_EQ(fileStatus(dir / "loop").reason, ELOOP);
        fs::create_directory(dir / "closed");
        writeFile(dir / "closed/file", "text");
        fs::permissions(dir / "closed", fs::perms::none);
        EXPECT_EQ(fileStatus(dir / "closed/file").state, FileState::kUnreadable);
        EXPECT_EQ(fileStatus(dir / "closed/file").reason, EACCES);
        fs::permissions(dir / "closed", fs::perms::all);
    });
}

}  // namespace
