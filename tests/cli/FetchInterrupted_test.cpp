// `thermika fetch` itself, interrupted at any moment: whole old files, whole new files, and nothing
// that the next run does not remove.
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "fetch/FileName.h"
#include "support/CameraSet.h"
#include "support/Companion.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"
#include "support/Moments.h"

namespace {

using namespace thermika_test;
using std::chrono::microseconds;

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

void interruptFetching(int signal, int status, unsigned round) {
    inSandbox([=] {
        const DownloadSandbox sandbox;
        FileServer server;
        serveFiles(server, cameraFiles());
        std::filesystem::create_directories(kCaliDir);
        installFiles(oldFiles());
        const auto begin = std::chrono::steady_clock::now();
        ASSERT_EQ(runCompanion(kFetchAll).status, 0);
        const auto whole = std::chrono::steady_clock::now() - begin;
        interruptAtMoments(whole, round, [=](microseconds moment) {
            std::filesystem::remove_all(kCaliDir);
            std::filesystem::create_directory(kCaliDir);
            installFiles(oldFiles());
            const RunResult result = fetchAndSend(signal, moment);
            expectWholeFiles(signal == SIGKILL);
            if (result.status == 0) {
                EXPECT_EQ(contents(kCaliDir), cameraFiles());
                return Came::kTooLate;
            }
            // Who is killed says nothing: it had begun when it has left something.
            const bool hasBegun = signal != SIGKILL || contents(kCaliDir) != oldFiles();
            if (result.status == status) return hasBegun ? Came::kInTime : Came::kTooEarly;
            EXPECT_EQ(result.status, 128 + signal) << result;  // its handler was not set yet
            return Came::kTooEarly;
        });
        EXPECT_EQ(runCompanion(kFetchAll).status, 0);
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
    });
}

class FetchInterrupted : public testing::TestWithParam<unsigned> {};
INSTANTIATE_TEST_SUITE_P(AtAnyMoment, FetchInterrupted, testing::Range(0U, kRounds));

TEST_P(FetchInterrupted, byCtrlCLeavesWholeFilesOnly) { interruptFetching(SIGINT, 3, GetParam()); }

TEST_P(FetchInterrupted, byKillLeavesWholeFilesAndTheNextRunCleansUp) {
    interruptFetching(SIGKILL, 128 + SIGKILL, GetParam());
}

}  // namespace
