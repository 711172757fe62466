// Which files the file check expects of a camera, in which order it lists the missing ones, and the
// two-step protocol of asking for a list. What it does to directories stands in
// FileCheckPaths_test.cpp.
#include <gtest/gtest.h>

#include <clocale>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "imgproc/Cali.h"
#include "support/CaliDescriptions.h"
#include "support/CaliTest.h"
#include "support/Locales.h"
#include "support/LogLines.h"

namespace {

using thermika_test::LogLines;
using thermika_test::opticsElement;
using thermika_test::rangeElement;
using thermika_test::samplePointOpticsElement;
using thermika_test::ScopedLocale;
using thermika_test::writeFile;

constexpr int kSerial = 12345678;
constexpr int kOtherSerial = 12345679;
constexpr const char* kComplete = "(null)";

/// What checkCaliFiles() is told beside the directory, the serial and the buffer.
struct Names {
    const char* description = "Cali-%i.xml";
    const char* data = "Cali-%s.dat";
    const char* curve = "Kennlinie-%s.prn";
    const char* separator = ";";
};

class FileCheck : public thermika_test::CaliTest {
protected:
    /// What checkCalibration() lists.
    std::string missing(unsigned long serial = kSerial) const {
        const std::unique_ptr<char[]> list(manager().checkCalibration(serial));
        return list ? list.get() : kComplete;
    }

    bool check(char* list, int& size, int serial = kSerial, const Names& names = {}) const {
        return manager().checkCaliFiles(cali().c_str(), serial, list, &size, names.description,
                                        names.data, names.curve, names.separator);
    }

    /// The list as a caller gets it that does as the header says, in a block of exactly those
    /// bytes.
    std::string list(int serial, const Names& names = {}) const {
        int size = -1;
        check(nullptr, size, serial, names);
        const auto bytes = static_cast<std::size_t>(size) + 1;
        const std::unique_ptr<char[]> buffer(new char[bytes]);
        std::memset(buffer.get(), '?', bytes);
        check(buffer.get(), size, serial, names);
        return buffer.get();
    }

    /// One optics, field of view 33, no text, from -20 to 100 with 27 and 80 frames per second.
    void describeUsualCamera() const {
        describe(kSerial, opticsElement(33, "", rangeElement("-20", "100", {27, 80})));
    }

    void provide(const std::string& file) const { writeFile(cali() + "/" + file, ""); }
};

TEST_F(FileCheck, listsDataAndCurveFileOfEveryFrameRateInOrder) {
    describeUsualCamera();
    EXPECT_EQ(missing(),
              "Cali-12345678-33-M20-100-27.dat;Kennlinie-12345678-33-M20-100-27.prn;"
              "Cali-12345678-33-M20-100-80.dat;Kennlinie-12345678-33-M20-100-80.prn;");
}

TEST_F(FileCheck, putsTheOpticsTextAfterTheFieldOfView) {
    describe(kSerial, opticsElement(33, "O33", rangeElement("-20", "100", {27, 80})));
    EXPECT_EQ(missing(),
              "Cali-12345678-33-O33-M20-100-27.dat;Kennlinie-12345678-33-O33-M20-100-27.prn;"
              "Cali-12345678-33-O33-M20-100-80.dat;Kennlinie-12345678-33-O33-M20-100-80.prn;");
}

TEST_F(FileCheck, takesAnEmptyTextForNone) {
    describe(kSerial, opticsElement(33, "", rangeElement("0", "250", {27})) +
                          "<OpticsDef>\n<FOV>60</FOV>\n<TempRanges>\n" +
                          rangeElement("0", "250", {27}) + "</TempRanges>\n</OpticsDef>\n");
    EXPECT_EQ(missing(),
              "Cali-12345678-33-0-250-27.dat;Kennlinie-12345678-33-0-250-27.prn;"
              "Cali-12345678-60-0-250-27.dat;Kennlinie-12345678-60-0-250-27.prn;");
}

TEST_F(FileCheck, asksForNoCurveFilesOfSamplePointOptics) {
    describe(kSerial, samplePointOpticsElement(
                          33, "", rangeElement("-20", "100", {27, 80}) + rangeElement("0", "250")));
    EXPECT_EQ(missing(),
              "Cali-12345678-33-M20-100-27.dat;Cali-12345678-33-M20-100-80.dat;"
              "Cali-12345678-33-0-250.dat;");
}

TEST_F(FileCheck, leavesFrameRateZeroOutOfTheName) {
    describe(kSerial, opticsElement(33, "", rangeElement("0", "250", {27, 0, 80})));
    EXPECT_EQ(missing(),
              "Cali-12345678-33-0-250-27.dat;Kennlinie-12345678-33-0-250-27.prn;"
              "Cali-12345678-33-0-250.dat;Kennlinie-12345678-33-0-250.prn;"
              "Cali-12345678-33-0-250-80.dat;Kennlinie-12345678-33-0-250-80.prn;");
}

TEST_F(FileCheck, expectsOneNameOfARangeWithoutFrameRates) {
    describe(kSerial, opticsElement(33, "", rangeElement("0", "250")));
    EXPECT_EQ(missing(), "Cali-12345678-33-0-250.dat;Kennlinie-12345678-33-0-250.prn;");
}

TEST_F(FileCheck, expectsOneNameOfARangeWithAnEmptyListOfFrameRates) {
    describe(kSerial, opticsElement(33, "", rangeElement("0", "250", std::vector<int>{})));
    EXPECT_EQ(missing(), "Cali-12345678-33-0-250.dat;Kennlinie-12345678-33-0-250.prn;");
}

TEST_F(FileCheck, walksOpticsThenRangesThenFrameRates) {
    describe(kSerial,
             opticsElement(60, "HT", rangeElement("150", "900") + rangeElement("0", "250", {27})) +
                 samplePointOpticsElement(30, "", rangeElement("-20", "100", {80, 27})));
    EXPECT_EQ(missing(),
              "Cali-12345678-60-HT-150-900.dat;Kennlinie-12345678-60-HT-150-900.prn;"
              "Cali-12345678-60-HT-0-250-27.dat;Kennlinie-12345678-60-HT-0-250-27.prn;"
              "Cali-12345678-30-M20-100-80.dat;Cali-12345678-30-M20-100-27.dat;");
}

TEST_F(FileCheck, expectsTheDefaultRangesOfOpticsThatTellNone) {
    describe(kSerial, "<OpticsDef>\n<FOV>33</FOV>\n</OpticsDef>\n");
    EXPECT_EQ(missing(),
              "Cali-12345678-33-M20-100.dat;Kennlinie-12345678-33-M20-100.prn;"
              "Cali-12345678-33-0-250.dat;Kennlinie-12345678-33-0-250.prn;"
              "Cali-12345678-33-150-900.dat;Kennlinie-12345678-33-150-900.prn;");
}

TEST_F(FileCheck, signsABoundBelowZeroWhoseNumberIsZero) {
    describe(kSerial, samplePointOpticsElement(33, "", rangeElement("-0.5", "-0.1", {27})));
    EXPECT_EQ(missing(), "Cali-12345678-33-M0-M0-27.dat;");
}

TEST_F(FileCheck, cutsFractionsOffAndSaturatesWhatNoIntHolds) {
    describe(kSerial, samplePointOpticsElement(33, "",
                                               rangeElement("-20.7", "100.9", {27}) +
                                                   rangeElement("-1e30", "1e30", {27})));
    EXPECT_EQ(missing(),
              "Cali-12345678-33-M20-100-27.dat;Cali-12345678-33-M2147483647-2147483647-27.dat;");
}

// A bound that is no number equals nothing, so the range's own frame rates are not found by it.
TEST_F(FileCheck, expectsOneNameOfARangeThatIsNotFoundByItsBounds) {
    describe(kSerial, samplePointOpticsElement(33, "", rangeElement("nan", "100", {27, 80})));
    EXPECT_EQ(missing(), "Cali-12345678-33-0-100.dat;");
}

TEST_F(FileCheck, readsBoundsWithAPointWhateverTheLocale) {
    const ScopedLocale locale({{LC_NUMERIC, thermika_test::kDecimalCommaLocale},
                               {LC_CTYPE, thermika_test::kDecimalCommaLocale}});
    describe(kSerial, samplePointOpticsElement(33, "", rangeElement("-0.5", "1.9e2", {27})));
    EXPECT_EQ(missing(), "Cali-12345678-33-M0-190-27.dat;");
}

TEST_F(FileCheck, usesTheFrameRatesOfTheFirstRangeWithEqualBounds) {
    describe(kSerial,
             samplePointOpticsElement(
                 33, "", rangeElement("0", "250", {27}) + rangeElement("0", "250", {80, 125})));
    EXPECT_EQ(missing(), "Cali-12345678-33-0-250-27.dat;Cali-12345678-33-0-250-27.dat;");
}

TEST_F(FileCheck, findsTheFrameRatesOfARangeByBothBounds) {
    describe(kSerial, samplePointOpticsElement(33, "",
                                               rangeElement("0", "250", {27}) +
                                                   rangeElement("0", "100", {80}) +
                                                   rangeElement("-20", "100", {125})));
    EXPECT_EQ(missing(),
              "Cali-12345678-33-0-250-27.dat;Cali-12345678-33-0-100-80.dat;"
              "Cali-12345678-33-M20-100-125.dat;");
}

TEST_F(FileCheck, expectsFilesOfARangeWhoseBoundsAreOneNumber) {
    describe(kSerial, samplePointOpticsElement(33, "", rangeElement("50", "50", {27})));
    EXPECT_EQ(missing(), "Cali-12345678-33-50-50-27.dat;");
}

TEST_F(FileCheck, takesTheFlagByPositionButTheRangesByKey) {
    const std::string first = rangeElement("-20", "100", {27});
    const std::string second = rangeElement("0", "250", {80});
    describe(kSerial, opticsElement(33, "", first) + samplePointOpticsElement(33, "", second));
    EXPECT_EQ(missing(),
              "Cali-12345678-33-M20-100-27.dat;Kennlinie-12345678-33-M20-100-27.prn;"
              "Cali-12345678-33-M20-100-27.dat;");

    describe(kOtherSerial, samplePointOpticsElement(33, "", first) + opticsElement(33, "", second));
    EXPECT_EQ(missing(kOtherSerial),
              "Cali-12345679-33-M20-100-27.dat;Cali-12345679-33-M20-100-27.dat;"
              "Kennlinie-12345679-33-M20-100-27.prn;");
}

TEST_F(FileCheck, tellsOpticsOfOneFieldOfViewApartByTheirText) {
    describe(kSerial, samplePointOpticsElement(33, "A", rangeElement("0", "100", {27})) +
                          samplePointOpticsElement(33, "", rangeElement("0", "200", {80})) +
                          samplePointOpticsElement(33, "a", rangeElement("0", "300")));
    EXPECT_EQ(missing(),
              "Cali-12345678-33-A-0-100-27.dat;Cali-12345678-33-0-200-80.dat;"
              "Cali-12345678-33-a-0-300.dat;");
}

TEST_F(FileCheck, isCompleteWhenNothingIsExpected) {
    describe(kSerial, "");
    describe(kOtherSerial, opticsElement(33, "", ""));
    EXPECT_EQ(missing(), kComplete);
    EXPECT_EQ(missing(kOtherSerial), kComplete);
}

TEST_F(FileCheck, givesNullWhenEveryFileIsThere) {
    describeUsualCamera();
    provide("Cali-12345678-33-M20-100-27.dat");
    provide("Kennlinie-12345678-33-M20-100-27.prn");
    provide("Cali-12345678-33-M20-100-80.dat");
    provide("Kennlinie-12345678-33-M20-100-80.prn");
    EXPECT_EQ(manager().checkCalibration(kSerial), nullptr);

    int size = -1;
    EXPECT_TRUE(check(nullptr, size));
    EXPECT_EQ(size, 0);
    char nothing[] = "?";
    EXPECT_TRUE(check(nothing, size));
    EXPECT_STREQ(nothing, "");
    EXPECT_EQ(size, 0);
}

TEST_F(FileCheck, listsOnlyWhatIsMissing) {
    describeUsualCamera();
    provide("Cali-12345678-33-M20-100-27.dat");
    provide("Kennlinie-12345678-33-M20-100-80.prn");
    EXPECT_EQ(missing(), "Kennlinie-12345678-33-M20-100-27.prn;Cali-12345678-33-M20-100-80.dat;");
}

TEST_F(FileCheck, reportsAMissingDescriptionAlone) { EXPECT_EQ(missing(), "Cali-12345678.xml;"); }

TEST_F(FileCheck, reportsADescriptionThatIsNotWellFormedAsMissing) {
    writeFile(cali() + "/Cali-12345678.xml", "<CaliData>\n<!-- without an end\n</CaliData>\n");
    EXPECT_EQ(missing(), "Cali-12345678.xml;");
}

TEST_F(FileCheck, countsOneByteLessThanTheListOfAMissingDescriptionNeeds) {
    int size = -1;
    EXPECT_FALSE(check(nullptr, size));
    EXPECT_EQ(size, 18);
    const std::unique_ptr<char[]> exact(new char[19]);
    EXPECT_FALSE(check(exact.get(), size));
    EXPECT_STREQ(exact.get(), "Cali-12345678.xml;");
    EXPECT_EQ(std::strlen(exact.get()) + 1, 19U);
    EXPECT_EQ(size, 18);
}

TEST_F(FileCheck, countsEveryNameItsSeparatorAndOneTerminator) {
    describeUsualCamera();
    int size = 4711;
    EXPECT_FALSE(check(nullptr, size));
    EXPECT_EQ(size, 2 * (31 + 1) + 2 * (36 + 1) + 1);
    const std::string text = list(kSerial);
    EXPECT_EQ(text.size() + 1, static_cast<std::size_t>(size));
    EXPECT_EQ(text, missing());
}

TEST_F(FileCheck, tellsBySecondCallThatFilesAreMissingAndLeavesTheCapacity) {
    describeUsualCamera();
    int size = 200;
    std::vector<char> buffer(201, '?');
    EXPECT_FALSE(check(buffer.data(), size));
    EXPECT_EQ(size, 200);
    EXPECT_EQ(buffer.data(), missing());
}

TEST_F(FileCheck, boundsEachNameByTheWholeSizeAndNotByTheRoomLeft) {
    describeUsualCamera();
    const std::string full = list(kSerial);
    for (int size = 1; size <= static_cast<int>(full.size()) + 2; ++size) {
        std::string cut;
        std::istringstream names(full);
        for (std::string name; std::getline(names, name, ';');)
            cut += name.substr(0, static_cast<std::size_t>(size)) + ";";
        const std::unique_ptr<char[]> buffer(new char[cut.size() + 1]);  // no byte more
        int told = size;
        check(buffer.get(), told);
        EXPECT_EQ(buffer.get(), cut);
        EXPECT_EQ(told, size);
    }
}

TEST_F(FileCheck, cutsTheListOfAMissingDescriptionAtTheSize) {
    const std::string full = list(kOtherSerial);
    for (int size = 0; size <= static_cast<int>(full.size()) + 2; ++size) {
        const auto bytes = static_cast<std::size_t>(size) + 1;
        const std::unique_ptr<char[]> buffer(new char[bytes]);
        int told = size;
        check(buffer.get(), told, kOtherSerial);
        EXPECT_EQ(buffer.get(), full.substr(0, bytes - 1));
    }
}

// Completeness is judged by the list, and nothing fits into this one.
TEST_F(FileCheck, takesAListWithoutRoomForComplete) {
    describeUsualCamera();
    for (int size : {0, -1, std::numeric_limits<int>::min()}) {
        char terminator[] = "?";
        EXPECT_TRUE(check(terminator, size));
        EXPECT_STREQ(terminator, "");
        EXPECT_FALSE(check(terminator, size, kOtherSerial));
        EXPECT_STREQ(terminator, "");
    }
}

TEST_F(FileCheck, emptiesTheBufferBeforeItListsAnything) {
    describeUsualCamera();
    std::vector<char> buffer(400, '?');
    std::strcpy(buffer.data(), "what was there;");
    int size = 399;
    check(buffer.data(), size);
    EXPECT_EQ(buffer.data(), missing());
}

TEST_F(FileCheck, usesTheSeparatorAfterTheDescriptionOnly) {
    Names names;
    names.separator = " | ";
    EXPECT_EQ(list(kSerial, names), "Cali-12345678.xml ");  // one byte of it was counted
    describe(kSerial, opticsElement(33, "", rangeElement("0", "250")));
    EXPECT_EQ(list(kSerial, names), "Cali-12345678-33-0-250.dat;Kennlinie-12345678-33-0-250.prn;");
    names.separator = "";
    EXPECT_EQ(list(kOtherSerial, names), "Cali-12345679.xml");
}

TEST_F(FileCheck, composesNamesInTheFormatsGiven) {
    const Names names{"camera%i", "%s.bin", "curve of %s", ";"};
    EXPECT_EQ(list(kSerial, names), "camera12345678;");
    describe(kSerial, opticsElement(33, "", rangeElement("0", "250", {27})));
    EXPECT_EQ(list(kSerial, names), "12345678-33-0-250-27.bin;curve of 12345678-33-0-250-27;");
    provide("curve of 12345678-33-0-250-27");
    EXPECT_EQ(list(kSerial, names), "12345678-33-0-250-27.bin;");
    EXPECT_EQ(list(kSerial, {"", "%s 100%%", "%.4s", ""}), "12345678-33-0-250-27 100%;1234;");
    EXPECT_EQ(list(kSerial, {"", "data", "100%%", ""}), "data;100%;");
}

TEST_F(FileCheck, cutsTheDescriptionsNameTo19Characters) {
    const Names names{"Calibration-of-%i.xml", "", "", ";"};
    int size = -1;
    EXPECT_FALSE(check(nullptr, size, kSerial, names));
    EXPECT_EQ(size, 20);
    EXPECT_EQ(list(kSerial, names), "Calibration-of-1234;");
}

TEST_F(FileCheck, countsNothingForADescriptionWithoutAName) {
    const Names names{"", "", "", ";"};
    int size = -1;
    EXPECT_FALSE(check(nullptr, size, kSerial, names));
    EXPECT_EQ(size, 0);
    char buffer[2] = {'?', '?'};
    size = 1;
    EXPECT_FALSE(check(buffer, size, kSerial, names));
    EXPECT_STREQ(buffer, ";");
}

TEST_F(FileCheck, cutsNamesTo259Characters) {
    describe(kSerial, samplePointOpticsElement(33, std::string(400, 't'), rangeElement("0", "1")));
    EXPECT_EQ(missing(), "Cali-12345678-33-" + std::string(259 - 17, 't') + ";");
    const std::string prefix(300, 'p');
    Names names;
    names.data = prefix.c_str();
    EXPECT_EQ(list(kSerial, names), std::string(259, 'p') + ";");
}

TEST_F(FileCheck, loadsTheOtherSerialsDescription) {
    describe(kSerial, samplePointOpticsElement(33, "", rangeElement("0", "250")));
    describe(kOtherSerial, samplePointOpticsElement(60, "", rangeElement("0", "100")));
    EXPECT_EQ(missing(), "Cali-12345678-33-0-250.dat;");
    EXPECT_EQ(missing(kOtherSerial), "Cali-12345679-60-0-100.dat;");
    EXPECT_TRUE(ConfigCali::getInstance()->isLoaded(kOtherSerial));
    EXPECT_EQ(missing(12345670), "Cali-12345670.xml;");
    EXPECT_FALSE(ConfigCali::getInstance()->isLoaded(kOtherSerial));
    EXPECT_EQ(missing(), "Cali-12345678-33-0-250.dat;");
}

TEST_F(FileCheck, keepsToTheDescriptionThatIsLoadedForTheSerial) {
    describe(kSerial, samplePointOpticsElement(33, "", rangeElement("0", "250")));
    EXPECT_EQ(missing(), "Cali-12345678-33-0-250.dat;");
    writeFile(cali() + "/Cali-12345678.xml", "");
    manager().setCalibrationDir(beside("elsewhere").c_str());
    EXPECT_EQ(missing(), "Cali-12345678-33-0-250.dat;");
}

TEST_F(FileCheck, logsNothingOnceTheDescriptionIsLoaded) {
    describeUsualCamera();
    EXPECT_NE(missing(), kComplete);
    LogLines lines;
    EXPECT_NE(missing(), kComplete);
    EXPECT_EQ(lines.all(), std::vector<std::string>());
}

}  // namespace
