// The sandbox is trusted by every test that runs in it: whatever goes wrong there has to fail the
// test, and nothing may get out.
#include "support/Sandbox.h"
#include "support/ProcessEnd.h"

#include <net/if.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using thermika_test::inSandbox;
using thermika_test::run;
using thermika_test::runInProcess;
using thermika_test::RunResult;

/// A test's process whose only step is a sandbox with `body`: status 1 when that failed the test.
RunResult runAsTest(const std::function<void()>& body) {
    return runInProcess([&body] {
        inSandbox(body);
        return testing::Test::HasFailure() ? 1 : 0;
    });
}

void expectFailure(const std::function<void()>& body, const std::string& message) {
    const RunResult result = runAsTest(body);
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.out.find(message), std::string::npos) << result;
}

TEST(Sandbox, passesWhatHolds) {
    const RunResult result = runAsTest([] { EXPECT_TRUE(true); });
    EXPECT_EQ(result, (RunResult{"", "", 0}));
}

TEST(Sandbox, failsTheTestForEachFailedAssertion) {
    const auto body = [] {
        EXPECT_EQ(1, 2) << "the first";
        ASSERT_EQ(1, 2) << "the second";
        ADD_FAILURE() << "never reached";
    };
    expectFailure(body, "the first");
    expectFailure(body, "the second");
    expectFailure(body, "Sandbox_test.cpp:");
    EXPECT_EQ(runAsTest(body).out.find("never reached"), std::string::npos);
}

TEST(Sandbox, failsTheTestForAnException) {
    expectFailure([] { throw std::runtime_error("thrown inside"); }, "thrown inside");
    expectFailure([] { throw 1; }, "ended early, with status 134");
}

TEST(Sandbox, failsTheTestForASignal) {
    expectFailure([] { std::raise(SIGKILL); }, "ended early, with status 137");
}

TEST(Sandbox, failsTheTestForAnEarlyExit) {
    expectFailure([] { _exit(0); }, "ended early, with status 0");
    expectFailure([] { std::exit(3); }, "ended early, with status 3");
}

TEST(Sandbox, failsTheTestForASkip) {
    expectFailure([] { GTEST_SKIP() << "not here"; }, "not here");
}

TEST(Sandbox, failsTheTestThatLacksTheLabel) {
    setenv("THERMIKA_NO_NAMESPACES", "1", 1);
    expectFailure([] {}, "lacks the label");
}

TEST(Sandbox, tellsWhatAProcessOfItsOwnHasLost) {
    const RunResult result = thermika_test::runInProcess([] {
        // Many: an old address in a register or on the stack may keep some.
        char* volatile lost = nullptr;
        for (int i = 0; i < 100; ++i) lost = new char[10];
        lost = nullptr;
        return lost == nullptr ? 0 : 1;
    });
    EXPECT_EQ(result.status, thermika_test::kLooksForLeaks ? thermika_test::kLeaked : 0);
}

TEST(Sandbox, startsWithEmptyFoldersThatOnlyItSees) {
    inSandbox([] {
        EXPECT_TRUE(fs::is_empty("/sys"));
        EXPECT_TRUE(fs::is_empty("/usr/share"));
        fs::create_directory("/sys/sandboxed");
        fs::create_directory("/usr/share/sandboxed");
    });
    EXPECT_FALSE(fs::exists("/sys/sandboxed"));
    EXPECT_FALSE(fs::exists("/usr/share/sandboxed"));
    inSandbox([] { EXPECT_TRUE(fs::is_empty("/sys")); });
}

TEST(Sandbox, hidesAnotherFolderOnDemand) {
    inSandbox([] {
        thermika_test::mountEmptyFolder("/usr");
        EXPECT_TRUE(fs::is_empty("/usr"));
    });
    EXPECT_FALSE(fs::is_empty("/usr"));
}

TEST(Sandbox, hasANetworkOfItsOwn) {
    inSandbox([] {
        struct if_nameindex* const interfaces = if_nameindex();
        ASSERT_NE(interfaces, nullptr);
        EXPECT_STREQ(interfaces[0].if_name, "lo");
        EXPECT_EQ(interfaces[1].if_name, nullptr);
        if_freenameindex(interfaces);
    });
}

TEST(Sandbox, bindsEverybodyToFileModes) {
    inSandbox([] {
        EXPECT_EQ(geteuid(), 0U);
        thermika_test::writeFile("/usr/share/secret", "text");
        ASSERT_EQ(chmod("/usr/share/secret", 0), 0);
        EXPECT_THROW(thermika_test::readFile("/usr/share/secret"), std::exception);
        EXPECT_EQ(run("cat", {"cat", "/usr/share/secret"}),
                  (RunResult{"", "cat: /usr/share/secret: Permission denied\n", 1}));
    });
}

TEST(Sandbox, catchesWhatAProgramWrites) {
    EXPECT_EQ(run("sh", {"sh", "-c", "cat; echo out; echo err >&2; exit 7"}),
              (RunResult{"out\n", "err\n", 7}));
    EXPECT_EQ(run("sh", {"sh", "-c", "kill -9 $$"}), (RunResult{"", "", 137}));
    EXPECT_EQ(run("./no such program", {"name"}),
              (RunResult{"", "./no such program: No such file or directory\n", 127}));
}

}  // namespace
