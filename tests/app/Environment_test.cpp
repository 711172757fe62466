// The tool in surroundings that nobody prepared for it: descriptors closed, a reader that wants one
// line, any environment, a crowded bus. What it says stays what it is elsewhere.
#include <unistd.h>

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "support/BuildPaths.h"
#include "support/ExpectedDocument.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"
#include "support/Tool.h"
#include "support/UsbTree.h"

namespace {

using thermika_test::inSandbox;
using thermika_test::kNoCamera;
using thermika_test::kToolFailure;
using thermika_test::RunResult;
using thermika_test::runTool;
using thermika_test::UsbTree;

/// What a camera without a description gets.
std::string document(const std::string& serial = "14080045") {
    thermika_test::ExpectedDocument expected;
    expected.serial = serial;
    return expected.text() + "\n";
}

void closeThoseIn(int set) {
    for (int descriptor = 0; descriptor < 3; ++descriptor)
        if ((set >> descriptor & 1) != 0) close(descriptor);
}

// Files and folders that the tool opens take the numbers of those that are closed.
TEST(Environment, runsWithAnyOfTheThreeStandardDescriptorsClosed) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        const std::string complaint =
            "cannot write the configuration to standard output: Bad file descriptor (is it full or "
            "closed?)\n";
        for (int closed = 0; closed < 8; ++closed) {
            const bool hasOut = (closed & 2) == 0;
            const bool hasErr = (closed & 4) == 0;
            const RunResult expected{hasOut ? document() : "", hasOut || !hasErr ? "" : complaint,
                                     hasOut ? 0 : kToolFailure};
            const auto prepare = [closed] { closeThoseIn(closed); };
            EXPECT_EQ(runTool({}, prepare), expected) << closed;
            EXPECT_EQ(runTool({"-d", "14080045"}, prepare), expected) << closed;
        }
    });
}

TEST(Environment, saysThatThereIsNoCameraWithAnyOfTheThreeStandardDescriptorsClosed) {
    inSandbox([] {
        const UsbTree bus;
        for (int closed = 0; closed < 8; ++closed)
            EXPECT_EQ(runTool({}, [closed] { closeThoseIn(closed); }),
                      (RunResult{(closed & 2) == 0 ? kNoCamera : "", "", kToolFailure}))
                << closed;
    });
}

TEST(Environment, hasDeliveredWhenItsReaderLeavesAfterTheFirstLine) {
    inSandbox([] {
        const std::string whole = document();
        EXPECT_EQ(
            thermika_test::run("sh", {"sh", "-c", "{ \"$1\" -d14080045; echo $? >&2; } | head -n 1",
                                      "sh", THERMIKA_TOOL}),
            (RunResult{whole.substr(0, whole.find('\n') + 1), "0\n", 0}));
    });
}

TEST(Environment, givesTheSameDocumentInAnyEnvironment) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        const RunResult delivered{document(), "", 0};
        EXPECT_EQ(runTool({}, [] { clearenv(); }), delivered);
        for (const char* const name : {"LANG", "LANGUAGE", "LC_ALL", "LC_NUMERIC", "LC_CTYPE", "TZ",
                                       "TZDIR", "HOME", "PATH"})
            for (const std::string& value :
                 {std::string(), std::string("C"), std::string("de_DE.UTF-8"),
                  std::string("no such"), std::string("../../../../etc/passwd"),
                  std::string(":/dev/zero"), std::string("%s%n"), std::string("UTC+99999999999"),
                  std::string("\xff\n;"), std::string(100'000, 'x')})
                EXPECT_EQ(runTool({}, [&] { setenv(name, value.c_str(), 1); }), delivered)
                    << name << "=" << value.substr(0, 50);
    });
}

TEST(Environment, findsTheCameraAmongTenThousandDevices) {
    constexpr int kDevices = 10'000;
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        for (int i = 0; i < kDevices; ++i)
            bus.addDevice("2-" + std::to_string(i), {"0403", "6001", std::to_string(i)});
        EXPECT_EQ(runTool({}), (RunResult{document(), "", 0}));
        UsbTree::setAttribute("1-1", "idProduct", "6001\n");
        EXPECT_EQ(runTool({}), (RunResult{kNoCamera, "", kToolFailure}));
        bus.addCamera("3-1", "14080046");
        EXPECT_EQ(runTool({}), (RunResult{document("14080046"), "", 0}));
    });
}

}  // namespace
