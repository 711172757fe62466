// `thermika fetch` with a server as its source: a real one, in a network of its own.
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/CameraSet.h"
#include "support/Companion.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"
#include "support/SilentServer.h"

namespace {

namespace fs = std::filesystem;
using thermika_test::cameraFiles;
using thermika_test::contents;
using thermika_test::DownloadSandbox;
using thermika_test::FileServer;
using thermika_test::inSandbox;
using thermika_test::kDescriptionName;
using thermika_test::kFirstData;
using thermika_test::runCompanion;
using thermika_test::RunResult;
using thermika_test::SilentServer;

TEST(FetchFromServer, bringsTheWholeSet) {
    inSandbox([] {
        const DownloadSandbox sandbox;
        FileServer server;
        thermika_test::serveFiles(server, cameraFiles());
        EXPECT_EQ(runCompanion({"fetch", "14080045", "-q"}),
                  (RunResult{"5 files fetched, 0 there already\n", "", 0}));
        EXPECT_EQ(contents(thermika_test::kCaliDir), cameraFiles());
    });
}

TEST(FetchFromServer, namesWhatTheServerLacksAndFetchesTheRest) {
    inSandbox([] {
        const DownloadSandbox sandbox;
        FileServer server;
        thermika_test::serveFiles(server, cameraFiles());
        server.setFault(thermika_test::onServer(kFirstData), "missing");
        const RunResult result = runCompanion({"fetch", "14080045", "-q"});
        EXPECT_EQ(result.status, 3);
        EXPECT_EQ(result.out, "4 files fetched, 0 there already\n");
        EXPECT_EQ(result.err.find("thermika: " + kFirstData + ": "), 0U) << result;
        EXPECT_NE(result.err.find("404"), std::string::npos) << result;
        auto expected = cameraFiles();
        expected.erase(kFirstData);
        EXPECT_EQ(contents(thermika_test::kCaliDir), expected);
    });
}

TEST(FetchFromServer, asksWhetherTheServerAnswersWhereItDoesNot) {
    inSandbox([] {
        const DownloadSandbox sandbox;
        for (const char* const option : {"-q", "--dry-run"}) {
            const RunResult silent = runCompanion({"fetch", "14080045", option, "--retries", "0"});
            EXPECT_EQ(silent.status, 3);
            EXPECT_NE(
                silent.err.find(" (does it answer? thermika online; another source: --from URL "
                                "or FOLDER)\n"),
                std::string::npos)
                << silent;
        }
        FileServer server;
        server.add(thermika_test::kLinksPath, "<DownloadLinks>\n</DownloadLinks>\n");
        const RunResult useless = runCompanion({"fetch", "14080045", "-q"});
        EXPECT_EQ(useless.status, 3);
        EXPECT_NE(useless.err.find(" (does it answer? thermika online; "), std::string::npos)
            << useless;
        EXPECT_EQ(contents(thermika_test::kCaliDir), thermika_test::Files());
    });
}

TEST(FetchFromServer, takesAMirrorOfTheSameLayout) {
    inSandbox([] {
        const DownloadSandbox sandbox;
        FileServer server;
        thermika_test::serveFiles(server, cameraFiles());
        EXPECT_EQ(runCompanion({"fetch", "14080045", "-q", "--from", "http://localhost/"}),
                  (RunResult{"5 files fetched, 0 there already\n", "", 0}));
        EXPECT_EQ(contents(thermika_test::kCaliDir), cameraFiles());
    });
}

constexpr std::uint16_t kPort = 8080;

RunResult fetchFromPort(std::vector<std::string> more) {
    more.insert(more.begin(), {"fetch", "14080045", "-q", "--from", "http://127.0.0.1:8080/"});
    return runCompanion(more);
}

TEST(FetchFromServer, triesAsOftenAsToldAndWaitsAsLongAsToldTo) {
    inSandbox([] {
        const DownloadSandbox sandbox;
        const SilentServer server(kPort);
        const RunResult result =
            fetchFromPort({"--json", "--jobs", "1", "--timeout", "1", "--retries", "1"});
        EXPECT_EQ(result.status, 3);
        EXPECT_NE(result.out.find(R"("tries": 2)"), std::string::npos) << result;
        EXPECT_EQ(server.connections(), 2);
        EXPECT_NE(result.err.find("(does it answer? thermika online --from "
                                  "http://127.0.0.1:8080/; another source: "),
                  std::string::npos)
            << result;
    });
}

TEST(FetchFromServer, saysThatItsTimeIsOver) {
    inSandbox([] {
        const DownloadSandbox sandbox;
        const SilentServer server(kPort);
        EXPECT_EQ(fetchFromPort({"--max-time", "1"}),
                  (RunResult{"0 files fetched, 0 there already\n",
                             "thermika: 1 file not tried: the time limit of 1 s is over (run it "
                             "again to go on; more time: --max-time SECONDS)\n",
                             3}));
    });
}

TEST(FetchFromServer, hasAsManyTransfersAtATimeAsToldTo) {
    inSandbox([] {
        const DownloadSandbox sandbox;
        const SilentServer server(kPort);
        fs::create_directories(thermika_test::kCaliDir);
        thermika_test::installFiles({{kDescriptionName, thermika_test::cameraDescription()}});
        for (const int jobs : {1, 3}) {
            EXPECT_EQ(fetchFromPort({"--max-time", "1", "--jobs", std::to_string(jobs)}).status, 3);
            EXPECT_EQ(server.connections(), jobs);
        }
    });
}

/// Sends the companion a signal while a file arrives. `prepare` runs just before the companion.
RunResult fetchAndSend(int signal, const std::function<void()>& prepare) {
    const DownloadSandbox sandbox;
    FileServer server;
    thermika_test::serveFiles(server, cameraFiles());
    server.setFault(thermika_test::onServer(kFirstData), "stall");
    const RunResult result = runCompanion({"fetch", "14080045", "-q", "--jobs", "1"}, [&] {
        prepare();
        // A process beside it that waits for the file to be half there.
        const pid_t companion = getpid();
        if (fork() != 0) return;
        for (int i = 0;
             i < 500 && !fs::exists(std::string(thermika_test::kCaliDir) + "/" + kDescriptionName);
             ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        kill(companion, signal);
        _exit(0);
    });
    for (const auto& [name, bytes] : contents(thermika_test::kCaliDir))
        EXPECT_EQ(bytes, cameraFiles()[name]) << name;
    return result;
}

void interrupt(int signal) {
    inSandbox([signal] {
        const RunResult result = fetchAndSend(signal, [] {});
        EXPECT_EQ(result.status, 3);
        EXPECT_NE(result.err.find("thermika: interrupted: "), std::string::npos) << result;
    });
}

TEST(FetchFromServer, endsCleanlyWhenInterrupted) { interrupt(SIGINT); }

TEST(FetchFromServer, endsCleanlyWhenTerminated) { interrupt(SIGTERM); }

TEST(FetchFromServer, endsCleanlyWhenItsTerminalIsClosed) { interrupt(SIGHUP); }

// As nohup starts it.
TEST(FetchFromServer, goesOnWhereTheSignalIsIgnoredByItsStarter) {
    inSandbox([] {
        EXPECT_EQ(fetchAndSend(SIGHUP, [] { ::signal(SIGHUP, SIG_IGN); }),
                  (RunResult{"5 files fetched, 0 there already\n", "", 0}));
    });
}

}  // namespace
