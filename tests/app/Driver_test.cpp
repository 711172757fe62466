// Whole runs of the tool: the document it delivers for a camera, how it says that there is none,
// and what happens when nobody takes the document.
#include <fcntl.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "support/BuildPaths.h"
#include "support/ExpectedDocument.h"
#include "support/LogText.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"
#include "support/Tool.h"
#include "support/UsbTree.h"

int thermikaMain(int argc, char** argv);

namespace {

namespace fs = std::filesystem;
using thermika_test::ExpectedDocument;
using thermika_test::inSandbox;
using thermika_test::kNoBus;
using thermika_test::kNoCamera;
using thermika_test::kToolFailure;
using thermika_test::RunResult;
using thermika_test::runTool;
using thermika_test::UsbTree;

constexpr const char* kCalibrationDir = "/usr/share/libthermika/cali";

/// What a camera without a description gets.
ExpectedDocument documentFor(const std::string& serial) {
    ExpectedDocument document;
    document.serial = serial;
    return document;
}

/// Delivered to the last byte: the document and one more line feed.
RunResult delivered(const ExpectedDocument& document) { return {document.text() + "\n", "", 0}; }

/// The camera 14080045 has field of view 33 and limits -20 to 100.
RunResult deliveredSample() {
    ExpectedDocument document = documentFor("14080045");
    document.fovDeg = 33;
    return delivered(document);
}

void installDescription(const std::string& name) {
    fs::create_directories(kCalibrationDir);
    fs::copy(THERMIKA_EXAMPLES "/" + name, kCalibrationDir);
}

void writeDescription(const std::string& serial, const std::string& text) {
    fs::create_directories(kCalibrationDir);
    thermika_test::writeFile(std::string(kCalibrationDir) + "/Cali-" + serial + ".xml", text);
}

TEST(Driver, printsTheDocumentOfTheCameraOnTheBus) {
    inSandbox([] {
        UsbTree bus;
        bus.addRootHub(1);
        bus.addCamera("1-1", "14080045");
        installDescription("Cali-14080045.xml");
        EXPECT_EQ(runTool({}), deliveredSample());
    });
}

TEST(Driver, printsTheDocumentOfTheCameraNamedWhateverIsOnTheBus) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080046");
        installDescription("Cali-14080045.xml");
        installDescription("Cali-14080046.xml");
        EXPECT_EQ(runTool({"-d", "14080045"}), deliveredSample());
    });
}

TEST(Driver, printsTheFirstRangeOfTheDescription) {
    inSandbox([] {
        installDescription("Cali-14080046.xml");
        ExpectedDocument document = documentFor("14080046");
        document.fovDeg = 60;
        document.minTempC = 0;
        document.maxTempC = 250;
        EXPECT_EQ(runTool({"-d", "14080046"}), delivered(document));
    });
}

TEST(Driver, printsDefaultsForACameraWithoutDescription) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        EXPECT_EQ(runTool({}), delivered(documentFor("14080045")));
        EXPECT_EQ(runTool({"-d", "12345678"}), delivered(documentFor("12345678")));
    });
}

TEST(Driver, printsDefaultsForADescriptionThatMayNotBeRead) {
    inSandbox([] {
        installDescription("Cali-14080045.xml");
        fs::permissions(std::string(kCalibrationDir) + "/Cali-14080045.xml", fs::perms::none);
        EXPECT_EQ(runTool({"-d", "14080045"}), delivered(documentFor("14080045")));
    });
}

TEST(Driver, printsDefaultsAndReportsADescriptionWithAnOpenComment) {
    inSandbox([] {
        writeDescription("12345678", "<CaliData>\n<!-- <FOV>33</FOV>\n</CaliData>\n");
        RunResult result = runTool({"-d", "12345678"});
        result.err = thermika_test::withoutSecondsAndLines(result.err, "SimpleXML");
        RunResult expected = delivered(documentFor("12345678"));
        expected.err =
            "ERROR [SimpleXML:#] @ #s :<!-- <FOV>33</FOV>\n"
            "ERROR [SimpleXML:#] @ #s :Format of file "
            "/usr/share/libthermika/cali/Cali-12345678.xml is wrong. Verify, that the XML document "
            "is well-formed!\n";
        EXPECT_EQ(result, expected);
    });
}

TEST(Driver, saysOnStandardOutputThatNoCameraIsAttached) {
    inSandbox([] {
        UsbTree bus;
        bus.addRootHub(1);
        bus.addDevice("1-1", {"0403", "6001", "FT4XK2A9"});
        EXPECT_EQ(runTool({}), (RunResult{kNoCamera, "", kToolFailure}));
    });
}

TEST(Driver, saysOnStandardErrorWhyThereIsNoBus) {
    inSandbox([] { EXPECT_EQ(runTool({}), (RunResult{kNoCamera, kNoBus, kToolFailure})); });
}

TEST(Driver, saysOnStandardErrorThatTheBusMayNotBeRead) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        fs::permissions(thermika_test::kUsbDevicesDir, fs::perms(0111));
        EXPECT_EQ(runTool({}), (RunResult{kNoCamera,
                                          "ERROR [IRCalibrationManager:399] @ #s :Failed to open "
                                          "usb device directory: Permission denied\n",
                                          kToolFailure}));
    });
}

TEST(Driver, ignoresACameraWithoutANumber) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "00000000");
        EXPECT_EQ(runTool({}), (RunResult{kNoCamera, "", kToolFailure}));
    });
}

// The eight digits are asked of the user, not of the camera.
TEST(Driver, takesTheNumberOfTheCameraAsItIs) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "7");
        EXPECT_EQ(runTool({}), delivered(documentFor("7")));
        UsbTree::setAttribute("1-1", "serial", "-14080045\n");
        EXPECT_EQ(runTool({}), delivered(documentFor(std::to_string(ULONG_MAX - 14080044))));
    });
}

TEST(Driver, logsInTheFormOfTheLog) {
    inSandbox([] {
        const RunResult result = thermika_test::run(THERMIKA_TOOL, {"genconfig"});
        const std::string start = "ERROR [IRCalibrationManager:390] @ ";
        ASSERT_EQ(result.err.substr(0, start.size()), start);
        std::size_t digits = 0;
        const double seconds = std::stod(result.err.substr(start.size()), &digits);
        EXPECT_GE(seconds, 0.0);
        EXPECT_LT(seconds, 60.0);
        EXPECT_EQ(result.err.substr(start.size() + digits),
                  "s :Query directory /sys/bus/usb/devices could not be opened: No such file or "
                  "directory\n");
    });
}

TEST(Driver, createsNoFile) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        fs::create_directory("/usr/share/here");
        fs::create_symlink(THERMIKA_TOOL, "/usr/share/here/tool");
        fs::current_path("/usr/share/here");
        for (const char* const name : {"./tool", "/usr/share/here/tool", "tool"}) {
            EXPECT_EQ(thermika_test::run("./tool", {name, "-d12345678"}),
                      delivered(documentFor("12345678")));
            EXPECT_EQ(thermika_test::run("./tool", {name}), delivered(documentFor("14080045")));
            EXPECT_EQ(thermika_test::run("./tool", {name, "-t/tmp"}),
                      (RunResult{"", "", kToolFailure}));
        }
        EXPECT_EQ(std::distance(fs::directory_iterator("."), fs::directory_iterator()), 1);
        EXPECT_EQ(std::distance(fs::directory_iterator("/usr/share"), fs::directory_iterator()), 1);
    });
}

TEST(Driver, runsUnderAnyName) {
    inSandbox([] {
        for (const std::string& name :
             {std::string(), std::string("%s%n"), std::string(100'000, 'n')})
            EXPECT_EQ(thermika_test::run(THERMIKA_TOOL, {name, "-d12345678"}),
                      delivered(documentFor("12345678")));
    });
}

TEST(Driver, runsWithoutAName) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        EXPECT_EQ(thermika_test::run(THERMIKA_TOOL, {}), delivered(documentFor("14080045")));
        // Newer kernels give a program without arguments an empty name; this is the real thing.
        EXPECT_EQ(thermika_test::runInProcess([] {
                      char* argv[] = {nullptr};
                      return thermikaMain(0, argv);
                  }),
                  delivered(documentFor("14080045")));
    });
}

/// The document is taken from the description, found on the bus or with the number given, and
/// nobody gets it.
void expectUndelivered(const std::string& reason, const std::function<void()>& prepare) {
    UsbTree bus;
    bus.addCamera("1-1", "14080045");
    installDescription("Cali-14080045.xml");
    const RunResult expected{"",
                             "cannot write the configuration to standard output: " + reason +
                                 " (is it full or closed?)\n",
                             kToolFailure};
    EXPECT_EQ(runTool({}, prepare), expected);
    EXPECT_EQ(runTool({"-d", "14080045"}, prepare), expected);
}

TEST(Driver, failsWhenStandardOutputIsClosed) {
    inSandbox([] { expectUndelivered("Bad file descriptor", [] { close(STDOUT_FILENO); }); });
}

TEST(Driver, failsWhenStandardOutputIsFull) {
    inSandbox([] {
        expectUndelivered("No space left on device",
                          [] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); });
    });
}

/// Standard output becomes a pipe that nobody reads, and the signal about that is not ignored.
void breakOutput() {
    int ends[2];
    if (pipe(ends) != 0) _exit(99);
    dup2(ends[1], STDOUT_FILENO);
    close(ends[0]);
    close(ends[1]);
    std::signal(SIGPIPE, SIG_DFL);
}

TEST(Driver, failsWithoutASignalWhenNobodyReadsThePipe) {
    inSandbox([] { expectUndelivered("Broken pipe", breakOutput); });
}

TEST(Driver, failsWithoutASignalWhenNobodyReadsThatThereIsNoCamera) {
    inSandbox([] {
        const UsbTree bus;
        EXPECT_EQ(runTool({}, breakOutput), (RunResult{"", "", kToolFailure}));
    });
}

}  // namespace
