// `thermika files`: each state that a file can be in, for people and for programs.
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "support/CaliDescriptions.h"
#include "support/CameraSet.h"
#include "support/Companion.h"
#include "support/DownloadSandbox.h"

namespace {

namespace fs = std::filesystem;
using thermika_test::cameraDescription;
using thermika_test::runCompanion;
using thermika_test::RunResult;
using thermika_test::TempDir;
using thermika_test::writeFile;

/// A directory with the files of a small camera.
class Files : public testing::Test {
protected:
    Files() {
        for (const auto& [name, bytes] : thermika_test::cameraFiles())
            writeFile(m_folder / name, bytes);
    }

    std::vector<std::string> command(std::vector<std::string> more = {}) const {
        more.insert(more.begin(), {"files", "14080045", "--dir", m_folder.path()});
        return more;
    }

    TempDir m_folder;
};

TEST_F(Files, listsEveryFileWithItsSize) {
    EXPECT_EQ(runCompanion(command()),
              (RunResult{"SIZE  STATE    NAME\n"
                         " 481  present  Cali-14080045.xml\n"
                         "  14  present  Cali-14080045-33-M20-100-27.dat\n"
                         "  15  present  Kennlinie-14080045-33-M20-100-27.prn\n"
                         "  14  present  Cali-14080045-33-M20-100-80.dat\n"
                         "  15  present  Kennlinie-14080045-33-M20-100-80.prn\n",
                         "", 0}));
    EXPECT_EQ(runCompanion(command({"--missing"})), (RunResult{"", "", 0}));
}

TEST_F(Files, tellsEveryStateApart) {
    fs::remove(m_folder / thermika_test::kFirstData);
    writeFile(m_folder / thermika_test::kFirstCurve, "");
    fs::remove(m_folder / thermika_test::kLastData);
    ASSERT_EQ(mkfifo((m_folder / thermika_test::kLastData).c_str(), 0600), 0);
    fs::remove(m_folder / thermika_test::kLastCurve);
    fs::create_symlink(thermika_test::kLastCurve, m_folder / thermika_test::kLastCurve);
    EXPECT_EQ(runCompanion(command()),
              (RunResult{"SIZE  STATE                                          NAME\n"
                         " 481  present                                        "
                         "Cali-14080045.xml\n"
                         "   -  missing                                        "
                         "Cali-14080045-33-M20-100-27.dat\n"
                         "   -  empty                                          "
                         "Kennlinie-14080045-33-M20-100-27.prn\n"
                         "   -  not a regular file                             "
                         "Cali-14080045-33-M20-100-80.dat\n"
                         "   -  unreadable: Too many levels of symbolic links  "
                         "Kennlinie-14080045-33-M20-100-80.prn\n",
                         "4 of 5 files not present in " + m_folder.path() +
                             " (fetch them: thermika fetch 14080045)\n",
                         1}));
}

TEST_F(Files, printsMissingNamesAloneForScripts) {
    fs::remove(m_folder / thermika_test::kFirstData);
    fs::remove(m_folder / thermika_test::kLastCurve);
    const RunResult lines = runCompanion(command({"--missing", "--quiet"}));
    EXPECT_EQ(lines, (RunResult{thermika_test::kFirstData + "\n" + thermika_test::kLastCurve + "\n",
                                "", 1}));
    const std::string zero(1, '\0');
    EXPECT_EQ(
        runCompanion(command({"--missing", "-0", "-q"})),
        (RunResult{thermika_test::kFirstData + zero + thermika_test::kLastCurve + zero, "", 1}));
    EXPECT_EQ(runCompanion(command({"-0"})).status, 2);
}

TEST_F(Files, showsNamesFromTheDescriptionWithoutWhatATerminalActsOn) {
    writeFile(m_folder / thermika_test::kDescriptionName, cameraDescription("a\033[31mb"));
    const RunResult lines = runCompanion(command({"--missing", "-q"}));
    EXPECT_EQ(lines.out.substr(0, lines.out.find('\n')),
              "Cali-14080045-33-a\\x1B[31mb-M20-100-27.dat");
    // Programs get the bytes.
    EXPECT_EQ(runCompanion(command({"--missing", "-0", "-q"})).out.substr(0, 26),
              "Cali-14080045-33-a\033[31mb-M");
}

TEST_F(Files, listsAFileOfTwoOpticsOnce) {
    thermika_test::writeDescription(
        m_folder, 14080045,
        thermika_test::opticsList(
            thermika_test::opticsElement(33, "", thermika_test::rangeElement("0", "250")) +
            thermika_test::opticsElement(33, "", thermika_test::rangeElement("0", "250"))));
    const RunResult result = runCompanion(command({"--missing", "-q"}));
    EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 2) << result;
    // Each of the two lacks them.
    const RunResult optics = runCompanion({"optics", "14080045", "--dir", m_folder.path()});
    EXPECT_NE(optics.out.find("2 missing", optics.out.find("2 missing") + 1), std::string::npos)
        << optics;
}

// Such a name would lead out of the directory, to whatever file a stranger wants to know of.
TEST_F(Files, looksForNoNameThatIsAPath) {
    const std::string inside = m_folder / "Cali-14080045-33-a";
    fs::create_directory(inside);
    writeFile(inside + "/b-M20-100-27.dat", "there");
    writeFile(m_folder / thermika_test::kDescriptionName, cameraDescription("a/b"));
    EXPECT_EQ(runCompanion(command({"--missing", "-q"})).out,
              "Cali-14080045-33-a/b-M20-100-27.dat\nKennlinie-14080045-33-a/b-M20-100-27.prn\n"
              "Cali-14080045-33-a/b-M20-100-80.dat\nKennlinie-14080045-33-a/b-M20-100-80.prn\n");
}

TEST_F(Files, colorsStates) {
    fs::remove(m_folder / thermika_test::kFirstData);
    const RunResult result = runCompanion(command({"--color=always", "-q"}));
    EXPECT_NE(result.out.find("481  \033[32mpresent\033[0m  Cali-14080045.xml\n"),
              std::string::npos)
        << result;
    EXPECT_NE(result.out.find("-  \033[31mmissing\033[0m  " + thermika_test::kFirstData + "\n"),
              std::string::npos)
        << result;
}

TEST_F(Files, namesTheDescriptionAloneWhenItIsMissing) {
    fs::remove(m_folder / thermika_test::kDescriptionName);
    EXPECT_EQ(
        runCompanion(command()),
        (RunResult{"SIZE  STATE    NAME\n"
                   "   -  missing  Cali-14080045.xml\n",
                   "the calibration description " + (m_folder / thermika_test::kDescriptionName) +
                       " is missing (fetch it: thermika fetch 14080045)\n",
                   1}));
}

TEST_F(Files, cannotTellWhenTheDescriptionIsNone) {
    writeFile(m_folder / thermika_test::kDescriptionName, "<html>\n");
    const RunResult result = runCompanion(command());
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.err, "thermika: " + (m_folder / thermika_test::kDescriptionName) +
                              " lists no optics, so it is no calibration description (fetch it: "
                              "thermika fetch 14080045)\n");
}

TEST_F(Files, cannotBeToldWhenTheDescriptionIsNotReadable) {
    thermika_test::inSandbox([] {
        fs::create_directories(thermika_test::kCaliDir);
        thermika_test::installFiles(thermika_test::cameraFiles());
        const std::string path =
            std::string(thermika_test::kCaliDir) + "/" + thermika_test::kDescriptionName;
        fs::permissions(path, fs::perms::none);
        EXPECT_EQ(runCompanion({"files", "14080045"}),
                  (RunResult{"SIZE  STATE                          NAME\n"
                             "   -  unreadable: Permission denied  Cali-14080045.xml\n",
                             "thermika: the calibration description " + path +
                                 ": Permission denied (is it yours?)\n",
                             3}));
        for (const char* const command : {"optics", "files"})
            EXPECT_EQ(runCompanion({command, "14080045"}).status, 3) << command;
    });
}

}  // namespace
