// The companion in surroundings that are not fit for it.
#include <fcntl.h>
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

}  // namespace
