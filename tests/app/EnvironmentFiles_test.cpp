// Calibration descriptions that are no files, or that a machine filled: the tool answers at once,
// and with whatever such a description really says.
#include <sys/stat.h>

#include <cstddef>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "support/ExpectedDocument.h"
#include "support/LogText.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"
#include "support/Tool.h"

namespace {

namespace fs = std::filesystem;
using thermika_test::inSandbox;
using thermika_test::kToolDescription;
using thermika_test::kToolFolder;
using thermika_test::RunResult;
using thermika_test::runTool;

constexpr std::size_t kFloodBytes = std::size_t{16} << 20;
constexpr std::size_t kLineBytes = 4000;  // longer lines end the reading

constexpr int kDefaultFov = 0;
constexpr int kDescribedFov = 33;
constexpr const char* kOptics =
    "<Temperature>\n<Optics>\n<OpticsDef>\n<FOV>33</FOV>\n</OpticsDef>\n</Optics>\n</"
    "Temperature>\n";

RunResult delivered(int fovDeg) {
    thermika_test::ExpectedDocument document;
    document.serial = "14080045";
    document.fovDeg = fovDeg;
    return {document.text() + "\n", "", 0};
}

std::string repeated(const std::string& unit, std::size_t times) {
    std::string text;
    text.reserve(unit.size() * times);
    for (std::size_t i = 0; i < times; ++i) text += unit;
    return text;
}

/// So many bytes of `unit`, in one line.
std::string flood(const std::string& unit) { return repeated(unit, kFloodBytes / unit.size()); }

/// The same in lines that are read.
std::string floodOfLines(const std::string& unit) {
    return flood(repeated(unit, kLineBytes / unit.size()) + "\n");
}

RunResult answerTo(const std::string& description) {
    thermika_test::writeFile(kToolDescription, description);
    return runTool({"-d", "14080045"});
}

std::string inRoot(const std::string& content) {
    return "<CaliData>\n" + content + "</CaliData>\n";
}

TEST(EnvironmentFiles, givesDefaultsForADescriptionThatIsNoFile) {
    inSandbox([] {
        fs::create_directories(kToolFolder);
        const auto expectDefaults = [](const char* what) {
            EXPECT_EQ(runTool({"-d", "14080045"}), delivered(kDefaultFov)) << what;
            EXPECT_TRUE(fs::remove(kToolDescription)) << what;
        };
        ASSERT_EQ(mkfifo(kToolDescription, 0666), 0);
        expectDefaults("a pipe that nobody writes to");
        fs::create_directory(kToolDescription);
        expectDefaults("a folder");
        fs::create_symlink("nowhere", kToolDescription);
        expectDefaults("a link to nowhere");
        fs::create_symlink(kToolDescription, kToolDescription);
        expectDefaults("a link to itself");
        fs::create_symlink("/dev/zero", kToolDescription);
        expectDefaults("a device without an end");
        fs::create_symlink("/proc/self/mem", kToolDescription);
        expectDefaults("the tool's own memory");
    });
}

TEST(EnvironmentFiles, stopsAtALineWithoutEnd) {
    inSandbox([] {
        fs::create_directories(kToolFolder);
        EXPECT_EQ(answerTo(flood("<")), delivered(kDefaultFov));
        for (const char* const unit : {"<", "<!--", "<FOV>1</FOV>"})
            EXPECT_EQ(answerTo(inRoot(flood(unit) + kOptics)), delivered(kDefaultFov)) << unit;
        EXPECT_EQ(answerTo(inRoot(kOptics + flood("x"))), delivered(kDescribedFov));
    });
}

TEST(EnvironmentFiles, findsTheOpticsBehindAnyCharacter) {
    inSandbox([] {
        fs::create_directories(kToolFolder);
        for (const char character : {'<', '\r', '\0'})
            EXPECT_EQ(answerTo(inRoot(floodOfLines({character}) + kOptics)),
                      delivered(kDescribedFov))
                << static_cast<int>(character);
        EXPECT_EQ(answerTo(inRoot(std::string(kFloodBytes, '\n') + kOptics)),
                  delivered(kDescribedFov));
    });
}

TEST(EnvironmentFiles, findsTheOpticsBehindAnyTags) {
    inSandbox([] {
        fs::create_directories(kToolFolder);
        for (const char* const tags : {"<a>", "</Temperature>", "<!-- -->"})
            EXPECT_EQ(answerTo(inRoot(floodOfLines(tags) + kOptics)), delivered(kDescribedFov))
                << tags;
    });
}

TEST(EnvironmentFiles, findsTheOpticsInTheDepth) {
    constexpr std::size_t kDepth = 100'000;
    inSandbox([] {
        fs::create_directories(kToolFolder);
        const auto nested = [](const std::string& inner) {
            return repeated("<a>\n", kDepth) + inner + repeated("</a>\n", kDepth);
        };
        EXPECT_EQ(answerTo(inRoot(nested(kOptics))), delivered(kDescribedFov));
        EXPECT_EQ(answerTo(inRoot(nested("") + kOptics)), delivered(kDescribedFov));
        EXPECT_EQ(answerTo(inRoot(repeated("<a>\n", kDepth) + kOptics)), delivered(kDescribedFov));
    });
}

TEST(EnvironmentFiles, givesDefaultsAndSaysWhyForACommentWithoutEnd) {
    inSandbox([] {
        fs::create_directories(kToolFolder);
        for (const char* const unit : {"<!--", "-->"}) {
            RunResult result = answerTo(inRoot(kOptics + floodOfLines(unit)));
            const std::string reason = "ERROR [SimpleXML:#] @ #s :Format of file " +
                                       std::string(kToolDescription) +
                                       " is wrong. Verify, that the XML document is well-formed!\n";
            result.err = thermika_test::withoutSecondsAndLines(result.err, "SimpleXML");
            EXPECT_EQ(result.err.substr(result.err.size() - reason.size()), reason) << unit;
            result.err.clear();
            EXPECT_EQ(result, delivered(kDefaultFov)) << unit;
        }
    });
}

}  // namespace
