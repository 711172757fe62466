// The companion where files may not grow and memory is short. Instrumented builds write files and
// take memory of their own, so this belongs to the others.
#include <sys/resource.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/BuildPaths.h"
#include "support/CaliDescriptions.h"
#include "support/CameraSet.h"
#include "support/Companion.h"
#include "support/DownloadSandbox.h"

namespace {

using thermika_test::opticsElement;
using thermika_test::opticsList;
using thermika_test::rangeElement;
using thermika_test::runCompanion;
using thermika_test::RunResult;
using thermika_test::TempDir;
using thermika_test::writeDescription;
using thermika_test::writeFile;

TEST(MainLimits, reportsAFileThatMayNotGrow) {
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

/// With so many KiB of memory for data.
RunResult runWithin(rlim_t kibibytes, const std::vector<std::string>& line) {
    return runCompanion(line, [kibibytes] {
        const rlimit limit{kibibytes << 10U, kibibytes << 10U};
        setrlimit(RLIMIT_DATA, &limit);
    });
}

RunResult validateWithin(rlim_t kibibytes, const std::string& file) {
    return runWithin(kibibytes, {"--dir", THERMIKA_EXAMPLES, "validate", "-q", file});
}

const RunResult kOutOfMemory{"", "thermika: out of memory\n", 3};

TEST(MainLimits, endsWith3WhenThereIsNotEnoughMemory) {
    const TempDir folder;
    const std::string file = folder / "camera.xml";
    std::string document = "<imager>";
    for (int i = 0; i < 250000; ++i) document += "<x/>";
    writeFile(file, document + "</imager>");
    for (const rlim_t mebibytes : {4U, 8U, 16U, 32U})
        EXPECT_EQ(validateWithin(mebibytes << 10U, file), kOutOfMemory) << mebibytes;
}

// The XML library crashed, or found no document, where it was short of memory.
TEST(MainLimits, neverAnswersWrongForWantOfMemory) {
    const std::string file = THERMIKA_TEST_DATA "/documents/valid/suggestion-activated.xml";
    const TempDir folder;
    std::string text;
    for (int line = 0; line < 200; ++line) text += '\n' + std::string(1000, 'a');
    writeDescription(folder, 14080045,
                     opticsList(opticsElement(33, text, rangeElement("-20", "100"))));
    const std::vector<std::vector<std::string>> lines = {
        {"--dir", THERMIKA_EXAMPLES, "validate", "-q", file},
        {"--dir", folder.path(), "config", "-q", "14080045", "--optics", "33"}};
    for (const std::vector<std::string>& line : lines) {
        constexpr int kNotLoaded = 127;  // the program itself
        const RunResult whole = runCompanion(line);
        int failures = 0;
        RunResult last;
        for (rlim_t kibibytes = 1024; kibibytes < 4096; kibibytes += 48) {
            last = runWithin(kibibytes, line);
            if (last.status == kNotLoaded || last == whole) continue;
            EXPECT_EQ(last, kOutOfMemory) << kibibytes;
            ++failures;
        }
        EXPECT_EQ(last, whole);
        EXPECT_GT(failures, 0);
    }
}

}  // namespace
