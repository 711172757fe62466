// `thermika fetch` itself, interrupted at any moment: whole old files, whole new files, and nothing
// that the next run does not remove.
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "fetch/FileName.h"
#include "support/CameraSet.h"
#include "support/Companion.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"

namespace {

using namespace thermika_test;
using std::chrono::microseconds;

// Fifty moments for each signal, in rounds that end in time on a busy machine too.
constexpr unsigned kRounds = 5;
constexpr int kMomentsOfARound = 10;

const std::vector<std::string> kFetchAll = {"fetch", "14080045", "-q", "--all"};

Files oldFiles() {
    Files files;
    for (const auto& [name, bytes] : cameraFiles())
        files[name] = name == kDescriptionName ? bytes : "old " + bytes;
    return files;
}

/// Sends the signal so long after the program was started.
RunResult fetchAndSend(int signal, microseconds moment) {
    return runCompanion(kFetchAll, [signal, moment] {
        const pid_t companion = getpid();
        if (fork() != 0) return;
        std::this_thread::sleep_for(moment);
        kill(companion, signal);
        _exit(0);
    });
}

/// Fails where a file is neither old nor new, or has no business there.
void expectWholeFiles(bool mayHaveParts) {
    Files former = oldFiles();
    Files fetched = cameraFiles();
    const Files found = contents(kCaliDir);
    for (const auto& [name, bytes] : found) {
        if (mayHaveParts && thermika::fetch::isPartName(name)) continue;
        EXPECT_TRUE(former.count(name) > 0 && (bytes == former[name] || bytes == fetched[name]))
            << name << ": " << bytes;
    }
    EXPECT_GE(found.size(), former.size());
}

void interruptAtMoments(int signal, int status, unsigned round) {
    inSandbox([=] {
        const DownloadSandbox sandbox;
        FileServer server;
        serveFiles(server, cameraFiles());
        std::filesystem::create_directories(kCaliDir);
        installFiles(oldFiles());
        const auto begin = std::chrono::steady_clock::now();
        ASSERT_EQ(runCompanion(kFetchAll).status, 0);
        const auto whole =
            std::chrono::duration_cast<microseconds>(std::chrono::steady_clock::now() - begin);
        std::mt19937 random(1408 + round);
        std::uniform_int_distribution<microseconds::rep> moment(0, whole.count());
        int interrupted = 0;
        for (int i = 0; interrupted < kMomentsOfARound && i < 50 * kMomentsOfARound; ++i) {
            installFiles(oldFiles());
            const RunResult result = fetchAndSend(signal, microseconds(moment(random)));
            expectWholeFiles(signal == SIGKILL);
            if (result.status == 0)
                EXPECT_EQ(contents(kCaliDir), cameraFiles());
            else  // before its handler was set, the signal ends it
                EXPECT_TRUE(result.status == status || result.status == 128 + signal) << result;
            interrupted += result.status == status ? 1 : 0;
        }
        EXPECT_EQ(interrupted, kMomentsOfARound);
        EXPECT_EQ(runCompanion(kFetchAll).status, 0);
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
    });
}

class FetchInterrupted : public testing::TestWithParam<unsigned> {};
INSTANTIATE_TEST_SUITE_P(AtAnyMoment, FetchInterrupted, testing::Range(0U, kRounds));

TEST_P(FetchInterrupted, byCtrlCLeavesWholeFilesOnly) { interruptAtMoments(SIGINT, 3, GetParam()); }

TEST_P(FetchInterrupted, byKillLeavesWholeFilesAndTheNextRunCleansUp) {
    interruptAtMoments(SIGKILL, 128 + SIGKILL, GetParam());
}

}  // namespace
