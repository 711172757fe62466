// Two processes that download into one directory at once. Nothing keeps them apart: one may take
// the other's links document away, so either may answer no. But both come to an end, and no file is
// half.
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "sdk/IRCalibrationManager.h"
#include "support/CameraSet.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"
#include "support/ProcessEnd.h"
#include "support/Sandbox.h"

namespace {

namespace fs = std::filesystem;
using thermika_test::cameraFiles;
using thermika_test::contents;
using thermika_test::Files;
using thermika_test::kCaliDir;
using thermika_test::kCamera;

constexpr int kRounds = 10;
constexpr int kEndedBadly = 4;  // statuses below tell the two answers

/// In processes of their own, none of which has loaded a description before.
bool downloadSucceeds() {
    return dax::IRCalibrationManager::getInstance()->downloadCalibration(kCamera);
}

/// 1 when a process of its own says yes.
int downloadAlone() {
    return thermika_test::runInProcess([] { return downloadSucceeds() ? 1 : 0; }).status;
}

/// 1 when one process says yes, and 2 when the other does.
int downloadInTwoProcesses() {
    return thermika_test::runInProcess([] {
               const pid_t other = fork();
               if (other == 0) prctl(PR_SET_PDEATHSIG, SIGKILL);
               const int answer = downloadSucceeds() ? 1 : 0;
               if (other == 0) _exit(thermika_test::statusAtEnd(answer));
               int status = 0;
               waitpid(other, &status, 0);
               return WIFEXITED(status) ? answer + 2 * WEXITSTATUS(status) : kEndedBadly;
           })
        .status;
}

void empty(const std::string& dir) {
    for (const auto& entry : fs::directory_iterator(dir)) fs::remove_all(entry);
}

TEST(ConcurrentDownload, leavesNoHalfFileAndNothingElseWhenTwoProcessesDownloadAtOnce) {
    thermika_test::inSandbox([] {
        const thermika_test::DownloadSandbox world;
        thermika_test::FileServer server;
        thermika_test::serveFiles(server, cameraFiles());
        const Files whole = cameraFiles();
        for (int round = 0; round < kRounds; ++round) {
            empty(kCaliDir);
            empty("/tmp");
            EXPECT_LT(downloadInTwoProcesses(), kEndedBadly);
            for (const auto& [name, bytes] : contents(kCaliDir)) {
                ASSERT_EQ(whole.count(name), 1U) << name;
                EXPECT_EQ(bytes, whole.at(name)) << name;
            }
            EXPECT_EQ(downloadAlone(), 1);
            EXPECT_EQ(contents(kCaliDir), whole);
        }
    });
}

}  // namespace
