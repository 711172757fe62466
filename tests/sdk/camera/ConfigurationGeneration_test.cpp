// What the manager puts into a camera's configuration document: its directories, and what it finds
// in the camera's description. In a sandbox, since the reader of descriptions logs.
#include <sys/stat.h>

#include <climits>
#include <clocale>
#include <filesystem>
#include <iterator>
#include <locale>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "sdk/IRCalibrationManager.h"
#include "sdk/IRLogger.h"
#include "support/BuildPaths.h"
#include "support/ExpectedDocument.h"
#include "support/LogText.h"
#include "support/ProcessState.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using dax::IRCalibrationManager;
using thermika_test::ExpectedDocument;
using thermika_test::inSandbox;

constexpr const char* kDescription = "/usr/share/libthermika/cali/Cali-12345678.xml";

void writeDescription(const std::string& text) {
    fs::create_directories(fs::path(kDescription).parent_path());
    thermika_test::writeFile(kDescription, text);
}

/// A description with one optics that holds `fov` before its one range, which holds `limits`.
std::string describe(const std::string& fov, const std::string& limits) {
    return "<CaliData>\n<Temperature>\n<Optics>\n<OpticsDef>\n" + fov +
           "\n<TempRanges>\n<TemperatureRange>\n" + limits +
           "\n</TemperatureRange>\n</TempRanges>\n</OpticsDef>\n</Optics>\n</Temperature>\n"
           "</CaliData>\n";
}

std::string generate(unsigned long serial = 12345678) {
    dax::IRLogger::setVerbosity(dax::IRLOG_OFF, dax::IRLOG_OFF, nullptr);
    return IRCalibrationManager::getInstance()->generateConfiguration(serial);
}

std::string expected(int fovDeg, int minTempC, int maxTempC) {
    ExpectedDocument document;
    document.fovDeg = fovDeg;
    document.minTempC = minTempC;
    document.maxTempC = maxTempC;
    return document.text();
}

/// The three numbers in the document, which is as expected otherwise.
void expectNumbers(const std::string& description, int fovDeg, int minTempC, int maxTempC) {
    writeDescription(description);
    EXPECT_EQ(generate(), expected(fovDeg, minTempC, maxTempC)) << description;
}

TEST(ConfigurationGeneration, takesDefaultsWithoutADescription) {
    inSandbox([] { EXPECT_EQ(generate(), expected(0, -20, 100)); });
}

TEST(ConfigurationGeneration, takesFieldOfViewAndLimitsFromTheDescription) {
    inSandbox([] {
        expectNumbers(describe("<FOV>33</FOV>", "<TempLo>-20</TempLo><TempHi>150</TempHi>"), 33,
                      -20, 150);
        expectNumbers(describe("<FOV>60</FOV>", "<TempHi>1500</TempHi><TempLo>450</TempLo>"), 60,
                      450, 1500);
    });
}

TEST(ConfigurationGeneration, takesTheFirstOpticsAndRangeOfTheSample) {
    inSandbox([] {
        IRCalibrationManager::getInstance()->setCalibrationDir(THERMIKA_EXAMPLES);
        EXPECT_EQ(generate(14080045), (ExpectedDocument{"14080045", "/usr/share/libthermika",
                                                        THERMIKA_EXAMPLES, 33, -20, 100}
                                           .text()));
        EXPECT_EQ(generate(14080046), (ExpectedDocument{"14080046", "/usr/share/libthermika",
                                                        THERMIKA_EXAMPLES, 60, 0, 250}
                                           .text()));
    });
}

TEST(ConfigurationGeneration, takesTheFirstOfSeveralRanges) {
    inSandbox([] {
        expectNumbers(describe("<FOV>33</FOV>",
                               "<TempLo>1</TempLo>\n<TempHi>2</TempHi>\n</TemperatureRange>\n"
                               "<TemperatureRange>\n<TempLo>3</TempLo>\n<TempHi>4</TempHi>"),
                      33, 1, 2);
    });
}

TEST(ConfigurationGeneration, takesTheFirstOfSeveralOptics) {
    inSandbox([] {
        expectNumbers(
            "<CaliData>\n<Temperature>\n<Optics>\n"
            "<OpticsDef>\n<FOV>33</FOV>\n<TempRanges>\n<TemperatureRange>\n"
            "<TempLo>1</TempLo>\n<TempHi>2</TempHi>\n"
            "</TemperatureRange>\n</TempRanges>\n</OpticsDef>\n"
            "<OpticsDef>\n<FOV>53</FOV>\n<TempRanges>\n<TemperatureRange>\n"
            "<TempLo>3</TempLo>\n<TempHi>4</TempHi>\n"
            "</TemperatureRange>\n</TempRanges>\n</OpticsDef>\n"
            "</Optics>\n</Temperature>\n</CaliData>\n",
            33, 1, 2);
    });
}

TEST(ConfigurationGeneration, readsNoNumbersOutsideTheirPlace) {
    inSandbox([] {
        const std::string values = "<FOV>7</FOV>\n<TempLo>7</TempLo>\n<TempHi>7</TempHi>\n";
        const std::string range = "<TemperatureRange>\n" + values + "</TemperatureRange>\n";
        const std::string ranges = "<TempRanges>\n" + range + "</TempRanges>\n";
        const std::string optics = "<OpticsDef>\n" + values + ranges + "</OpticsDef>\n";
        expectNumbers("<CaliData>\n" + values + "<Optics>\n" + optics + "</Optics>\n" + optics +
                          "<Temperature>\n" + values + optics + "<Optics>\n" + values + ranges +
                          "<OpticsDef>\n<TempLo>7</TempLo>\n" +
                          "<TemperatureRange>\n<TempLo>7</TempLo>\n</TemperatureRange>\n" +
                          "<TempRanges>\n<TempHi>7</TempHi>\n<TemperatureRange>\n" +
                          "</TemperatureRange>\n</TempRanges>\n</OpticsDef>\n</Optics>\n" +
                          "</Temperature>\n</CaliData>\n",
                      0, -20, 100);
    });
}

TEST(ConfigurationGeneration, keepsTheDefaultOfEachMissingValue) {
    inSandbox([] {
        const std::string fov = "<FOV>33</FOV>";
        const std::string low = "<TempLo>1</TempLo>";
        const std::string high = "<TempHi>2</TempHi>";
        expectNumbers(describe("", low + high), 0, 1, 2);
        expectNumbers(describe(fov, high), 33, -20, 2);
        expectNumbers(describe(fov, low), 33, 1, 100);
        expectNumbers(describe(fov, ""), 33, -20, 100);
        expectNumbers(describe("", ""), 0, -20, 100);
    });
}

TEST(ConfigurationGeneration, keepsTheDefaultOfEachValueThatIsNoNumber) {
    inSandbox([] {
        expectNumbers(describe("<FOV></FOV>", "<TempLo>low</TempLo><TempHi>1e3</TempHi>"), 0, -20,
                      1);
    });
}

TEST(ConfigurationGeneration, takesHexadecimalAndOctalNumbersAndDropsFractions) {
    inSandbox([] {
        expectNumbers(describe("<FOV>0x21</FOV>", "<TempLo>-010</TempLo><TempHi>99.9</TempHi>"), 33,
                      -8, 99);
    });
}

// Whether an element is there is not asked, so the values of the one around it are taken.
TEST(ConfigurationGeneration, looksFurtherOutWhereAnElementIsMissing) {
    inSandbox([] {
        const std::string values = "<FOV>33</FOV>\n<TempLo>1</TempLo>\n<TempHi>2</TempHi>\n";
        expectNumbers("<CaliData>\n" + values + "</CaliData>\n", 33, 1, 2);
        expectNumbers("<CaliData>\n<OpticsDef>\n" + values + "</OpticsDef>\n</CaliData>\n", 33, 1,
                      2);
        expectNumbers("<CaliData>\n<Temperature>\n" + values + "</Temperature>\n</CaliData>\n", 33,
                      1, 2);
    });
}

TEST(ConfigurationGeneration, readsNoNumbersInComments) {
    inSandbox([] {
        expectNumbers(describe("<!-- <FOV>7</FOV> -->\n<FOV>33</FOV>",
                               "<!--\n<TempLo>7</TempLo>\n--><TempHi>2</TempHi>"),
                      33, -20, 2);
    });
}

TEST(ConfigurationGeneration, takesDefaultsWithoutTheRootElement) {
    inSandbox([] {
        expectNumbers("<Calibration>\n<FOV>33</FOV>\n</Calibration>\n", 0, -20, 100);
        expectNumbers("<FOV>33</FOV>\n", 0, -20, 100);
        expectNumbers("no element at all", 0, -20, 100);
        expectNumbers("", 0, -20, 100);
    });
}

TEST(ConfigurationGeneration, takesDefaultsWhenCommentsDoNotPairUp) {
    inSandbox([] {
        expectNumbers(describe("<FOV>33</FOV> -->", "<TempLo>1</TempLo>"), 0, -20, 100);
        expectNumbers(describe("<!-- <FOV>33</FOV>", "<TempLo>1</TempLo>"), 0, -20, 100);
    });
}

TEST(ConfigurationGeneration, takesDefaultsWhenTheDescriptionMayNotBeRead) {
    inSandbox([] {
        writeDescription(describe("<FOV>33</FOV>", ""));
        fs::permissions(kDescription, fs::perms::none);
        EXPECT_EQ(generate(), expected(0, -20, 100));
    });
}

TEST(ConfigurationGeneration, takesDefaultsWhenTheDescriptionIsNoFile) {
    inSandbox([] {
        fs::create_directories(kDescription);
        EXPECT_EQ(generate(), expected(0, -20, 100));
        fs::remove(kDescription);
        ASSERT_EQ(mkfifo(kDescription, 0666), 0);
        EXPECT_EQ(generate(), expected(0, -20, 100));
    });
}

TEST(ConfigurationGeneration, readsTheDescriptionAnewEachTime) {
    inSandbox([] {
        writeDescription(describe("<FOV>33</FOV>", "<TempLo>1</TempLo>"));
        const std::string first = generate();
        EXPECT_EQ(first, expected(33, 1, 100));
        EXPECT_EQ(generate(), first);
        expectNumbers(describe("<FOV>53</FOV>", "<TempHi>2</TempHi>"), 53, -20, 2);
        fs::remove(kDescription);
        EXPECT_EQ(generate(), expected(0, -20, 100));
    });
}

TEST(ConfigurationGeneration, takesTheDescriptionOfTheSerialGivenWhateverItIs) {
    inSandbox([] {
        for (const unsigned long serial : {0UL, 7UL, ULONG_MAX}) {
            ExpectedDocument document;
            document.serial = std::to_string(serial);
            EXPECT_EQ(generate(serial), document.text());
            writeDescription(describe("<FOV>33</FOV>", ""));
            fs::rename(kDescription,
                       "/usr/share/libthermika/cali/Cali-" + document.serial + ".xml");
            document.fovDeg = 33;
            EXPECT_EQ(generate(serial), document.text());
        }
    });
}

TEST(ConfigurationGeneration, writesItsDirectoriesAsTheyStand) {
    inSandbox([] {
        IRCalibrationManager* const manager = IRCalibrationManager::getInstance();
        ExpectedDocument document;
        document.formatsDir = "/a&b<c>\"d'</formatspath>%s";
        document.calibrationDir = "/usr/share/<K\xc3\xa4lte> & \"more\"/";
        document.fovDeg = 33;
        fs::create_directory(document.calibrationDir);
        thermika_test::writeFile(document.calibrationDir + "Cali-12345678.xml",
                                 describe("<FOV>33</FOV>", ""));
        manager->setFormatsDir(document.formatsDir.c_str());
        manager->setCalibrationDir(document.calibrationDir.c_str());
        EXPECT_EQ(generate(), document.text());
    });
}

TEST(ConfigurationGeneration, takesARelativeCalibrationDirectoryFromTheWorkingDirectory) {
    inSandbox([] {
        fs::create_directory("/usr/share/c");
        thermika_test::writeFile("/usr/share/c/Cali-12345678.xml", describe("<FOV>33</FOV>", ""));
        fs::current_path("/usr/share");
        IRCalibrationManager::getInstance()->setCalibrationDir("c");
        ExpectedDocument document;
        document.calibrationDir = "c";
        document.fovDeg = 33;
        EXPECT_EQ(generate(), document.text());
    });
}

TEST(ConfigurationGeneration, readsNoFurtherThanADirectoryArrayWithoutTerminator) {
    inSandbox([] {
        std::string dir = "/usr/share/";
        dir += std::string(120, 'a') + "/";
        dir += std::string(260 - dir.size(), 'b');
        fs::create_directories(dir);
        thermika_test::writeFile(dir + "/Cali-12345678.xml", describe("<FOV>33</FOV>", ""));
        // Used memory of the arrays' size, so that what lies behind them is not zero by chance.
        { const std::vector<std::string> used(7, std::string(263, 'x')); }
        IRCalibrationManager* const manager = IRCalibrationManager::getInstance();
        manager->setCalibrationDir((dir + "/cut/off").c_str());
        manager->setFormatsDir((dir + "cut off").c_str());
        ExpectedDocument document;
        document.formatsDir = dir;
        document.calibrationDir = dir;
        document.fovDeg = 33;
        EXPECT_EQ(generate(), document.text());
    });
}

TEST(ConfigurationGeneration, leavesTheNumericLocaleAtC) {
    inSandbox([] {
        using thermika_test::kDecimalCommaLocale;
        const thermika_test::ScopedLocale german(
            {{LC_CTYPE, kDecimalCommaLocale}, {LC_NUMERIC, kDecimalCommaLocale}});
        EXPECT_EQ(generate(), expected(0, -20, 100));
        EXPECT_EQ(thermika_test::numericLocale(), "C");

        ASSERT_NE(std::setlocale(LC_NUMERIC, kDecimalCommaLocale), nullptr);
        expectNumbers(describe("<FOV>33</FOV>", "<TempLo>1.5</TempLo>"), 33, 1, 100);
        EXPECT_EQ(thermika_test::numericLocale(), "C");
        EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), kDecimalCommaLocale);
    });
}

TEST(ConfigurationGeneration, groupsNoDigits) {
    inSandbox([] {
        std::locale::global(std::locale(std::locale(), new thermika_test::Grouping));
        expectNumbers(describe("<FOV>1234</FOV>", "<TempLo>-5678</TempLo><TempHi>9999</TempHi>"),
                      1234, -5678, 9999);
    });
}

/// What is logged meanwhile, every severity of it.
std::string logOfGeneration() {
    dax::IRLogger::setVerbosity(dax::IRLOG_DEBUG, dax::IRLOG_OFF, nullptr);
    thermika_test::StderrCapture log;
    IRCalibrationManager::getInstance()->generateConfiguration(12345678);
    return thermika_test::withoutSecondsAndLines(log.text(), "SimpleXML");
}

TEST(ConfigurationGeneration, logsNothingButWhatTheReaderSays) {
    inSandbox([] {
        EXPECT_EQ(logOfGeneration(), std::string("DEBUG [SimpleXML:#] @ #s :Failed to open file ") +
                                         kDescription + "\n");
        writeDescription(describe("", ""));
        EXPECT_EQ(logOfGeneration(), "");
        writeDescription("<Other>\n</Other>\n");
        EXPECT_EQ(logOfGeneration(), "");
    });
}

TEST(ConfigurationGeneration, leavesNoDescriptorOpenAndCreatesNothing) {
    inSandbox([] {
        const auto count = [](const char* dir) {
            return std::distance(fs::directory_iterator(dir), fs::directory_iterator());
        };
        const auto descriptors = count("/proc/self/fd");
        generate();
        EXPECT_EQ(count("/usr/share"), 0);
        writeDescription(describe("<FOV>33</FOV>", ""));
        generate();
        EXPECT_EQ(count("/proc/self/fd"), descriptors);
        EXPECT_EQ(count("/usr/share/libthermika/cali"), 1);
    });
}

}  // namespace
