// The questions about frame rates and decimals of a range.
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>

#include "imgproc/Cali.h"
#include "support/CaliDescriptions.h"

namespace thermika_test {
namespace {

constexpr unsigned short kRate = 27;

/// Optics 30: a range 0 to 1 without a list, one 0 to 2 with an empty list, one 0 to 3 with a list,
/// and the last once more with another list.
std::string rangesWithRates() {
    const auto rate = [](const std::string& number) {
        return "<Framerate><FR>" + number + "</FR></Framerate>";
    };
    return opticsList(
        opticsElement(30, "A",
                      rangeElement("0", "1") + rangeElement("0", "2", "<Framerates></Framerates>") +
                          rangeElement("0", "3",
                                       "<Framerates>" + rate("80") + rate("27") + rate("27") +
                                           rate("65535") + "</Framerates>") +
                          rangeElement("0", "3", "<Framerates>" + rate("9") + "</Framerates>")));
}

class CaliFramerates : public testing::Test {
protected:
    int index(float max, unsigned short rate) {
        Range range{0.0F, max};
        const int found = m_cali->getFramerateIndex(30, asText("A"), 0.0F, max, rate);
        EXPECT_EQ(m_cali->getFramerateIndex(&m_key, &range, rate), found);
        return found;
    }

    /// Whether the rate is allowed, and what it became.
    std::pair<bool, int> check(int fov, const char* text, float max, unsigned short rate) {
        OPTICS key{fov, asText(text)};
        Range range{0.0F, max};
        unsigned short byBounds = rate;
        const bool isAllowed = m_cali->checkFramerate(fov, asText(text), 0.0F, max, byBounds);
        EXPECT_EQ(m_cali->checkFramerate(&key, &range, rate), isAllowed);
        EXPECT_EQ(rate, byBounds);
        return {isAllowed, rate};
    }

    int count(float max) {
        Range range{0.0F, max};
        return m_cali->getFramerateCount(&m_key, &range);
    }

    int at(float max, int position) {
        Range range{0.0F, max};
        return m_cali->getFramerate(&m_key, &range, position);
    }

    LoadedCali m_cali{rangesWithRates()};
    OPTICS m_key{30, asText("A")};
    Range m_range{0.0F, 3.0F};
};

TEST_F(CaliFramerates, countsTheRatesOfARange) {
    EXPECT_EQ(count(1.0F), 0) << "no list";
    EXPECT_EQ(count(2.0F), 0) << "an empty list";
    EXPECT_EQ(count(3.0F), 4) << "of the first such range";
    EXPECT_EQ(count(4.0F), -1) << "no such range";
    OPTICS unknown{30, nullptr};
    EXPECT_EQ(m_cali->getFramerateCount(&unknown, &m_range), -1);
    EXPECT_EQ(m_cali->getFramerateCount(nullptr, &m_range), -1);
    EXPECT_EQ(m_cali->getFramerateCount(&m_key, nullptr), -1);
}

TEST_F(CaliFramerates, handsOutRatesByPosition) {
    EXPECT_EQ(at(3.0F, 0), 80);
    EXPECT_EQ(at(3.0F, 1), 27);
    EXPECT_EQ(at(3.0F, 2), 27);
    EXPECT_EQ(at(3.0F, 3), 65535);
    for (const int position : {4, 5, -1, INT_MAX, INT_MIN}) EXPECT_EQ(at(3.0F, position), 0);
    EXPECT_EQ(at(1.0F, 0), 0);
    EXPECT_EQ(at(2.0F, 0), 0);
    EXPECT_EQ(at(4.0F, 0), 0);
    OPTICS unknown{31, asText("A")};
    EXPECT_EQ(m_cali->getFramerate(&unknown, &m_range, 0), 0);
    EXPECT_EQ(m_cali->getFramerate(nullptr, &m_range, 0), 0);
    EXPECT_EQ(m_cali->getFramerate(&m_key, nullptr, 0), 0);
}

TEST_F(CaliFramerates, findsTheFirstOfEqualRates) {
    EXPECT_EQ(index(3.0F, 80), 0);
    EXPECT_EQ(index(3.0F, 27), 1);
    EXPECT_EQ(index(3.0F, 65535), 3);
}

// Deliberate: no list and not in the list have different answers.
TEST_F(CaliFramerates, tellsNoListFromNotInTheList) {
    EXPECT_EQ(index(1.0F, kRate), -1) << "no list";
    EXPECT_EQ(index(2.0F, kRate), -2) << "an empty list";
    EXPECT_EQ(index(3.0F, 9), -2) << "only the second such range has it";
    EXPECT_EQ(index(3.0F, 0), -2);
    EXPECT_EQ(index(4.0F, kRate), -1) << "no such range";
    EXPECT_EQ(m_cali->getFramerateIndex(30, nullptr, 0.0F, 3.0F, kRate), -1) << "the strict lookup";
    EXPECT_EQ(m_cali->getFramerateIndex(nullptr, &m_range, kRate), -1);
    EXPECT_EQ(m_cali->getFramerateIndex(&m_key, nullptr, kRate), -1);
}

TEST_F(CaliFramerates, allowsListedRatesOnly) {
    EXPECT_EQ(check(30, "A", 3.0F, 80), std::make_pair(true, 80));
    EXPECT_EQ(check(30, "A", 3.0F, 65535), std::make_pair(true, 65535));
    EXPECT_EQ(check(30, "A", 3.0F, 9), std::make_pair(false, 0));
    EXPECT_EQ(check(30, "A", 3.0F, 0), std::make_pair(false, 0)) << "0 is in no list";
    EXPECT_EQ(check(30, "A", 2.0F, kRate), std::make_pair(false, 0)) << "an empty list";
}

TEST_F(CaliFramerates, allowsAnyRateAsNoneInParticularWithoutAList) {
    EXPECT_EQ(check(30, "A", 1.0F, kRate), std::make_pair(true, 0));
    EXPECT_EQ(check(30, "A", 1.0F, 0), std::make_pair(true, 0));
    EXPECT_EQ(check(30, "A", 4.0F, kRate), std::make_pair(true, 0)) << "no such range";
    EXPECT_EQ(check(31, "A", 3.0F, kRate), std::make_pair(true, 0)) << "no such optics";
    EXPECT_EQ(check(30, "", 3.0F, 9), std::make_pair(true, 0)) << "the strict lookup";
}

TEST_F(CaliFramerates, allowsAnyRateForNullKeys) {
    unsigned short rate = kRate;
    EXPECT_TRUE(m_cali->checkFramerate(nullptr, &m_range, rate));
    EXPECT_EQ(rate, 0);
    rate = kRate;
    EXPECT_TRUE(m_cali->checkFramerate(&m_key, nullptr, rate));
    EXPECT_EQ(rate, 0);
}

TEST(CaliFrameratesOddities, allowsZeroWhereTheFileListsIt) {
    LoadedCali cali(opticsList(opticsElement(
        30, "", rangeElement("0", "1", "<Framerates><Framerate></Framerate></Framerates>"))));
    unsigned short rate = 0;
    EXPECT_TRUE(cali->checkFramerate(30, nullptr, 0.0F, 1.0F, rate));
    EXPECT_EQ(cali->getFramerateIndex(30, nullptr, 0.0F, 1.0F, 0), 0);
}

TEST(CaliFrameratesOddities, allowsAnyRateForOpticsWithoutRanges) {
    LoadedCali cali(opticsList(opticsElement(30, "", "")));
    unsigned short rate = kRate;
    EXPECT_TRUE(cali->checkFramerate(30, nullptr, 0.0F, 0.0F, rate));
    EXPECT_EQ(rate, 0);
}

TEST(CaliFrameratesDecimals, answersTheDecimalOfARange) {
    LoadedCali cali(opticsList(
        opticsElement(30, "A",
                      rangeElement("0", "1") + rangeElement("0", "2", "<Decimal>2</Decimal>") +
                          rangeElement("0", "3", "<Decimal>65535</Decimal>"))));
    EXPECT_EQ(cali->getTempRangeDecimal(30, asText("A"), 0.0F, 1.0F), 1) << "the default";
    EXPECT_EQ(cali->getTempRangeDecimal(30, asText("A"), 0.0F, 2.0F), 2);
    EXPECT_EQ(cali->getTempRangeDecimal(30, asText("A"), 0.0F, 3.0F), 65535);
}

TEST(CaliFrameratesDecimals, answersZeroWhenThereIsNoSuchRange) {
    LoadedCali cali(opticsList(opticsElement(30, "A", rangeElement("0", "1"))));
    EXPECT_EQ(cali->getTempRangeDecimal(30, asText("A"), 0.0F, 2.0F), 0);
    EXPECT_EQ(cali->getTempRangeDecimal(31, asText("A"), 0.0F, 1.0F), 0);
    EXPECT_EQ(cali->getTempRangeDecimal(30, asText("B"), 0.0F, 1.0F), 0);
    EXPECT_EQ(cali->getTempRangeDecimal(30, nullptr, 0.0F, 1.0F), 0)
        << "found leniently, but its range is not found strictly";
}

// Deliberate: a range's position found in one optics is applied to an earlier one without text.
TEST(CaliFrameratesDecimals, appliesThePositionToTheOpticsFoundLeniently) {
    LoadedCali cali(opticsList(opticsElement(30, "",
                                             rangeElement("8", "9", "<Decimal>3</Decimal>") +
                                                 rangeElement("8", "9", "<Decimal>4</Decimal>")) +
                               opticsElement(30, "A",
                                             rangeElement("0", "1", "<Decimal>5</Decimal>") +
                                                 rangeElement("0", "2", "<Decimal>6</Decimal>") +
                                                 rangeElement("0", "3", "<Decimal>7</Decimal>"))));
    EXPECT_EQ(cali->getTempRangeDecimal(30, asText("A"), 0.0F, 1.0F), 3);
    EXPECT_EQ(cali->getTempRangeDecimal(30, asText("A"), 0.0F, 2.0F), 4);
    EXPECT_EQ(cali->getTempRangeDecimal(30, asText("A"), 0.0F, 3.0F), 0) << "past its end";
    EXPECT_EQ(cali->getTempRangeDecimal(30, asText("A"), 8.0F, 9.0F), 0)
        << "its own range is not looked for";
}

}  // namespace
}  // namespace thermika_test
