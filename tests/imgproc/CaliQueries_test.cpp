// The questions about optics and temperature ranges: what finds what, and what nothing finds.
#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <string>
#include <vector>

#include "imgproc/Cali.h"
#include "support/CaliDescriptions.h"
#include "support/LogText.h"
#include "support/SpecialFloats.h"
#include "support/TestFiles.h"

namespace thermika_test {
namespace {

constexpr std::pair<float, float> kInverted(1000000.0F, -1000000.0F);

/// Both forms of a query by key must answer alike.
int rangeCount(ConfigCali& cali, int fov, const char* text) {
    OPTICS key{fov, asText(text)};
    const int count = cali.getTempRangeCount(fov, asText(text));
    EXPECT_EQ(cali.getTempRangeCount(&key), count);
    return count;
}

Bounds range(ConfigCali& cali, int fov, const char* text, int index) {
    OPTICS key{fov, asText(text)};
    const Bounds bounds = take(cali.getTempRange(fov, asText(text), index));
    EXPECT_EQ(take(cali.getTempRange(&key, index)), bounds);
    return bounds;
}

Bounds extended(ConfigCali& cali, int fov, const char* text, int index) {
    OPTICS key{fov, asText(text)};
    const Bounds bounds = take(cali.getExtendedTempRange(fov, asText(text), index));
    EXPECT_EQ(take(cali.getExtendedTempRange(&key, index)), bounds);
    return bounds;
}

int rangeIndex(ConfigCali& cali, int fov, const char* text, float min, float max) {
    OPTICS key{fov, asText(text)};
    Range wanted{min, max};
    const int index = cali.getTempRangeIndex(fov, asText(text), min, max);
    EXPECT_EQ(cali.getTempRangeIndex(&key, &wanted), index);
    return index;
}

int strictIndex(ConfigCali& cali, int fov, const char* text) {
    OPTICS key{fov, asText(text)};
    return cali.getOpticsIndex(&key);
}

int lenientIndex(ConfigCali& cali, int fov, const char* text) {
    return cali.getOpticsIndex(fov, asText(text));
}

/// An optics with text, one of the same field of view without, and one of another.
std::string threeOptics() {
    return opticsList(opticsElement(30, "A", rangeElement("1", "2")) +
                      opticsElement(30, "", rangeElement("3", "4") + rangeElement("5", "6")) +
                      opticsElement(62, "B", ""));
}

TEST(CaliQueries, answersFromTheBuiltInDescriptionBeforeAnyLoad) {
    ConfigCali cali;
    EXPECT_EQ(cali.getOpticsCount(), 1);
    EXPECT_EQ(take(cali.getOptics(0)), std::make_pair(30, std::string("(null)")));
    EXPECT_EQ(rangeCount(cali, 30, nullptr), 3);
    EXPECT_EQ(take(cali.getTempRangeOverAll()), std::make_pair(-20.0F, 900.0F));
    EXPECT_EQ(rangeIndex(cali, 30, nullptr, -20.0F, 100.0F), 0);
}

TEST(CaliQueries, handsOutOpticsByPosition) {
    LoadedCali cali(threeOptics());
    EXPECT_EQ(cali->getOpticsCount(), 3);
    EXPECT_EQ(take(cali->getOptics(0)), std::make_pair(30, std::string("A")));
    EXPECT_EQ(take(cali->getOptics(1)), std::make_pair(30, std::string()));
    EXPECT_EQ(take(cali->getOptics(2)), std::make_pair(62, std::string("B")));
}

TEST(CaliQueries, handsOutNullForAPositionOutsideTheList) {
    LoadedCali cali(threeOptics());
    for (const int index : {3, 4, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(cali->getOptics(index), nullptr) << index;
        EXPECT_FALSE(cali->isSamplePointCali(index)) << index;
    }
}

TEST(CaliQueries, handsOutANewRecordEachTimeThatSharesTheText) {
    LoadedCali cali(threeOptics());
    const std::unique_ptr<OPTICS> first(cali->getOptics(0));
    const std::unique_ptr<OPTICS> second(cali->getOptics(0));
    EXPECT_NE(first, second);
    EXPECT_EQ(first->text, second->text);
}

TEST(CaliQueries, tellsSamplePointCalibrationsByPosition) {
    LoadedCali cali(
        opticsList("<OpticsDef><FOV>30</FOV></OpticsDef>"
                   "<OpticsDef><FOV>30</FOV><SamplePointCali>True</SamplePointCali></OpticsDef>"
                   "<OpticsDef><FOV>30</FOV><SamplePointCali>yes</SamplePointCali></OpticsDef>"));
    EXPECT_FALSE(cali->isSamplePointCali(0));
    EXPECT_TRUE(cali->isSamplePointCali(1));
    EXPECT_FALSE(cali->isSamplePointCali(2));
}

TEST(CaliQueries, findsNothingWithNullKeys) {
    LoadedCali cali(threeOptics());
    OPTICS key{30, nullptr};
    Range wanted{3.0F, 4.0F};
    EXPECT_EQ(cali->getOpticsIndex(nullptr), -1);
    EXPECT_EQ(cali->getTempRangeCount(nullptr), -1);
    EXPECT_EQ(cali->getTempRange(nullptr, 0), nullptr);
    EXPECT_EQ(cali->getExtendedTempRange(nullptr, 0), nullptr);
    EXPECT_EQ(cali->getTempRangeIndex(nullptr, &wanted), -1);
    EXPECT_EQ(cali->getTempRangeIndex(&key, nullptr), -1);
    EXPECT_EQ(cali->getTempRangeOverAll(nullptr), nullptr);
    EXPECT_EQ(cali->getTempRangeIndex(&key, &wanted), 0) << "nothing else was wrong";
}

// Deliberate: the two lookups differ in what a missing text matches.
TEST(CaliQueries, takesAMissingTextAsAnyInOneLookupOnly) {
    LoadedCali cali(threeOptics());
    EXPECT_EQ(strictIndex(*cali, 30, nullptr), 1);
    EXPECT_EQ(lenientIndex(*cali, 30, nullptr), 0);
    EXPECT_EQ(strictIndex(*cali, 30, "B"), -1);
    EXPECT_EQ(lenientIndex(*cali, 30, "B"), 1) << "the second optics has no text";
    EXPECT_EQ(strictIndex(*cali, 62, nullptr), -1);
    EXPECT_EQ(lenientIndex(*cali, 62, nullptr), 2);
    EXPECT_EQ(strictIndex(*cali, 62, ""), -1);
    EXPECT_EQ(lenientIndex(*cali, 62, ""), 2);
    EXPECT_EQ(strictIndex(*cali, 62, "A"), -1);
    EXPECT_EQ(lenientIndex(*cali, 62, "A"), -1) << "both have a text";
    EXPECT_EQ(strictIndex(*cali, 30, "A"), 0);
    EXPECT_EQ(lenientIndex(*cali, 30, "A"), 0);
    EXPECT_EQ(strictIndex(*cali, 63, "B"), -1);
    EXPECT_EQ(lenientIndex(*cali, 63, "B"), -1);
}

TEST(CaliQueries, takesAnEmptyTextForNone) {
    LoadedCali cali(opticsList("<OpticsDef><FOV>30</FOV></OpticsDef>" + opticsElement(31, "", "")));
    for (const char* text : {static_cast<const char*>(nullptr), ""}) {
        EXPECT_EQ(strictIndex(*cali, 30, text), 0);
        EXPECT_EQ(strictIndex(*cali, 31, text), 1);
        EXPECT_EQ(rangeCount(*cali, 31, text), 0);
    }
}

TEST(CaliQueries, comparesTextsByteForByte) {
    LoadedCali cali(opticsList(opticsElement(30, "Tele", "") + opticsElement(30, "tele ", "") +
                               opticsElement(30, "tele", rangeElement("1", "2"))));
    EXPECT_EQ(strictIndex(*cali, 30, "tele"), 2);
    EXPECT_EQ(lenientIndex(*cali, 30, "tele"), 2);
    EXPECT_EQ(strictIndex(*cali, 30, "TELE"), -1);
    EXPECT_EQ(lenientIndex(*cali, 30, "TELE"), -1);
    EXPECT_EQ(strictIndex(*cali, 30, "tel"), -1);
    EXPECT_EQ(strictIndex(*cali, 30, "tele  "), -1);
    EXPECT_EQ(rangeCount(*cali, 30, "tele"), 1);
}

TEST(CaliQueries, takesTheFirstOfDuplicateOptics) {
    LoadedCali cali(
        opticsList(opticsElement(62, "", "") + opticsElement(30, "A", rangeElement("1", "2")) +
                   opticsElement(30, "A", rangeElement("3", "4") + rangeElement("5", "6"))));
    EXPECT_EQ(strictIndex(*cali, 30, "A"), 1);
    EXPECT_EQ(rangeCount(*cali, 30, "A"), 1);
    EXPECT_EQ(range(*cali, 30, "A", 0), std::make_pair(1.0F, 2.0F));
    EXPECT_EQ(rangeIndex(*cali, 30, "A", 3.0F, 4.0F), -1) << "the second one's";
}

TEST(CaliQueries, takesTheFirstOfManyDuplicateOptics) {
    std::string optics;
    for (int i = 0; i < 500; ++i) optics += opticsElement(i % 5, "A", "");
    LoadedCali cali(opticsList(optics));
    for (int fov = 0; fov < 5; ++fov) EXPECT_EQ(strictIndex(*cali, fov, "A"), fov);
}

TEST(CaliQueries, findsOpticsInAnyOrderOfAsking) {
    std::string optics;
    for (int i = 0; i < 200; ++i) optics += opticsElement(i * 37 % 200, i % 3 == 0 ? "" : "T", "");
    LoadedCali cali(opticsList(optics));
    for (int step = 0; step < 1000; ++step) {
        const int i = step * 71 % 200;
        ASSERT_EQ(strictIndex(*cali, i * 37 % 200, i % 3 == 0 ? nullptr : "T"), i);
        ASSERT_EQ(strictIndex(*cali, i * 37 % 200, i % 3 == 0 ? "T" : ""), -1);
    }
}

// What the last question found was remembered; it lies past the end of the next list.
TEST(CaliQueries, findsOpticsAfterALongListGaveWayToAShortOne) {
    std::string optics;
    for (int i = 0; i < 5000; ++i) optics += opticsElement(i, "", "");
    LoadedCali cali(opticsList(optics));
    ASSERT_EQ(strictIndex(*cali, 4999, ""), 4999);
    const TempDir folder;
    ASSERT_NE(cali->load(folder.path().c_str(), kSerial + 1), 0);
    EXPECT_EQ(strictIndex(*cali, 4999, ""), -1);
    EXPECT_EQ(strictIndex(*cali, 30, ""), 0);
}

TEST(CaliQueries, findsOpticsOfAnyFieldOfView) {
    LoadedCali cali(opticsList(opticsElement(INT_MIN, "", "") + opticsElement(-1, "x", "") +
                               opticsElement(INT_MAX, "", "")));
    EXPECT_EQ(strictIndex(*cali, INT_MIN, ""), 0);
    EXPECT_EQ(strictIndex(*cali, -1, "x"), 1);
    EXPECT_EQ(strictIndex(*cali, INT_MAX, ""), 2);
    EXPECT_EQ(strictIndex(*cali, 0, ""), -1);
}

TEST(CaliQueries, handsOutRangesByPosition) {
    LoadedCali cali(opticsList(opticsElement(
        30, "A",
        rangeElement("-20", "100", "<TempLoExt>-30</TempLoExt><TempHiExt>110</TempHiExt>") +
            rangeElement("0.5", "250.25"))));
    EXPECT_EQ(rangeCount(*cali, 30, "A"), 2);
    EXPECT_EQ(range(*cali, 30, "A", 0), std::make_pair(-20.0F, 100.0F));
    EXPECT_EQ(extended(*cali, 30, "A", 0), std::make_pair(-30.0F, 110.0F));
    EXPECT_EQ(range(*cali, 30, "A", 1), std::make_pair(0.5F, 250.25F));
    EXPECT_EQ(extended(*cali, 30, "A", 1), std::make_pair(0.5F, 250.25F));
    for (const int index : {2, 3, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(range(*cali, 30, "A", index), std::nullopt) << index;
        EXPECT_EQ(extended(*cali, 30, "A", index), std::nullopt) << index;
    }
}

TEST(CaliQueries, findsNoRangesOfUnknownOptics) {
    LoadedCali cali(threeOptics());
    EXPECT_EQ(rangeCount(*cali, 31, nullptr), -1);
    EXPECT_EQ(rangeCount(*cali, 30, "B"), -1) << "the strict lookup";
    EXPECT_EQ(range(*cali, 30, "B", 0), std::nullopt);
    EXPECT_EQ(extended(*cali, 30, "B", 0), std::nullopt);
    EXPECT_EQ(rangeIndex(*cali, 30, "B", 3.0F, 4.0F), -1);
    EXPECT_EQ(cali->getExtendedTempRange(30, asText("B"), 3.0F, 4.0F), nullptr);
}

TEST(CaliQueries, findsRangesByTheirExactBounds) {
    ConfigCali cali;
    EXPECT_EQ(rangeIndex(cali, 30, nullptr, -20.0F, 100.0F), 0);
    EXPECT_EQ(rangeIndex(cali, 30, "", 0.0F, 250.0F), 1);
    EXPECT_EQ(rangeIndex(cali, 30, nullptr, -0.0F, 250.0F), 1);
    EXPECT_EQ(rangeIndex(cali, 30, nullptr, 150.0F, 900.0F), 2);
    EXPECT_EQ(rangeIndex(cali, 30, nullptr, -20.0F, 100.0001F), -1);
    EXPECT_EQ(rangeIndex(cali, 30, nullptr, -20.00001F, 100.0F), -1);
    EXPECT_EQ(rangeIndex(cali, 30, nullptr, -20.0F, 250.0F), -1);
    EXPECT_EQ(rangeIndex(cali, 30, nullptr, -21.0F, 100.0F), -1);
    EXPECT_EQ(rangeIndex(cali, 30, nullptr, -19.0F, 100.0F), -1);
    EXPECT_EQ(rangeIndex(cali, 30, nullptr, -20.0F, 99.0F), -1);
    EXPECT_EQ(rangeIndex(cali, 30, nullptr, 100.0F, -20.0F), -1);
    EXPECT_EQ(rangeIndex(cali, 30, nullptr, -100.0F, -100.0F), -1) << "the extended bounds";
}

TEST(CaliQueries, findsExtendedBoundsByTheBounds) {
    LoadedCali cali(
        opticsList(opticsElement(30, "A",
                                 rangeElement("1", "2", "<TempLoExt>0</TempLoExt>") +
                                     rangeElement("3", "4", "<TempHiExt>9</TempHiExt>"))));
    EXPECT_EQ(take(cali->getExtendedTempRange(30, asText("A"), 3.0F, 4.0F)),
              std::make_pair(3.0F, 9.0F));
    EXPECT_EQ(take(cali->getExtendedTempRange(30, asText("A"), 1.0F, 2.0F)),
              std::make_pair(0.0F, 2.0F));
    EXPECT_EQ(cali->getExtendedTempRange(30, asText("A"), 0.0F, 2.0F), nullptr);
    EXPECT_EQ(cali->getExtendedTempRange(30, asText("A"), 3.0F, 9.0F), nullptr);
}

TEST(CaliQueries, takesTheFirstOfDuplicateRanges) {
    LoadedCali cali(opticsList(
        opticsElement(30, "",
                      rangeElement("5", "6") + rangeElement("1", "2", "<TempLoExt>-1</TempLoExt>") +
                          rangeElement("1", "2", "<TempLoExt>-2</TempLoExt>"))));
    EXPECT_EQ(rangeIndex(*cali, 30, nullptr, 1.0F, 2.0F), 1);
    EXPECT_EQ(take(cali->getExtendedTempRange(30, nullptr, 1.0F, 2.0F)),
              std::make_pair(-1.0F, 2.0F));
}

TEST(CaliQueries, neverFindsARangeByNaN) {
    LoadedCali cali(opticsList(opticsElement(
        30, "", rangeElement("nan", "2") + rangeElement("1", "nan") + rangeElement("1", "2"))));
    EXPECT_EQ(rangeIndex(*cali, 30, nullptr, kNaN, 2.0F), -1);
    EXPECT_EQ(rangeIndex(*cali, 30, nullptr, 1.0F, kNaN), -1);
    EXPECT_EQ(rangeIndex(*cali, 30, nullptr, 1.0F, 2.0F), 2);
}

TEST(CaliQueries, findsInfiniteBounds) {
    LoadedCali cali(opticsList(opticsElement(30, "", rangeElement("-inf", "1e999"))));
    EXPECT_EQ(rangeIndex(*cali, 30, nullptr, -kInfinity, kInfinity), 0);
    EXPECT_EQ(take(cali->getTempRangeOverAll()), std::make_pair(-kInfinity, kInfinity));
}

TEST(CaliQueries, spansAllRangesOfAllOptics) {
    LoadedCali cali(
        opticsList(opticsElement(30, "A", rangeElement("5", "40") + rangeElement("-7", "1")) +
                   opticsElement(30, "A", rangeElement("0", "99", "<TempLoExt>-500</TempLoExt>")) +
                   opticsElement(62, "", "")));
    EXPECT_EQ(take(cali->getTempRangeOverAll()), std::make_pair(-7.0F, 99.0F));
    OPTICS key{30, asText("A")};
    EXPECT_EQ(take(cali->getTempRangeOverAll(&key)), std::make_pair(-7.0F, 40.0F));
    key = {62, nullptr};
    EXPECT_EQ(take(cali->getTempRangeOverAll(&key)), kInverted);
    key = {62, asText("A")};
    EXPECT_EQ(cali->getTempRangeOverAll(&key), nullptr);
}

TEST(CaliQueries, spansFromTheInvertedRange) {
    LoadedCali cali(opticsList(opticsElement(30, "", rangeElement("2000000", "-2000000"))));
    EXPECT_EQ(take(cali->getTempRangeOverAll()), kInverted) << "no bound lies further";
}

TEST(CaliQueries, leavesNaNOutOfTheSpan) {
    LoadedCali cali(opticsList(opticsElement(
        30, "", rangeElement("nan", "nan") + rangeElement("1", "2") + rangeElement("nan", "nan"))));
    EXPECT_EQ(take(cali->getTempRangeOverAll()), std::make_pair(1.0F, 2.0F));
}

TEST(CaliQueries, findsNothingWithoutOptics) {
    LoadedCali cali(opticsList(""));
    OPTICS key{30, nullptr};
    EXPECT_EQ(cali->getOpticsCount(), 0) << "not the built-in one";
    EXPECT_EQ(cali->getOptics(0), nullptr);
    EXPECT_EQ(strictIndex(*cali, 30, nullptr), -1);
    EXPECT_EQ(lenientIndex(*cali, 30, nullptr), -1);
    EXPECT_EQ(rangeCount(*cali, 30, nullptr), -1);
    EXPECT_EQ(range(*cali, 30, nullptr, 0), std::nullopt);
    EXPECT_EQ(take(cali->getTempRangeOverAll()), kInverted);
    EXPECT_EQ(cali->getTempRangeOverAll(&key), nullptr);
}

TEST(CaliQueries, findsNothingInADocumentWithoutRoot) {
    const TempDir folder;
    writeFile(folder / "Cali-12345678.xml", "<Other>\n<Main><TecA>7</TecA></Main>\n" +
                                                opticsList(opticsElement(30, "", "")) +
                                                "\n</Other>\n");
    ConfigCali cali;
    thermika_test::LogCapture log;
    EXPECT_EQ(cali.load(folder.path().c_str(), kSerial), 0);
    EXPECT_EQ(log.all().back(), "DEBUG [Cali] Calibration data A: 3400 B:400 C:400 D:120");
    EXPECT_TRUE(cali.isLoaded(kSerial));
    EXPECT_EQ(cali.getOpticsCount(), 0);
}

TEST(CaliQueries, findsNoRangesInOpticsThatHaveNone) {
    LoadedCali cali(opticsList(opticsElement(30, "", "")));
    EXPECT_EQ(rangeCount(*cali, 30, nullptr), 0);
    EXPECT_EQ(range(*cali, 30, nullptr, 0), std::nullopt);
    EXPECT_EQ(extended(*cali, 30, nullptr, 0), std::nullopt);
    EXPECT_EQ(rangeIndex(*cali, 30, nullptr, 0.0F, 0.0F), -1);
}

}  // namespace
}  // namespace thermika_test
