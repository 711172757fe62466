// What other users of the machine may have left in the place of the links document: none of it is
// read, opened or written to, and no command is run.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "sdk/IRCalibrationManager.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"
#include "support/ProcessState.h"
#include "support/Recorder.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using namespace thermika_test;

constexpr const char* kTarget = "/usr/share/world/target";
constexpr const char* kOthersFile = "/usr/share/others-file";
constexpr uid_t kOtherUser = 65534;
const Outcome kRefused{false, managerLine("ERROR", "Error reading /tmp/downloadlinks.xml")};

Outcome fetchOneFile() {
    return outcomeOf([] {
        std::string list = "a.dat;";
        return dax::IRCalibrationManager::downloadTarget(list.data(), kCameraSerial, kCaliDir);
    });
}

/// Nothing is run while `leave` has put something into the document's place.
void expectRefused(const std::function<void()>& leave) {
    const DownloadSandbox world;
    writeFile(kTarget, linksDocument());
    recordShell();
    leave();
    EXPECT_EQ(fetchOneFile(), kRefused);
    EXPECT_EQ(shellTexts(), Texts());
    EXPECT_EQ(readFile(kTarget), linksDocument());
    EXPECT_EQ(contents(kCaliDir), Files());
}

TEST(DownloadStrangers, fileIsNotRead) {
    // A sandbox has one user, so the file comes from outside.
    const TempDir dir;
    writeFile(dir / "file", linksDocument());
    const bool isRoot = geteuid() == 0;
    ASSERT_TRUE(!isRoot || chown((dir / "file").c_str(), kOtherUser, kOtherUser) == 0);
    // Root's file is a stranger's to everybody else.
    const std::string others = isRoot ? dir / "file" : std::string("/etc/passwd");
    inSandbox([&others] {
        writeFile(kOthersFile, "");
        ASSERT_EQ(mount(others.c_str(), kOthersFile, "none", MS_BIND, nullptr), 0);
        expectRefused([] {
            writeFile(kLinksFile, "");
            ASSERT_EQ(mount(kOthersFile, kLinksFile, "none", MS_BIND, nullptr), 0);
        });
    });
}

TEST(DownloadStrangers, linksAreNotFollowed) {
    inSandbox([] { expectRefused([] { fs::create_symlink(kTarget, kLinksFile); }); });
    inSandbox([] { expectRefused([] { fs::create_symlink("/nowhere", kLinksFile); }); });
}

TEST(DownloadStrangers, fileOfTwoNamesIsNotOverwritten) {
    inSandbox([] {
        expectRefused([] {
            writeFile("/tmp/other-name", "text");
            fs::create_hard_link("/tmp/other-name", kLinksFile);
        });
    });
}

TEST(DownloadStrangers, pipeIsNotWaitedFor) {
    inSandbox([] { expectRefused([] { ASSERT_EQ(mkfifo(kLinksFile, 0666), 0); }); });
}

TEST(DownloadStrangers, linkThatComesMeanwhileIsNotFollowed) {
    inSandbox([] {
        const DownloadSandbox world;
        writeFile(kTarget, linksDocument());
        recordProgram("wget", std::string("ln -s ") + kTarget + " " + kLinksFile);
        EXPECT_EQ(fetchOneFile(), kRefused);
        EXPECT_EQ(callsOf("wget").size(), 1U);
        EXPECT_TRUE(fs::is_symlink(kLinksFile));
    });
}

TEST(DownloadStrangers, fileLeavesTheNumericLocaleAtCAsAnyOther) {
    inSandbox([] {
        const DownloadSandbox world;
        const ScopedLocale locale({{LC_ALL, kDecimalCommaLocale}});
        fs::create_symlink(kTarget, kLinksFile);
        EXPECT_EQ(fetchOneFile(), kRefused);
        EXPECT_EQ(numericLocale(), "C");
    });
}

// What an earlier download left that could not be read.
TEST(DownloadStrangers, fileIsNotOurOwn) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument());
        server.add(serverPath(kCameraSerial, "a.dat"), "text");
        writeFile(kLinksFile, "from before");
        EXPECT_EQ(fetchOneFile(), (Outcome{true, ""}));
        EXPECT_EQ(contents(kCaliDir), (Files{{"a.dat", "text"}}));
    });
}

// wget would open the file that it fetches as its standard error, and write its own words there.
TEST(DownloadStrangers, wordsStayOutOfFilesWhereStandardOutputsAreClosed) {
    inSandbox([] {
        const DownloadSandbox world;
        DownloadSandbox::letWgetTalk();
        FileServer server;
        server.add(kLinksPath, linksDocument());
        server.add(serverPath(kCameraSerial, "a.dat"), "text");
        const std::vector<std::vector<int>> sets = {{2}, {1, 2}, {0, 2}, {0, 1, 2}};
        for (const std::vector<int>& closed : sets) {
            const RunResult result = runInProcess([&closed] {
                for (const int fd : closed) close(fd);
                std::string list = "a.dat;";
                return dax::IRCalibrationManager::downloadTarget(list.data(), kCameraSerial,
                                                                 kCaliDir)
                           ? 1
                           : 0;
            });
            EXPECT_EQ(result, (RunResult{"", "", 1}));
            EXPECT_EQ(contents(kCaliDir), (Files{{"a.dat", "text"}})) << closed.size();
        }
    });
}

}  // namespace
