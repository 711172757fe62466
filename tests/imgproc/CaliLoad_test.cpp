// Loading: which file is read when, what is held afterwards, what is logged, and what of the
// process changes.
#include "imgproc/Cali.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "imgproc/internal/CaliView.h"
#include "support/BuildPaths.h"
#include "support/CaliDescriptions.h"
#include "support/LogText.h"
#include "support/ProcessState.h"
#include "support/TestFiles.h"

namespace thermika_test {
namespace {

constexpr int kOtherCamera = 12345679;
constexpr int kCannotOpen = -2147024891;
constexpr uid_t kNobody = 65534;  // root may read everything, this user nothing of ours

using Lines = std::vector<std::string>;

std::string oneOptics(int fov) { return opticsList(opticsElement(fov, "", "")); }

std::string nameOf(int serial) { return "Cali-" + std::to_string(serial) + ".xml"; }

/// A folder below `folder` whose path has exactly so many characters.
std::string folderOfLength(const TempDir& folder, std::size_t characters) {
    const std::string start = folder / "";
    return start + std::string(characters - start.size(), 'd');
}

void expectBuiltIn(ConfigCali& cali) {
    EXPECT_EQ(cali.getOpticsCount(), 1);
    EXPECT_EQ(take(cali.getOptics(0)), std::make_pair(30, std::string("(null)")));
    ASSERT_EQ(cali.getTempRangeCount(30, nullptr), 3);
    EXPECT_EQ(take(cali.getTempRange(30, nullptr, 0)), std::make_pair(-20.0F, 100.0F));
    EXPECT_EQ(take(cali.getTempRange(30, nullptr, 1)), std::make_pair(0.0F, 250.0F));
    EXPECT_EQ(take(cali.getTempRange(30, nullptr, 2)), std::make_pair(150.0F, 900.0F));
    for (int j = 0; j < 3; ++j)
        EXPECT_EQ(take(cali.getExtendedTempRange(30, nullptr, j)),
                  std::make_pair(-100.0F, -100.0F));
    EXPECT_FALSE(cali.isSamplePointCali(0));
}

TEST(CaliLoad, holdsTheBuiltInDescriptionAtFirst) {
    ConfigCali cali;
    expectBuiltIn(cali);
    EXPECT_FALSE(cali.isLoaded(kSerial));
    EXPECT_FALSE(cali.isLoaded(-1)) << "the serial number held is -1, but nothing was loaded";
    EXPECT_FALSE(dax::CaliView(cali).hasEverLoaded());
}

TEST(CaliLoad, replacesTheBuiltInDescription) {
    const TempDir folder;
    writeDescription(folder, kSerial, oneOptics(62));
    ConfigCali cali;
    EXPECT_EQ(cali.load(folder.path().c_str(), kSerial), 0);
    EXPECT_EQ(cali.getOpticsCount(), 1);
    EXPECT_EQ(take(cali.getOptics(0)).first, 62);
    EXPECT_TRUE(cali.isLoaded(kSerial));
    EXPECT_FALSE(cali.isLoaded(kOtherCamera));
    EXPECT_TRUE(dax::CaliView(cali).hasEverLoaded());
}

TEST(CaliLoad, logsFolderNameAndTheFirstParameters) {
    const TempDir folder;
    writeDescription(folder, kSerial,
                     "<Main><TecA>1</TecA><TecB>65535</TecB><TecC>65536</TecC><TecD>-1</TecD>"
                     "</Main>");
    ConfigCali cali;
    LogCapture log;
    cali.load(folder.path().c_str(), kSerial);
    EXPECT_EQ(log.all(), (Lines{"DEBUG [Cali] Calibration directory path: " + folder.path(),
                                "DEBUG [Cali] Calibration file name: Cali-12345678.xml",
                                "DEBUG [Cali] Calibration data A: 1 B:65535 C:0 D:65535"}));
}

TEST(CaliLoad, logsDefaultParametersWhenTheDocumentHasNone) {
    const TempDir folder;
    writeDescription(folder, kSerial, "");
    ConfigCali cali;
    LogCapture log;
    cali.load(folder.path().c_str(), kSerial);
    EXPECT_EQ(log.all().at(2), "DEBUG [Cali] Calibration data A: 3400 B:400 C:400 D:120");
}

TEST(CaliLoad, answersForTheSameSerialWithoutReadingAgain) {
    const TempDir folder;
    writeDescription(folder, kSerial, oneOptics(62));
    ConfigCali cali;
    cali.load(folder.path().c_str(), kSerial);
    writeDescription(folder, kSerial, oneOptics(13));
    const ScopedLocale comma({{LC_NUMERIC, kDecimalCommaLocale}});
    LogCapture log;
    EXPECT_EQ(cali.load(folder.path().c_str(), kSerial), 0);
    EXPECT_EQ(log.all(), Lines{"DEBUG [Cali] Calibration XML file already loaded."});
    EXPECT_EQ(take(cali.getOptics(0)).first, 62);
    EXPECT_EQ(numericLocale(), kDecimalCommaLocale);
}

TEST(CaliLoad, answersForTheSameSerialWhateverTheFolder) {
    const TempDir folder;
    const TempDir other;
    writeDescription(folder, kSerial, oneOptics(62));
    writeDescription(other, kSerial, oneOptics(13));
    ConfigCali cali;
    cali.load(folder.path().c_str(), kSerial);
    EXPECT_EQ(cali.load(other.path().c_str(), kSerial), 0);
    EXPECT_EQ(cali.load((other / "absent").c_str(), kSerial), 0);
    EXPECT_EQ(cali.load(nullptr, kSerial), 0);
    EXPECT_EQ(take(cali.getOptics(0)).first, 62);
    EXPECT_FALSE(std::filesystem::exists(other / "absent"));
}

TEST(CaliLoad, replacesEverythingForAnotherSerial) {
    const TempDir folder;
    writeDescription(folder, kSerial,
                     "<Main><TecA>7</TecA></Main>" +
                         opticsList(opticsElement(62, "A", "") + opticsElement(63, "B", "")));
    writeDescription(folder, kOtherCamera, oneOptics(13));
    ConfigCali cali;
    cali.load(folder.path().c_str(), kSerial);
    LogCapture log;
    EXPECT_EQ(cali.load(folder.path().c_str(), kOtherCamera), 0);
    EXPECT_EQ(log.all(),
              (Lines{"DEBUG [Cali] Serial number has changed (12345679), reload Calibration XML.",
                     "DEBUG [Cali] Calibration directory path: " + folder.path(),
                     "DEBUG [Cali] Calibration file name: Cali-12345679.xml",
                     "DEBUG [Cali] Calibration data A: 3400 B:400 C:400 D:120"}));
    EXPECT_EQ(cali.getOpticsCount(), 1);
    EXPECT_EQ(take(cali.getOptics(0)), std::make_pair(13, std::string()));
    EXPECT_EQ(cali.getTempRangeCount(62, asText("A")), -1);
    EXPECT_TRUE(cali.isLoaded(kOtherCamera));
    EXPECT_FALSE(cali.isLoaded(kSerial));
}

TEST(CaliLoad, fallsBackToTheBuiltInDescriptionWhenTheNextFileIsMissing) {
    const TempDir folder;
    writeDescription(folder, kSerial, oneOptics(62));
    ConfigCali cali;
    cali.load(folder.path().c_str(), kSerial);
    LogCapture log;
    EXPECT_EQ(cali.load(folder.path().c_str(), kOtherCamera), kCannotOpen);
    EXPECT_EQ(log.all(),
              (Lines{"DEBUG [Cali] Serial number has changed (12345679), reload Calibration XML.",
                     "DEBUG [Cali] Calibration directory path: " + folder.path(),
                     "DEBUG [Cali] Calibration file name: Cali-12345679.xml",
                     "DEBUG [SimpleXML] Failed to open file " + (folder / nameOf(kOtherCamera))}));
    expectBuiltIn(cali);
    EXPECT_FALSE(cali.isLoaded(kSerial));
    EXPECT_FALSE(cali.isLoaded(kOtherCamera));
    EXPECT_FALSE(cali.isLoaded(-1));
    EXPECT_TRUE(dax::CaliView(cali).hasEverLoaded());
}

TEST(CaliLoad, readsTheFirstSerialAgainAfterAFailedReload) {
    const TempDir folder;
    writeDescription(folder, kSerial, oneOptics(62));
    ConfigCali cali;
    cali.load(folder.path().c_str(), kSerial);
    cali.load(folder.path().c_str(), kOtherCamera);
    writeDescription(folder, kSerial, oneOptics(13));
    LogCapture log;
    EXPECT_EQ(cali.load(folder.path().c_str(), kSerial), 0);
    EXPECT_EQ(log.all().front(), "DEBUG [Cali] Calibration directory path: " + folder.path());
    EXPECT_EQ(take(cali.getOptics(0)).first, 13);
    EXPECT_TRUE(cali.isLoaded(kSerial));
}

TEST(CaliLoad, keepsTheBuiltInDescriptionWhenTheFirstFileIsMissing) {
    const TempDir folder;
    ConfigCali cali;
    EXPECT_EQ(cali.load(folder.path().c_str(), kSerial), kCannotOpen);
    expectBuiltIn(cali);
    EXPECT_FALSE(cali.isLoaded(kSerial));
    EXPECT_FALSE(dax::CaliView(cali).hasEverLoaded());
}

TEST(CaliLoad, refusesWhatIsNoReadableFile) {
    const TempDir folder;
    std::filesystem::create_directory(folder / nameOf(1));
    writeFile(folder / nameOf(2), "");
    ASSERT_EQ(mkfifo((folder / nameOf(3)).c_str(), 0600), 0);
    std::filesystem::create_symlink("nowhere", folder / nameOf(4));
    std::filesystem::create_symlink(nameOf(5), folder / nameOf(5));
    ConfigCali cali;
    for (int serial = 1; serial <= 5; ++serial) {
        EXPECT_EQ(cali.load(folder.path().c_str(), serial), kCannotOpen) << serial;
        EXPECT_FALSE(cali.isLoaded(serial)) << serial;
    }
    EXPECT_EQ(cali.load(nullptr, 6), kCannotOpen);
}

TEST(CaliLoad, refusesAFileThatItMayNotRead) {
    const TempDir folder;
    writeDescription(folder, kSerial, oneOptics(62));
    // The folder may be entered: it is the file that is refused.
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    ASSERT_EQ(chmod((folder / nameOf(kSerial)).c_str(), 0), 0);
    ConfigCali cali;
    const uid_t user = geteuid();
    if (user == 0) {
        ASSERT_EQ(seteuid(kNobody), 0);
    }
    const int status = cali.load(folder.path().c_str(), kSerial);
    if (user == 0) {
        ASSERT_EQ(seteuid(user), 0);
    }
    EXPECT_EQ(status, kCannotOpen);
    expectBuiltIn(cali);
}

TEST(CaliLoad, refusesAnUnclosedComment) {
    const TempDir folder;
    writeDescription(folder, kSerial, "<!--" + oneOptics(62));
    ConfigCali cali;
    LogCapture log;
    EXPECT_EQ(cali.load(folder.path().c_str(), kSerial), kCannotOpen);
    EXPECT_EQ(log.all().back(), "ERROR [SimpleXML] Format of file " + (folder / nameOf(kSerial)) +
                                    " is wrong. Verify, that the XML document is well-formed!");
    expectBuiltIn(cali);
}

std::size_t countOf(std::string_view word, std::string_view text) {
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at < text.size(); at = text.find(word, at + 1)) ++count;
    return count;
}

// A copy that was interrupted: what is complete is there, and half a comment is no document.
TEST(CaliLoad, loadsTheCompleteOpticsOfACutFile) {
    const std::string sample = readFile(THERMIKA_EXAMPLES "/Cali-14080045.xml");
    const std::size_t root = sample.find("<CaliData");
    const TempDir folder;
    for (std::size_t length = 1; length <= sample.size(); ++length) {
        SCOPED_TRACE(length);
        const std::string cut = sample.substr(0, length);
        writeFile(folder / nameOf(kSerial), cut);
        const std::string_view inside = std::string_view(cut).substr(std::min(root, length));
        const bool isWhole = countOf("<!--", inside) == countOf("-->", inside);
        ConfigCali cali;
        ASSERT_EQ(cali.load(folder.path().c_str(), kSerial), isWhole ? 0 : kCannotOpen);
        const std::size_t complete = isWhole ? countOf("</OpticsDef>", inside) : 1;
        ASSERT_EQ(cali.getOpticsCount(), static_cast<int>(complete));
    }
}

TEST(CaliLoad, leavesNoFileOpen) {
    const TempDir folder;
    writeDescription(folder, kSerial, oneOptics(62));
    ConfigCali cali;
    const std::size_t before = openDescriptors();
    cali.load(folder.path().c_str(), kSerial);
    cali.load(folder.path().c_str(), kOtherCamera);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(CaliLoad, takesAnySerialNumber) {
    const TempDir folder;
    writeDescription(folder, -2147483647 - 1, oneOptics(62));
    writeDescription(folder, 0, oneOptics(63));
    writeDescription(folder, -1, oneOptics(64));
    ConfigCali cali;
    EXPECT_EQ(cali.load(folder.path().c_str(), -1), 0);
    EXPECT_TRUE(cali.isLoaded(-1));
    EXPECT_EQ(take(cali.getOptics(0)).first, 64);
    EXPECT_EQ(cali.load(folder.path().c_str(), -2147483647 - 1), 0);
    EXPECT_EQ(take(cali.getOptics(0)).first, 62);
    EXPECT_EQ(cali.load(folder.path().c_str(), 0), 0);
    EXPECT_EQ(take(cali.getOptics(0)).first, 63);
}

TEST(CaliLoad, createsTheFolderWithTheModeThatTheUmaskLeaves) {
    const TempDir folder;
    const std::string absent = folder / "cali";
    ConfigCali cali;
    const mode_t former = umask(027);
    EXPECT_EQ(cali.load(absent.c_str(), kSerial), kCannotOpen);
    umask(former);
    struct stat status {};
    ASSERT_EQ(stat(absent.c_str(), &status), 0);
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    EXPECT_EQ(status.st_mode & 0777U, 0750U);
    EXPECT_TRUE(std::filesystem::is_empty(absent));
}

TEST(CaliLoad, createsOneLevelOfFoldersOnly) {
    const TempDir folder;
    ConfigCali cali;
    EXPECT_EQ(cali.load((folder / "a/b").c_str(), kSerial), kCannotOpen);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(CaliLoad, looksBelowTheWorkingFolderWhenNoneIsNamed) {
    const TempDir folder;
    std::filesystem::create_directory(folder / "Imager");
    writeFile(folder / ("Imager/" + nameOf(kSerial)), description(oneOptics(62)));
    const thermika_test::WorkingDirectory here(folder.path());
    ConfigCali cali;
    EXPECT_EQ(cali.load("", kSerial), 0);
    EXPECT_EQ(take(cali.getOptics(0)).first, 62);
}

TEST(CaliLoad, readsBelowTheLongestFolderPath) {
    const TempDir folder;
    const std::string longest = folderOfLength(folder, 241);
    std::filesystem::create_directory(longest);
    writeFile(longest + "/" + nameOf(kSerial), description(oneOptics(62)));
    ConfigCali cali;
    EXPECT_EQ(cali.load(longest.c_str(), kSerial), 0);
    EXPECT_EQ(take(cali.getOptics(0)).first, 62);
}

TEST(CaliLoadDeathTest, endsTheProcessOnALongerFolderPath) {
    const TempDir folder;
    const std::string tooLong = folderOfLength(folder, 242);
    std::filesystem::create_directory(tooLong);
    ConfigCali cali;
    EXPECT_EXIT(cali.load(tooLong.c_str(), kSerial), testing::KilledBySignal(SIGABRT),
                "path of 260 characters exceeds the limit of 259");
}

TEST(CaliLoad, readsDecimalPointsInADecimalCommaLocale) {
    const TempDir folder;
    writeDescription(folder, kSerial,
                     opticsList(opticsElement(62, "", rangeElement("-20.5", "1.25e2"))));
    const ScopedLocale comma({{LC_ALL, kDecimalCommaLocale}});
    ConfigCali cali;
    cali.load(folder.path().c_str(), kSerial);
    EXPECT_EQ(take(cali.getTempRange(62, nullptr, 0)), std::make_pair(-20.5F, 125.0F));
    EXPECT_EQ(numericLocale(), kDecimalCommaLocale) << "the reader leaves the name of LC_CTYPE";
}

TEST(CaliLoad, leavesTheNumericLocaleAtCWhenNoValueWasRead) {
    const TempDir folder;
    writeDescription(folder, kOtherCamera, "");
    for (const int serial : {kSerial, kOtherCamera}) {
        const ScopedLocale comma({{LC_ALL, kDecimalCommaLocale}});
        ConfigCali cali;
        cali.load(folder.path().c_str(), serial);
        EXPECT_EQ(numericLocale(), "C") << serial;
    }
}

TEST(CaliLoad, setsTheNumericLocaleEvenForNoFolder) {
    const ScopedLocale comma({{LC_ALL, kDecimalCommaLocale}});
    ConfigCali cali;
    cali.load(nullptr, kSerial);
    EXPECT_EQ(numericLocale(), "C");
}

TEST(CaliLoad, offersOneObjectAProcess) {
    EXPECT_NE(ConfigCali::getInstance(), nullptr);
    EXPECT_EQ(ConfigCali::getInstance(), ConfigCali::getInstance());
    EXPECT_FALSE(std::is_copy_constructible_v<ConfigCali>);
}

// An exit handler that was registered before the object existed runs after all of its time.
TEST(CaliLoadDeathTest, neverDestroysTheOneObject) {
    const auto useAtExit = [] {
        std::atexit([] {
            std::cerr << "optics at exit: " << ConfigCali::getInstance()->getOpticsCount() << '\n';
        });
        ConfigCali::getInstance();
        std::exit(0);
    };
    EXPECT_EXIT(useAtExit(), testing::ExitedWithCode(0), "optics at exit: 1");
}

}  // namespace
}  // namespace thermika_test
