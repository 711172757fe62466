// Whether the host has a default route, by real routing tables in networks of the tests' own.
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "sdk/IRCalibrationManager.h"
#include "support/DownloadSandbox.h"
#include "support/Recorder.h"
#include "support/Sandbox.h"

namespace {

using namespace thermika_test;

bool isAccessible() {
    return dax::IRCalibrationManager::getInstance()->isOnlineCalibrationRepoAccessible();
}

/// Adds a route, in ip's words.
void addRoute(const Texts& words) {
    Texts argv = {"ip"};
    argv.insert(argv.end(), words.begin(), words.end());
    ASSERT_EQ(run("ip", argv), (RunResult{"", "", 0}));
}

const Outcome kYes{true, ""};
const Outcome kNo{false, ""};

TEST(RouteCheck, saysNoWithoutARoute) {
    inSandbox([] {
        const DownloadSandbox world;
        EXPECT_EQ(outcomeOf(isAccessible), kNo);
    });
}

TEST(RouteCheck, saysYesWithADefaultRoute) {
    inSandbox([] {
        const DownloadSandbox world;
        addRoute({"route", "add", "default", "dev", "lo"});
        EXPECT_EQ(outcomeOf(isAccessible), kYes);
    });
}

TEST(RouteCheck, saysYesWithTwoDefaultRoutes) {
    inSandbox([] {
        const DownloadSandbox world;
        addRoute({"route", "add", "default", "dev", "lo", "metric", "1"});
        addRoute({"route", "add", "default", "via", "127.0.0.2", "dev", "lo", "metric", "2"});
        EXPECT_EQ(outcomeOf(isAccessible), kYes);
    });
}

TEST(RouteCheck, saysNoAgainOnceTheRouteIsGone) {
    inSandbox([] {
        const DownloadSandbox world;
        addRoute({"route", "add", "default", "dev", "lo"});
        EXPECT_EQ(outcomeOf(isAccessible), kYes);
        addRoute({"route", "del", "default"});
        EXPECT_EQ(outcomeOf(isAccessible), kNo);
    });
}

TEST(RouteCheck, countsRoutesToHalfTheWorldToo) {
    // As some private networks set them: the destination begins with 0.0.0.0 all the same.
    inSandbox([] {
        const DownloadSandbox world;
        addRoute({"route", "add", "0.0.0.0/1", "dev", "lo"});
        EXPECT_EQ(outcomeOf(isAccessible), kYes);
    });
}

TEST(RouteCheck, saysNoWithRoutesToOtherNetworks) {
    inSandbox([] {
        const DownloadSandbox world;
        // Their lines hold 0.0.0.0 too, as the gateway and behind another digit.
        addRoute({"route", "add", "10.0.0.0/8", "dev", "lo"});
        addRoute({"route", "add", "192.0.2.0/24", "dev", "lo"});
        EXPECT_EQ(outcomeOf(isAccessible), kNo);
    });
}

TEST(RouteCheck, saysNoWithADefaultRouteOfTheOtherFamilyOnly) {
    inSandbox([] {
        const DownloadSandbox world;
        addRoute({"-6", "route", "add", "default", "dev", "lo"});
        EXPECT_EQ(outcomeOf(isAccessible), kNo);
    });
}

TEST(RouteCheck, saysNoWithoutTheRouteProgram) {
    inSandbox([] {
        const DownloadSandbox world;
        addRoute({"route", "add", "default", "dev", "lo"});
        mountEmptyFolder("/usr/sbin");
        EXPECT_EQ(outcomeOf(isAccessible), (Outcome{false, "sh: 1: /sbin/route: not found\n"}));
    });
}

TEST(RouteCheck, saysNoWithoutGrep) {
    inSandbox([] {
        const DownloadSandbox world;
        addRoute({"route", "add", "default", "dev", "lo"});
        DownloadSandbox::hideAllPrograms();
        EXPECT_EQ(outcomeOf(isAccessible), (Outcome{false, "sh: 1: grep: not found\n"}));
    });
}

TEST(RouteCheck, givesTheShellAndGrepExactlyThis) {
    inSandbox([] {
        const DownloadSandbox world;
        recordShell();
        recordProgram("grep");
        isAccessible();
        EXPECT_EQ(shellTexts(), (Texts{"/sbin/route -n | grep -c '^0\\.0\\.0\\.0'"}));
        EXPECT_EQ(callsOf("grep"), (std::vector<Texts>{{"-c", "^0\\.0\\.0\\.0"}}));
    });
}

TEST(RouteCheck, takesTheFirstNumberThatComes) {
    const std::vector<std::pair<std::string, bool>> answers = {
        {"0", false}, {"1", true}, {"  7 routes", true}, {"0 1", false}, {"4294967295", true}};
    for (const auto& answer : answers) {
        SCOPED_TRACE(answer.first);
        inSandbox([&answer] {
            const DownloadSandbox world;
            recordProgram("grep", "echo '" + answer.first + "'");
            EXPECT_EQ(outcomeOf(isAccessible), answer.second ? kYes : kNo);
        });
    }
}

TEST(RouteCheck, saysNoWhenNoNumberComes) {
    for (const char* const action : {":", "echo many", "echo", "echo x1", "exit 2"}) {
        SCOPED_TRACE(action);
        inSandbox([action] {
            const DownloadSandbox world;
            recordProgram("grep", action);
            EXPECT_EQ(outcomeOf(isAccessible), kNo);
        });
    }
}

/// The answer of a process that did `prepare` first, as its exit status.
RunResult answerAfter(const std::function<void()>& prepare) {
    return runInProcess([&prepare] {
        prepare();
        return isAccessible() ? 1 : 0;
    });
}

// A stream takes the interruption of a read for the end of what there is to read.
TEST(RouteCheck, readsOnWhenASignalInterruptsIt) {
    inSandbox([] {
        const DownloadSandbox world;
        struct sigaction action {};  // without SA_RESTART
        action.sa_handler = [](int) {};
        ASSERT_EQ(sigaction(SIGUSR1, &action, nullptr), 0);
        recordProgram("grep", "for i in 1 2 3; do sleep 0.1; kill -USR1 " +
                                  std::to_string(getpid()) + "; done; sleep 0.1; echo 1");
        EXPECT_EQ(outcomeOf(isAccessible), kYes);
    });
}

TEST(RouteCheck, flushesStandardOutputBeforeTheCommand) {
    inSandbox([] {
        const DownloadSandbox world;
        recordProgram("grep", "cat >&2; echo 0");
        mountEmptyFolder("/usr/sbin");
        const RunResult result = runInProcess([] {
            std::printf("before\n");
            dup2(STDOUT_FILENO, STDERR_FILENO);
            isAccessible();
            std::printf("after\n");
            return 0;
        });
        EXPECT_EQ(result.out, "before\nsh: 1: /sbin/route: not found\nafter\n");
    });
}

TEST(RouteCheck, saysNoWhenThePipelineCannotBeStarted) {
    inSandbox([] {
        const DownloadSandbox world;
        addRoute({"route", "add", "default", "dev", "lo"});
        EXPECT_EQ(answerAfter([] {}), (RunResult{"", "", 1}));
        EXPECT_EQ(answerAfter(forbidNewDescriptors), (RunResult{"", "", 0}));
        EXPECT_EQ(answerAfter(forbidNewProcesses), (RunResult{"", "", 0}));
    });
}

TEST(RouteCheck, keepsNoPipeOpenAndNoProcessUnwaitedFor) {
    inSandbox([] {
        const DownloadSandbox world;
        const int before = dup(STDIN_FILENO);
        close(before);
        isAccessible();
        const int after = dup(STDIN_FILENO);
        close(after);
        EXPECT_EQ(after, before);
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    });
}

}  // namespace
