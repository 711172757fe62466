// Which files the file check expects of a camera by its description, and in which order.
#include <clocale>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/FileCheckTest.h"
#include "support/ProcessState.h"

namespace {

using namespace thermika_test;

using FileCheckNames = FileCheckTest;

TEST_F(FileCheckNames, listsDataAndCurveFileOfEveryFrameRateInOrder) {
    describeUsualCamera();
    EXPECT_EQ(missing(),
              "Cali-12345678-33-M20-100-27.dat;Kennlinie-12345678-33-M20-100-27.prn;"
              "Cali-12345678-33-M20-100-80.dat;Kennlinie-12345678-33-M20-100-80.prn;");
}

TEST_F(FileCheckNames, putsTheOpticsTextAfterTheFieldOfView) {
    describe(kSerial, opticsElement(33, "O33", rangeElement("-20", "100", {27, 80})));
    EXPECT_EQ(missing(),
              "Cali-12345678-33-O33-M20-100-27.dat;Kennlinie-12345678-33-O33-M20-100-27.prn;"
              "Cali-12345678-33-O33-M20-100-80.dat;Kennlinie-12345678-33-O33-M20-100-80.prn;");
}

TEST_F(FileCheckNames, takesAnEmptyTextForNone) {
    describe(kSerial, opticsElement(33, "", rangeElement("0", "250", {27})) +
                          "<OpticsDef>\n<FOV>60</FOV>\n<TempRanges>\n" +
                          rangeElement("0", "250", {27}) + "</TempRanges>\n</OpticsDef>\n");
    EXPECT_EQ(missing(),
              "Cali-12345678-33-0-250-27.dat;Kennlinie-12345678-33-0-250-27.prn;"
              "Cali-12345678-60-0-250-27.dat;Kennlinie-12345678-60-0-250-27.prn;");
}

TEST_F(FileCheckNames, asksForNoCurveFilesOfSamplePointOptics) {
    describe(kSerial, samplePointOpticsElement(
                          33, "", rangeElement("-20", "100", {27, 80}) + rangeElement("0", "250")));
    EXPECT_EQ(missing(),
              "Cali-12345678-33-M20-100-27.dat;Cali-12345678-33-M20-100-80.dat;"
              "Cali-12345678-33-0-250.dat;");
}

TEST_F(FileCheckNames, leavesFrameRateZeroOutOfTheName) {
    describe(kSerial, opticsElement(33, "", rangeElement("0", "250", {27, 0, 80})));
    EXPECT_EQ(missing(),
              "Cali-12345678-33-0-250-27.dat;Kennlinie-12345678-33-0-250-27.prn;"
              "Cali-12345678-33-0-250.dat;Kennlinie-12345678-33-0-250.prn;"
              "Cali-12345678-33-0-250-80.dat;Kennlinie-12345678-33-0-250-80.prn;");
}

TEST_F(FileCheckNames, expectsOneNameOfARangeWithoutFrameRates) {
    describe(kSerial, opticsElement(33, "", rangeElement("0", "250")));
    EXPECT_EQ(missing(), "Cali-12345678-33-0-250.dat;Kennlinie-12345678-33-0-250.prn;");
}

TEST_F(FileCheckNames, expectsOneNameOfARangeWithAnEmptyListOfFrameRates) {
    describe(kSerial, opticsElement(33, "", rangeElement("0", "250", std::vector<int>{})));
    EXPECT_EQ(missing(), "Cali-12345678-33-0-250.dat;Kennlinie-12345678-33-0-250.prn;");
}

TEST_F(FileCheckNames, walksOpticsThenRangesThenFrameRates) {
    describe(kSerial,
             opticsElement(60, "HT", rangeElement("150", "900") + rangeElement("0", "250", {27})) +
                 samplePointOpticsElement(30, "", rangeElement("-20", "100", {80, 27})));
    EXPECT_EQ(missing(),
              "Cali-12345678-60-HT-150-900.dat;Kennlinie-12345678-60-HT-150-900.prn;"
              "Cali-12345678-60-HT-0-250-27.dat;Kennlinie-12345678-60-HT-0-250-27.prn;"
              "Cali-12345678-30-M20-100-80.dat;Cali-12345678-30-M20-100-27.dat;");
}

TEST_F(FileCheckNames, expectsTheDefaultRangesOfOpticsThatTellNone) {
    describe(kSerial, "<OpticsDef>\n<FOV>33</FOV>\n</OpticsDef>\n");
    EXPECT_EQ(missing(),
              "Cali-12345678-33-M20-100.dat;Kennlinie-12345678-33-M20-100.prn;"
              "Cali-12345678-33-0-250.dat;Kennlinie-12345678-33-0-250.prn;"
              "Cali-12345678-33-150-900.dat;Kennlinie-12345678-33-150-900.prn;");
}

TEST_F(FileCheckNames, signsABoundBelowZeroWhoseNumberIsZero) {
    describe(kSerial, samplePointOpticsElement(33, "", rangeElement("-0.5", "-0.1", {27})));
    EXPECT_EQ(missing(), "Cali-12345678-33-M0-M0-27.dat;");
}

TEST_F(FileCheckNames, cutsFractionsOffAndSaturatesWhatNoIntHolds) {
    describe(kSerial, samplePointOpticsElement(33, "",
                                               rangeElement("-20.7", "100.9", {27}) +
                                                   rangeElement("-1e30", "1e30", {27})));
    EXPECT_EQ(missing(),
              "Cali-12345678-33-M20-100-27.dat;Cali-12345678-33-M2147483647-2147483647-27.dat;");
}

// A bound that is no number equals nothing, so the range's own frame rates are not found by it.
TEST_F(FileCheckNames, expectsOneNameOfARangeThatIsNotFoundByItsBounds) {
    describe(kSerial, samplePointOpticsElement(33, "", rangeElement("nan", "100", {27, 80})));
    EXPECT_EQ(missing(), "Cali-12345678-33-0-100.dat;");
}

TEST_F(FileCheckNames, readsBoundsWithAPointWhateverTheLocale) {
    const ScopedLocale locale({{LC_NUMERIC, kDecimalCommaLocale}, {LC_CTYPE, kDecimalCommaLocale}});
    describe(kSerial, samplePointOpticsElement(33, "", rangeElement("-0.5", "1.9e2", {27})));
    EXPECT_EQ(missing(), "Cali-12345678-33-M0-190-27.dat;");
}

TEST_F(FileCheckNames, usesTheFrameRatesOfTheFirstRangeWithEqualBounds) {
    describe(kSerial,
             samplePointOpticsElement(
                 33, "", rangeElement("0", "250", {27}) + rangeElement("0", "250", {80, 125})));
    EXPECT_EQ(missing(), "Cali-12345678-33-0-250-27.dat;Cali-12345678-33-0-250-27.dat;");
}

TEST_F(FileCheckNames, findsTheFrameRatesOfARangeByBothBounds) {
    describe(kSerial, samplePointOpticsElement(33, "",
                                               rangeElement("0", "250", {27}) +
                                                   rangeElement("0", "100", {80}) +
                                                   rangeElement("-20", "100", {125})));
    EXPECT_EQ(missing(),
              "Cali-12345678-33-0-250-27.dat;Cali-12345678-33-0-100-80.dat;"
              "Cali-12345678-33-M20-100-125.dat;");
}

TEST_F(FileCheckNames, expectsFilesOfARangeWhoseBoundsAreOneNumber) {
    describe(kSerial, samplePointOpticsElement(33, "", rangeElement("50", "50", {27})));
    EXPECT_EQ(missing(), "Cali-12345678-33-50-50-27.dat;");
}

TEST_F(FileCheckNames, takesTheFlagByPositionButTheRangesByKey) {
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

TEST_F(FileCheckNames, tellsOpticsOfOneFieldOfViewApartByTheirText) {
    describe(kSerial, samplePointOpticsElement(33, "A", rangeElement("0", "100", {27})) +
                          samplePointOpticsElement(33, "", rangeElement("0", "200", {80})) +
                          samplePointOpticsElement(33, "a", rangeElement("0", "300")));
    EXPECT_EQ(missing(),
              "Cali-12345678-33-A-0-100-27.dat;Cali-12345678-33-0-200-80.dat;"
              "Cali-12345678-33-a-0-300.dat;");
}

}  // namespace
