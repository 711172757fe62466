// `thermika config`: the tool's document to the byte, and documents with a choice made.
#include <unistd.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/CaliDescriptions.h"
#include "support/CameraSet.h"
#include "support/Companion.h"
#include "support/ExpectedDocument.h"
#include "support/Tool.h"

namespace {

namespace fs = std::filesystem;
using thermika_test::ExpectedDocument;
using thermika_test::inSandbox;
using thermika_test::opticsElement;
using thermika_test::opticsList;
using thermika_test::rangeElement;
using thermika_test::readFile;
using thermika_test::runCompanion;
using thermika_test::RunResult;
using thermika_test::TempDir;

TEST(Config, isWhatTheToolPrints) {
    inSandbox([] {
        fs::create_directories(thermika_test::kCaliDir);
        for (const char* const name : {"Cali-14080045.xml", "Cali-14080046.xml"})
            fs::copy(std::string(THERMIKA_EXAMPLES "/") + name, thermika_test::kCaliDir);
        for (const char* const serial : {"14080045", "14080046"}) {
            const RunResult tool = thermika_test::runTool({"-d", serial});
            ASSERT_EQ(tool.status, 0);
            EXPECT_EQ(runCompanion({"config", serial}), tool);
        }
        const RunResult placeholders = runCompanion({"config", "12345678"});
        EXPECT_EQ(placeholders.out, thermika_test::runTool({"-d", "12345678"}).out);
        EXPECT_EQ(placeholders.err,
                  "the suggested field of view and limits are placeholders: the calibration "
                  "description /usr/share/libthermika/cali/Cali-12345678.xml is missing (fetch "
                  "it: thermika fetch 12345678)\n");
        EXPECT_EQ(placeholders.status, 0);
    });
}

/// Two optics.
class ConfigChoice : public testing::Test {
protected:
    ConfigChoice() {
        thermika_test::writeDescription(
            m_folder, 14080045,
            opticsList(opticsElement(33, "", rangeElement("-20", "100")) +
                       opticsElement(60, "T&amp;1",
                                     rangeElement("-20", "100") + rangeElement("0.5", "250"))));
    }

    RunResult config(std::vector<std::string> more) const {
        more.insert(more.begin(), {"config", "14080045", "--dir", m_folder.path()});
        return runCompanion(more);
    }

    /// The suggestion without the two lines that make it a comment.
    std::string activated(int fov, int min, int max, const std::string& text) const {
        ExpectedDocument document;
        document.serial = "14080045";
        document.calibrationDir = m_folder.path();
        document.fovDeg = fov;
        document.minTempC = min;
        document.maxTempC = max;
        std::string whole = document.text() + "\n";
        const auto replaceOnce = [&whole](const std::string& from, const std::string& to) {
            ASSERT_NE(whole.find(from), std::string::npos);
            whole.replace(whole.find(from), from.size(), to);
        };
        replaceOnce("  <!--\n  <fov>", "  <fov>");
        replaceOnce("<optics_text></optics_text>\n  -->\n",
                    "<optics_text>" + text + "</optics_text>\n");
        return whole;
    }

    TempDir m_folder;
};

TEST_F(ConfigChoice, takesEffect) {
    EXPECT_EQ(config({"--optics", "60", "--range", "0.5..250"}),
              (RunResult{activated(60, 0, 250, "T&amp;1"), "", 0}));
    EXPECT_EQ(config({"--optics", "33"}), (RunResult{activated(33, -20, 100, ""), "", 0}));
    EXPECT_EQ(config({"--range=-20..100"}), (RunResult{activated(33, -20, 100, ""), "", 0}));
    EXPECT_EQ(config({"--range", "-20..100"}), (RunResult{activated(33, -20, 100, ""), "", 0}));
}

TEST_F(ConfigChoice, namesWhatThereIsWhenItIsWrong) {
    EXPECT_EQ(config({"--optics", "34"}),
              (RunResult{"",
                         "thermika: --optics: the camera was not calibrated for \"34\" (there is: "
                         "\"33\", \"60,T&amp;1\")\n",
                         2}));
}

TEST_F(ConfigChoice, needsTheDescription) {
    const RunResult result =
        runCompanion({"config", "14080046", "--dir", m_folder.path(), "--optics", "33"});
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.out, "");
}

TEST_F(ConfigChoice, isRefusedWhereItsTextIsNoXml) {
    std::string letters;  // of one line the reader takes no more than 4095
    for (int line = 0; line < 40; ++line) letters += '\n' + std::string(1000, 'a');
    for (const std::string& text :
         {std::string("a&b"), std::string("a\x01"), std::string("a\xE9"), '&' + letters,
          '&' + letters + ';', letters, std::string("a&nbsp;b"), std::string("a&#1;b")}) {
        thermika_test::writeDescription(
            m_folder, 14080045, opticsList(opticsElement(33, text, rangeElement("0", "9"))));
        const RunResult result = config({"--optics", "33"});
        EXPECT_EQ(result.status, 3) << result;
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err.find("ask the vendor"), std::string::npos) << result;
        EXPECT_LT(result.err.size(), 500U);
        EXPECT_EQ(config({}).status, 0);
    }
}

TEST_F(ConfigChoice, isRefusedWhereItIsOutsideTheSchema) {
    thermika_test::writeDescription(m_folder, 14080045,
                                    opticsList(opticsElement(361, "", rangeElement("0", "9"))));
    const std::string file = m_folder / "camera.xml";
    EXPECT_EQ(config({"--optics", "361", "-o", file}),
              (RunResult{"",
                         "thermika: the choice makes no right document: <fov> holds \"361\"; give "
                         "a whole number of degrees from 1 to 360: the field of view of one of the "
                         "camera's optics (choose another optics or range, or ask the vendor for "
                         "another description)\n",
                         3}));
    EXPECT_FALSE(fs::exists(file));
    const RunResult suggestion = config({});
    EXPECT_EQ(suggestion.status, 0);
    EXPECT_NE(suggestion.out.find("<fov>361</fov>"), std::string::npos);
}

/// The lines that `thermika completion` answers with.
std::vector<std::string> words(const std::string& directory, std::vector<std::string> more) {
    more.insert(more.begin(), {"--dir", directory, "completion"});
    std::istringstream lines(runCompanion(more).out);
    std::vector<std::string> all;
    for (std::string line; std::getline(lines, line);) all.push_back(line);
    return all;
}

/// What `thermika validate` says of what `thermika config` prints for the choice.
RunResult validated(const std::string& directory, const std::string& serial,
                    const std::vector<std::string>& choice) {
    const TempDir folder;
    const std::string file = folder / "camera.xml";
    std::vector<std::string> line = {"--dir", directory, "-q", "config", serial, "-o", file};
    line.insert(line.end(), choice.begin(), choice.end());
    const RunResult printed = runCompanion(line);
    if (printed.status != 0) return printed;
    return runCompanion({"--dir", directory, "-q", "validate", file, serial});
}

const RunResult kRight{"", "", 0};

TEST(Config, isRightForEveryTextThatADocumentMayHave) {
    const TempDir folder;
    for (const std::string& text :
         {std::string("T&amp;1"), std::string("A&#38;B"), std::string("&lt;&gt;&quot;&apos;"),
          std::string("a]]&gt;b"), std::string("a > b, c"), std::string("&amp;amp;"),
          std::string("33\u00b0"), std::string("&#xB0;&#x2028;&#x10FFFF;"),
          std::string("a\u00ad\u202eb"), std::string("a\tb&#13;&#10;&#9;"), std::string("&#32;"),
          std::string(200, 'T')}) {
        thermika_test::writeDescription(
            folder, 14080045,
            opticsList(opticsElement(33, "", rangeElement("-20", "100")) +
                       opticsElement(33, "other", rangeElement("-20", "100")) +
                       opticsElement(33, text, rangeElement("0", "250.5"))));
        EXPECT_EQ(validated(folder.path(), "14080045", {"--optics", "33," + text}), kRight) << text;
        EXPECT_EQ(validated(folder.path(), "14080045", {"--optics", "33"}), kRight);
    }
}

TEST(Config, isRightForEveryChoiceOfTheSamples) {
    for (const char* const serial : {"14080045", "14080046"}) {
        int choices = 0;
        for (const std::string& optics : words(THERMIKA_EXAMPLES, {"optics", serial})) {
            EXPECT_EQ(validated(THERMIKA_EXAMPLES, serial, {"--optics", optics}), kRight) << optics;
            for (const std::string& range : words(THERMIKA_EXAMPLES, {"ranges", serial, optics})) {
                const std::vector<std::string> choice = {"--optics", optics, "--range", range};
                EXPECT_EQ(validated(THERMIKA_EXAMPLES, serial, choice), kRight) << optics << range;
                ++choices;
            }
        }
        EXPECT_GT(choices, 0) << serial;
    }
}

TEST_F(ConfigChoice, goesToAFileThatIsNotOverwritten) {
    const std::string file = m_folder / "camera.xml";
    EXPECT_EQ(config({"--optics", "33", "-o", file}), (RunResult{"", "wrote " + file + "\n", 0}));
    EXPECT_EQ(readFile(file), activated(33, -20, 100, ""));
    EXPECT_EQ(
        config({"--optics", "60", "-o", file}),
        (RunResult{"", "thermika: cannot write " + file + ": File exists (--force replaces it)\n",
                   3}));
    EXPECT_EQ(readFile(file), activated(33, -20, 100, ""));
    EXPECT_EQ(config({"--optics", "60", "-o", file, "--force", "-q"}), (RunResult{"", "", 0}));
    EXPECT_EQ(readFile(file), activated(60, -20, 100, "T&amp;1"));
    EXPECT_EQ(config({"--force"}).status, 2);
}

TEST_F(ConfigChoice, goesToNoFileThatAScriptTakesForStandardOutput) {
    const auto inFolder = [this] {
        if (chdir(m_folder.path().c_str()) != 0) _exit(9);
    };
    const std::vector<std::string> line = {"config", "14080045", "-q", "-o"};
    const auto to = [&](const char* file) {
        auto whole = line;
        whole.emplace_back(file);
        return runCompanion(whole, inFolder);
    };
    EXPECT_EQ(to("-"),
              (RunResult{"",
                         "thermika: --output: \"-\" is no file's name (leave the option out "
                         "for standard output, or write ./-)\n",
                         2}));
    EXPECT_FALSE(fs::exists(m_folder / "-"));
    EXPECT_EQ(to("./-"), (RunResult{"", "", 0}));
    EXPECT_TRUE(fs::exists(m_folder / "-"));
}

TEST(Config, leavesNoFileOnAFullDisk) {
    inSandbox([] {
        fs::create_directories("/usr/share/full");
        thermika_test::mountOver("/usr/share/full", "size=4k");
        thermika_test::writeFile("/usr/share/full/all", std::string(4096, 'x'));
        EXPECT_EQ(runCompanion({"config", "14080045", "-q", "-o", "/usr/share/full/camera.xml"}),
                  (RunResult{"",
                             "thermika: cannot write /usr/share/full/camera.xml: No space left on "
                             "device (is the disk full?)\n",
                             3}));
        EXPECT_EQ(thermika_test::contents("/usr/share/full").size(), 1U);
    });
}

TEST(Config, refusesADirectoryThatIsNoXml) {
    const TempDir folder;
    const RunResult result = runCompanion({"config", "14080045", "--dir", folder / "a<b"});
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.err, "thermika: the directory \"" + (folder / "a<b") +
                              "\" cannot stand in an XML document (choose another with --dir)\n");
    // The last but one is another directory to the document's reader.
    for (const char* const name : {"a&b", "a]]>b", "a\x01", "a\xE9", "a&amp;b", "a\nb"})
        EXPECT_EQ(runCompanion({"config", "14080045", "--dir", folder / name}).status, 3) << name;
    EXPECT_EQ(runCompanion({"config", "14080045", "--dir", folder / "a\\ >b"}).status, 0);
}

}  // namespace
