// `thermika fetch` with a folder as its source, and its words and statuses. What the transfers
// themselves withstand is the fetch library's.
#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/CameraSet.h"
#include "support/Companion.h"
#include "support/DownloadSandbox.h"

namespace {

namespace fs = std::filesystem;
using thermika_test::cameraFiles;
using thermika_test::contents;
using thermika_test::kDescriptionName;
using thermika_test::kFirstCurve;
using thermika_test::kFirstData;
using thermika_test::kLastCurve;
using thermika_test::kLastData;
using thermika_test::runCompanion;
using thermika_test::RunResult;
using thermika_test::TempDir;
using thermika_test::writeFile;

std::vector<std::string> sortedLines(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    std::sort(lines.begin(), lines.end());
    return lines;
}

/// A medium with the files of a small camera, and a directory that does not exist yet.
class FetchFromFolder : public testing::Test {
protected:
    FetchFromFolder() {
        fs::create_directories(m_medium / "deep/er");
        for (const auto& [name, bytes] : cameraFiles()) {
            const bool isDescription = name == kDescriptionName;
            writeFile((isDescription ? m_medium / "" : m_medium / "deep/er/") + name, bytes);
        }
    }

    std::vector<std::string> command(std::vector<std::string> more = {}) const {
        more.insert(more.begin(),
                    {"fetch", "14080045", "--from", m_medium.path(), "--dir", m_directory});
        return more;
    }

    TempDir m_medium;
    TempDir m_home;
    std::string m_directory = m_home / "new/cali";
};

TEST_F(FetchFromFolder, bringsTheDescriptionAndThenWhatItCallsFor) {
    const RunResult result = runCompanion(command());
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "5 files fetched, 0 there already\n");
    EXPECT_EQ(sortedLines(result.err),
              (std::vector<std::string>{
                  "fetched " + kFirstData + " (14 B)", "fetched " + kLastData + " (14 B)",
                  "fetched " + kDescriptionName + " (481 B)", "fetched " + kFirstCurve + " (15 B)",
                  "fetched " + kLastCurve + " (15 B)"}));
    EXPECT_EQ(result.err.find("fetched " + kDescriptionName), 0U);
    EXPECT_EQ(contents(m_directory), cameraFiles());
    EXPECT_EQ(fs::status(m_directory).permissions(), fs::perms(0755));
    EXPECT_EQ(runCompanion(command()), (RunResult{"0 files fetched, 5 there already\n", "", 0}));
    EXPECT_EQ(runCompanion({"files", "14080045", "--dir", m_directory}).status, 0);
}

TEST_F(FetchFromFolder, saysNothingButResultsWhenQuiet) {
    EXPECT_EQ(runCompanion(command({"--quiet"})),
              (RunResult{"5 files fetched, 0 there already\n", "", 0}));
}

TEST_F(FetchFromFolder, bringsWhatIsThereAlreadyOnlyWhenToldTo) {
    fs::create_directories(m_directory);
    writeFile(m_directory + "/" + kFirstData, "old");
    EXPECT_EQ(runCompanion(command({"-q"})).out, "4 files fetched, 1 there already\n");
    EXPECT_EQ(contents(m_directory)[kFirstData], "old");
    EXPECT_EQ(runCompanion(command({"-q", "--all"})).out, "5 files fetched, 0 there already\n");
    EXPECT_EQ(contents(m_directory), cameraFiles());
}

TEST_F(FetchFromFolder, replacesADescriptionThatCannotBeUsed) {
    fs::create_directories(m_directory);
    writeFile(m_directory + "/" + kDescriptionName, "<html>\n");
    EXPECT_EQ(runCompanion(command({"-q"})).status, 0);
    EXPECT_EQ(contents(m_directory), cameraFiles());
}

TEST_F(FetchFromFolder, namesWhatIsMissingAndWhy) {
    fs::remove(m_medium / ("deep/er/" + kFirstCurve));
    const RunResult result = runCompanion(command({"-q"}));
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.out, "4 files fetched, 0 there already\n");
    EXPECT_EQ(result.err.find("thermika: " + kFirstCurve + ": "), 0U) << result;
    EXPECT_NE(result.err.find("\nthermika: 1 file could not be had from " + m_medium.path() +
                              " for " + m_directory + " ("),
              std::string::npos)
        << result;
    auto expected = cameraFiles();
    expected.erase(kFirstCurve);
    EXPECT_EQ(contents(m_directory), expected);
    // Where a log is kept, the file has its line there as well.
    EXPECT_EQ(runCompanion(command()).err.find("no " + kFirstCurve + ": "), 0U);
}

TEST_F(FetchFromFolder, endsWithTheDescriptionWhenThereIsNone) {
    fs::remove(m_medium / kDescriptionName);
    const RunResult result = runCompanion(command({"-q"}));
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.err.find("thermika: " + kDescriptionName + ": "), 0U) << result;
}

TEST_F(FetchFromFolder, refusesADescriptionThatIsNone) {
    writeFile(m_medium / kDescriptionName, "<html>\n");
    const RunResult result = runCompanion(command({"-q"}));
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.err, "thermika: what came as " + kDescriptionName +
                              " is no calibration description that lists optics (another source: "
                              "--from URL or FOLDER)\n");
}

TEST_F(FetchFromFolder, triesWithoutTouchingAnything) {
    const std::string line =
        (m_medium / kDescriptionName) + " -> " + m_directory + "/" + kDescriptionName + "\n";
    EXPECT_EQ(runCompanion(command({"--dry-run"})),
              (RunResult{line, "what else is needed is known once the description is there\n", 0}));
    EXPECT_FALSE(fs::exists(m_home / "new"));

    fs::create_directories(m_directory);
    writeFile(m_directory + "/" + kDescriptionName, thermika_test::cameraDescription());
    const auto before = contents(m_home.path());
    const RunResult plan = runCompanion(command({"--dry-run"}));
    EXPECT_EQ(plan.status, 0) << plan;
    EXPECT_EQ(std::count(plan.out.begin(), plan.out.end(), '\n'), 4) << plan;
    EXPECT_NE(plan.out.find((m_medium / ("deep/er/" + kLastData)) + " -> " + m_directory + "/" +
                            kLastData + "\n"),
              std::string::npos)
        << plan;
    EXPECT_EQ(contents(m_home.path()), before);
}

TEST_F(FetchFromFolder, refusesNumbersOutsideTheirBounds) {
    for (const char* const option :
         {"--jobs=0", "--jobs=65", "--jobs=x", "--timeout=0", "--retries=-1", "--retries=101",
          "--max-size=0", "--max-time=0", "--max-time=31536001", "--max-total=0", "--max-files=0",
          "--timeout=86401"})
        EXPECT_EQ(runCompanion(command({option})).status, 2) << option;
    EXPECT_EQ(runCompanion(command({"--max-size=0"}))
                  .err.find("thermika: --max-size: Value 0 not in range "),
              0U);
    EXPECT_FALSE(fs::exists(m_home / "new"));
}

TEST_F(FetchFromFolder, refusesNumbersThatOthersKeepFromTheirEffect) {
    EXPECT_EQ(runCompanion(command({"--timeout", "3601"})),
              (RunResult{"",
                         "thermika: --timeout: 3601 has no effect, as --max-time is 3600 (raise "
                         "that as well)\n",
                         2}));
    EXPECT_EQ(runCompanion(command({"--max-size", "4294967297"})),
              (RunResult{"",
                         "thermika: --max-size: 4294967297 has no effect, as --max-total is "
                         "4294967296 (raise that as well)\n",
                         2}));
    EXPECT_FALSE(fs::exists(m_home / "new"));
    EXPECT_EQ(runCompanion(command({"-q", "--timeout", "3601", "--max-time", "3601", "--max-size",
                                    "4294967297", "--max-total", "4294967297"}))
                  .status,
              0);
    // What was not asked for may be lowered in silence.
    EXPECT_EQ(runCompanion(command({"-q", "--max-time", "20", "--max-total", "1000"})).status, 0);
}

TEST_F(FetchFromFolder, leavesOutFilesThatAreTooLarge) {
    const RunResult result = runCompanion(command({"-q", "--max-size", "14"}));
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.err.find("thermika: " + kDescriptionName + ": "), 0U) << result;
    EXPECT_NE(result.err.find("higher limits: --max-size, --max-total; "), std::string::npos)
        << result;
    EXPECT_EQ(result.err.find("thermika online"), std::string::npos) << result;
}

TEST_F(FetchFromFolder, takesNoMoreBytesAndFilesThanToldTo) {
    const RunResult few = runCompanion(command({"-q", "--max-files", "3"}));
    EXPECT_EQ(few.status, 3);
    EXPECT_EQ(few.out, "3 files fetched, 0 there already\n");
    EXPECT_NE(
        few.err.find(": more than 3 files are asked for, so this one and 1 other name is left "
                     "out\nthermika: the description calls for more than 3 files (take more: "
                     "--max-files N)\n"),
        std::string::npos)
        << few;
    fs::remove_all(m_home / "new");
    const RunResult one = runCompanion(command({"-q", "--max-files", "1"}));
    EXPECT_NE(one.err.find("the description calls for more than 1 file ("), std::string::npos)
        << one;
    fs::remove_all(m_home / "new");
    const RunResult little = runCompanion(command({"-q", "--max-total", "500"}));
    EXPECT_EQ(little.status, 3);
    EXPECT_EQ(little.out, "2 files fetched, 0 there already\n");
    EXPECT_NE(little.err.find("--max-total"), std::string::npos) << little;
}

TEST_F(FetchFromFolder, refusesAnAddressThatCannotBeAsked) {
    const RunResult result =
        runCompanion({"fetch", "14080045", "--from", "ftp://x", "--dir", m_directory});
    EXPECT_EQ(result,
              (RunResult{"",
                         "thermika: the address \"ftp://x\" cannot be used: it is neither http nor "
                         "https (--from takes an http or https address, or a folder)\n",
                         2}));
    EXPECT_FALSE(fs::exists(m_home / "new"));
}

// An operator's link is read by every other command, as the library follows it; to write through it
// would touch a file outside the directory.
TEST_F(FetchFromFolder, replacesALinkThatTheOtherCommandsFollow) {
    ASSERT_EQ(runCompanion(command({"-q"})).status, 0);
    writeFile(m_home / "mine", "mine");
    fs::remove(m_directory + "/" + kFirstData);
    fs::create_symlink(m_home / "mine", m_directory + "/" + kFirstData);
    EXPECT_EQ(runCompanion({"files", "14080045", "--missing", "--dir", m_directory}),
              (RunResult{"", "", 0}));
    EXPECT_EQ(runCompanion(command({"-q"})).out, "1 file fetched, 4 there already\n");
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(m_directory + "/" + kFirstData)));
    EXPECT_EQ(thermika_test::readFile(m_home / "mine"), "mine");
    EXPECT_EQ(contents(m_directory), cameraFiles());
}

TEST_F(FetchFromFolder, saysThatTheDirectoryCannotBeWrittenAndHowToChooseAnother) {
    writeFile(m_home / "file", "");
    const RunResult result = runCompanion(
        {"fetch", "14080045", "--from", m_medium.path(), "--dir", m_home / "file/cali"});
    EXPECT_EQ(result.status, 3);
    EXPECT_NE(result.err.find(m_home / "file"), std::string::npos) << result;
    EXPECT_NE(result.err.find("another directory: --dir DIR"), std::string::npos) << result;
}

// Higher limits would not help, nor would asking a server.
TEST_F(FetchFromFolder, advisesWhatHelpsAgainstTheReason) {
    fs::create_directories(m_directory + "/" + kFirstData);
    const RunResult taken = runCompanion(command({"-q"}));
    EXPECT_NE(taken.err.find(kFirstData + ": cannot rename: "), std::string::npos) << taken;
    EXPECT_NE(taken.err.find("; another directory: --dir DIR; another source: --from "),
              std::string::npos)
        << taken;
    fs::remove(m_medium / "deep/er/" + kFirstData);
    fs::create_symlink("/etc/passwd", m_medium / "deep/er/" + kFirstData);
    const RunResult link = runCompanion(command({"-q"}));
    EXPECT_NE(link.err.find(kFirstData + ": it is a link"), std::string::npos) << link;
    EXPECT_NE(link.err.find(" (another source: --from URL or FOLDER)\n"), std::string::npos)
        << link;
}

TEST(FetchCommand, advisesAnotherDirectoryWhereNoFileCanBeMade) {
    thermika_test::inSandbox([] {
        const thermika_test::DownloadSandbox sandbox;
        thermika_test::mountOver(thermika_test::kCaliDir, "nr_inodes=1,mode=0755");
        const RunResult result = runCompanion({"fetch", "14080045", "-q"});
        EXPECT_EQ(result.status, 3);
        EXPECT_NE(result.err.find("No space left on device (choose a directory that you may write "
                                  "to) (another directory: --dir DIR; another source: "),
                  std::string::npos)
            << result;
    });
}

TEST_F(FetchFromFolder, leavesNothingOnAFullDiskAndSaysSo) {
    thermika_test::inSandbox([this] {
        fs::create_directories(thermika_test::kCaliDir);
        thermika_test::mountOver(thermika_test::kCaliDir, "size=8k,mode=0755");
        const RunResult result =
            runCompanion({"fetch", "14080045", "-q", "--from", m_medium.path()});
        EXPECT_EQ(result.status, 3);
        EXPECT_NE(result.err.find("No space left on device"), std::string::npos) << result;
        for (const auto& [name, bytes] : contents(thermika_test::kCaliDir))
            EXPECT_EQ(bytes, cameraFiles()[name]) << name;
    });
}

/// The files of a camera with 200 optics of 13 frame rates each.
thermika_test::Files largeSet() {
    std::string optics;
    thermika_test::Files files;
    for (int fov = 1; fov <= 200; ++fov) {
        std::string rates;
        for (int rate = 1; rate <= 13; ++rate) {
            rates += "<Framerate><FR>" + std::to_string(rate) + "</FR></Framerate>\n";
            const std::string stem =
                "-14080045-" + std::to_string(fov) + "-0-9-" + std::to_string(rate);
            files["Cali" + stem + ".dat"] = "data" + stem;
            files["Kennlinie" + stem + ".prn"] = "curve" + stem;
        }
        optics += "<OpticsDef>\n<FOV>" + std::to_string(fov) +
                  "</FOV>\n<TempRanges>\n<TemperatureRange>\n<TempLo>0</TempLo>\n"
                  "<TempHi>9</TempHi>\n<Framerates>\n" +
                  rates + "</Framerates>\n</TemperatureRange>\n</TempRanges>\n</OpticsDef>\n";
    }
    files[kDescriptionName] = "<CaliData>\n<Temperature>\n<Optics>\n" + optics +
                              "</Optics>\n</Temperature>\n</CaliData>\n";
    return files;
}

TEST(FetchCommand, takesALargeSetAtOnce) {
    thermika_test::inSandbox([] {
        const thermika_test::Files files = largeSet();
        fs::create_directories("/usr/share/medium");
        for (const auto& [name, bytes] : files) writeFile("/usr/share/medium/" + name, bytes);
        EXPECT_EQ(runCompanion({"fetch", "14080045", "-q", "--from", "/usr/share/medium"}),
                  (RunResult{"5201 files fetched, 0 there already\n", "", 0}));
        EXPECT_TRUE(contents(thermika_test::kCaliDir) == files);
        EXPECT_EQ(runCompanion({"files", "14080045", "--missing"}), (RunResult{"", "", 0}));
    });
}

TEST(FetchCommand, takesALargeSetFromAServerAtOnce) {
    thermika_test::inSandbox([] {
        const thermika_test::DownloadSandbox sandbox;
        const thermika_test::Files files = largeSet();
        thermika_test::FileServer server;
        thermika_test::serveFiles(server, files);
        EXPECT_EQ(runCompanion({"fetch", "14080045", "-q"}),
                  (RunResult{"5201 files fetched, 0 there already\n", "", 0}));
        EXPECT_TRUE(contents(thermika_test::kCaliDir) == files);
    });
}

}  // namespace
