// The companion in surroundings that are not fit for it.
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/BuildPaths.h"
#include "support/CameraSet.h"
#include "support/Companion.h"
#include "support/DownloadSandbox.h"

namespace {

using thermika_test::cameraFiles;
using thermika_test::runCompanion;
using thermika_test::RunResult;
using thermika_test::TempDir;
using thermika_test::writeFile;

// A file that is opened under one of the three numbers would get what is written to it.
TEST(Main, doesNotTakeAFileForAClosedStandardStream) {
    const TempDir medium;
    const TempDir folder;
    for (const auto& [name, bytes] : cameraFiles()) writeFile(medium / name, bytes);
    const RunResult result = runCompanion(
        {"fetch", "14080045", "-v", "--from", medium.path(), "--dir", folder.path()}, [] {
            for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
                close(descriptor);
        });
    EXPECT_EQ(result.status, 3);  // the result could not be written
    EXPECT_EQ(thermika_test::contents(folder.path()), cameraFiles());
    // With standard output, the rest is no reason to fail.
    EXPECT_EQ(runCompanion({"files", "14080045", "-v", "--missing", "--dir", folder.path()},
                           [] {
                               close(STDIN_FILENO);
                               close(STDERR_FILENO);
                           }),
              (RunResult{"", "", 0}));
}

TEST(Main, findsEachClosedStandardStreamEmpty) {
    for (const int descriptor : {STDIN_FILENO, STDERR_FILENO}) {
        const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
        EXPECT_EQ(runCompanion({"validate", path}, [descriptor] { close(descriptor); }),
                  (RunResult{path + ":1: there is no document; begin with the one that thermika "
                                    "config prints\n",
                             "", 1}));
    }
}

TEST(Main, reportsAReaderThatHasGoneAway) {
    const RunResult result = runCompanion({"--version"}, [] {
        int ends[2];
        if (pipe(ends) != 0) _exit(9);
        close(ends[0]);
        dup2(ends[1], STDOUT_FILENO);
    });
    EXPECT_EQ(result, (RunResult{"",
                                 "thermika: cannot write to standard output: Broken pipe (is it "
                                 "full or closed?)\n",
                                 3}));
}

TEST(Main, reportsAFileThatMayNotGrow) {
    const TempDir folder;
    writeFile(folder / thermika_test::kDescriptionName, thermika_test::cameraDescription());
    const RunResult result = runCompanion(
        {"config", "14080045", "--dir", folder.path(), "-o", folder / "camera.xml"}, [] {
            const rlimit limit{100, 100};
            setrlimit(RLIMIT_FSIZE, &limit);
        });
    EXPECT_EQ(result, (RunResult{"",
                                 "thermika: cannot write " + (folder / "camera.xml") +
                                     ": File too large (is the disk full?)\n",
                                 3}));
    EXPECT_EQ(thermika_test::contents(folder.path()).size(), 1U);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // their own memory counts too
/// With so many KiB of memory for data.
RunResult validateWithin(rlim_t kibibytes, const std::string& file) {
    return runCompanion({"--dir", THERMIKA_EXAMPLES, "validate", "-q", file}, [kibibytes] {
        const rlimit limit{kibibytes << 10U, kibibytes << 10U};
        setrlimit(RLIMIT_DATA, &limit);
    });
}

const RunResult kOutOfMemory{"", "thermika: out of memory\n", 3};

TEST(Main, endsWith3WhenThereIsNotEnoughMemory) {
    const TempDir folder;
    const std::string file = folder / "camera.xml";
    std::string document = "<imager>";
    for (int i = 0; i < 250000; ++i) document += "<x/>";
    writeFile(file, document + "</imager>");
    for (const rlim_t mebibytes : {4U, 8U, 16U, 32U})
        EXPECT_EQ(validateWithin(mebibytes << 10U, file), kOutOfMemory) << mebibytes;
}

// The XML library crashed, or found no document, where it was short of memory.
TEST(Main, neverAnswersWrongForWantOfMemory) {
    const std::string file = THERMIKA_TEST_DATA "/documents/valid/suggestion-activated.xml";
    constexpr int kNotLoaded = 127;  // the program itself
    int failures = 0;
    RunResult last;
    for (rlim_t kibibytes = 1024; kibibytes < 4096; kibibytes += 48) {
        last = validateWithin(kibibytes, file);
        if (last.status == kNotLoaded || last.status == 0) continue;
        EXPECT_EQ(last, kOutOfMemory) << kibibytes;
        ++failures;
    }
    EXPECT_EQ(last, (RunResult{"", "", 0}));
    EXPECT_GT(failures, 0);
}
#endif

}  // namespace
