// The tool where the system grants it little: memory, descriptors, bytes in a file. Whatever is
// refused, it ends with a status and never by a signal. For the static tool, which needs no files
// and no memory for libraries before its main() begins.
#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/BuildPaths.h"
#include "support/ExpectedDocument.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"
#include "support/Tool.h"
#include "support/UsbTree.h"

namespace {

namespace fs = std::filesystem;
using thermika_test::inSandbox;
using thermika_test::kNoCamera;
using thermika_test::kToolDescription;
using thermika_test::kToolFailure;
using thermika_test::kToolFolder;
using thermika_test::RunResult;
using thermika_test::runTool;
using thermika_test::UsbTree;

constexpr rlim_t kMiB = 1 << 20;

/// The tool under a limit of the system's.
RunResult runLimited(int resource, rlim_t most, const std::vector<std::string>& arguments) {
    return runTool(arguments, [resource, most] {
        closefrom(STDERR_FILENO + 1);  // what the test was started with counts, too
        const rlimit limit{most, most};
        if (setrlimit(static_cast<__rlimit_resource>(resource), &limit) != 0) _exit(99);
    });
}

std::string document(int fovDeg) {
    thermika_test::ExpectedDocument expected;
    expected.serial = "14080045";
    expected.fovDeg = fovDeg;
    return expected.text() + "\n";
}

/// Field of view 33.
std::string example() { return thermika_test::readFile(THERMIKA_EXAMPLES "/Cali-14080045.xml"); }

/// The description takes a megabyte, which the limits grant or refuse.
void expectAStatusWithAnyMemory(int resource) {
    fs::create_directories(kToolFolder);
    const std::string end = "</CaliData>";
    std::string description = example();
    std::string padding;
    while (padding.size() < kMiB) padding += std::string(1000, ' ') + "\n";
    description.insert(description.rfind(end), padding);
    thermika_test::writeFile(kToolDescription, description);

    const RunResult atOnce{"", "", kToolFailure};
    const RunResult outOfMemory{"", "out of memory\n", kToolFailure};
    const RunResult unread{document(0), "", 0};
    const RunResult delivered{document(33), "", 0};
    int refused = 0;
    int granted = 0;
    for (rlim_t bytes = 0; bytes < 6 * kMiB; bytes += kMiB / 64) {
        // With less than a run takes that ends at its options, main() is not reached: the kernel or
        // the C library end the process before.
        if (!(runLimited(resource, bytes, {"-t", "x"}) == atOnce)) {
            EXPECT_LT(bytes, 3 * kMiB);
            continue;
        }
        const RunResult result = runLimited(resource, bytes, {"-d", "14080045"});
        if (result == delivered)
            ++granted;
        else
            ++refused;
        EXPECT_TRUE(result == outOfMemory || result == unread || result == delivered)
            << bytes << ": " << result;
    }
    EXPECT_GT(refused, 10);
    EXPECT_GT(granted, 10);
}

TEST(EnvironmentLimits, endsWithAStatusInAnyAddressSpace) {
    inSandbox([] { expectAStatusWithAnyMemory(RLIMIT_AS); });
}

TEST(EnvironmentLimits, endsWithAStatusWithAnyAmountOfData) {
    inSandbox([] { expectAStatusWithAnyMemory(RLIMIT_DATA); });
}

TEST(EnvironmentLimits, takesNoMemoryForADescriptionOfThreeGigabytes) {
    inSandbox([] {
        fs::create_directories(kToolFolder);
        thermika_test::writeFile(kToolDescription, example());
        EXPECT_EQ(runLimited(RLIMIT_AS, 4 * kMiB, {"-d14080045"}),
                  (RunResult{document(33), "", 0}));
        fs::resize_file(kToolDescription, 3072 * kMiB);  // it has no bytes there, only a length
        EXPECT_EQ(runLimited(RLIMIT_AS, 4 * kMiB, {"-d14080045"}), (RunResult{document(0), "", 0}));
    });
}

TEST(EnvironmentLimits, needsTwoDescriptorsForTheBusAndOneForADescription) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        fs::create_directories(kToolFolder);
        thermika_test::writeFile(kToolDescription, example());
        const RunResult noBus{kNoCamera,
                              "ERROR [IRCalibrationManager:399] @ #s :Failed to open usb device "
                              "directory: Too many open files\n",
                              kToolFailure};
        const RunResult noCamera{kNoCamera, "", kToolFailure};
        const RunResult delivered{document(33), "", 0};
        for (const rlim_t most : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U}) {
            EXPECT_EQ(runLimited(RLIMIT_NOFILE, most, {}), most <= 3   ? noBus
                                                           : most == 4 ? noCamera
                                                                       : delivered)
                << most;
            EXPECT_EQ(runLimited(RLIMIT_NOFILE, most, {"-d14080045"}),
                      (RunResult{document(most <= 3 ? 0 : 33), "", 0}))
                << most;
        }
    });
}

// The system's signal about a file that may not grow ended the tool without a word.
TEST(EnvironmentLimits, failsWithoutASignalWhereFilesMayNotGrow) {
    inSandbox([] {
        const std::string whole = document(0);
        const std::string complaint =
            "cannot write the configuration to standard output: File too large (is it full or "
            "closed?)\n";
        for (const std::size_t most :
             {std::size_t{0}, std::size_t{1}, std::size_t{10}, std::size_t{1000}, whole.size() - 1})
            EXPECT_EQ(runLimited(RLIMIT_FSIZE, most, {"-d14080045"}),
                      (RunResult{whole.substr(0, most), complaint.substr(0, most), kToolFailure}));
        EXPECT_EQ(runLimited(RLIMIT_FSIZE, whole.size(), {"-d14080045"}),
                  (RunResult{whole, "", 0}));
    });
}

TEST(EnvironmentLimits, saysAsMuchAsItMayWhereFilesMayNotGrow) {
    inSandbox([] {
        const UsbTree bus;
        const std::string whole = kNoCamera;
        for (std::size_t most = 0; most <= whole.size(); ++most)
            EXPECT_EQ(runLimited(RLIMIT_FSIZE, most, {}),
                      (RunResult{whole.substr(0, most), "", kToolFailure}));
        EXPECT_EQ(runLimited(RLIMIT_FSIZE, 0, {"-d5"}), (RunResult{"", "", kToolFailure}));
    });
}

}  // namespace
