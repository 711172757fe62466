// Random descriptions, every question about each, and a plain model's answers to compare with.
#include "support/CaliModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "imgproc/Cali.h"
#include "imgproc/internal/CaliReader.h"
#include "support/CaliDescriptions.h"
#include "support/TestFiles.h"

namespace thermika_test {
namespace {

constexpr unsigned int kDescriptions = 50;
constexpr int kFovs[] = {30, 62, 0, -1, 31};
constexpr int kRates[] = {0, 27, 80, 30, 65535};

bool isSame(float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); }

void expectSame(const Bounds& answer, const Bounds& expected) {
    ASSERT_EQ(answer.has_value(), expected.has_value());
    if (!answer) return;
    EXPECT_TRUE(isSame(answer->first, expected->first));
    EXPECT_TRUE(isSame(answer->second, expected->second));
}

/// The value that the reader makes of each bound's text, and one that no description has.
std::vector<float> boundsToAsk() {
    std::vector<float> values = {77.0F};
    for (const std::string& text : randomBounds())
        values.push_back(std::strtof(text.c_str(), nullptr));
    return values;
}

/// One key, asked for in all forms.
class KeyComparison {
public:
    KeyComparison(ConfigCali& cali, const CaliModel& model, int fov, const char* text)
        : m_cali(cali), m_model(model), m_key{fov, asText(text)}, m_text(text ? text : "") {}

    void compare() {
        const int fov = m_key.fov;
        EXPECT_EQ(m_cali.getOpticsIndex(&m_key), m_model.strictIndex(fov, m_text));
        EXPECT_EQ(m_cali.getOpticsIndex(fov, m_key.text), m_model.lenientIndex(fov, m_text));
        const OpticsModel* const found = m_model.find(fov, m_text);
        const int count = found == nullptr ? -1 : static_cast<int>(found->ranges.size());
        EXPECT_EQ(m_cali.getTempRangeCount(&m_key), count);
        EXPECT_EQ(m_cali.getTempRangeCount(fov, m_key.text), count);
        expectSame(take(m_cali.getTempRangeOverAll(&m_key)),
                   found == nullptr ? Bounds() : CaliModel::span({*found}));
        for (const int j : {INT_MIN, -1, 0, 1, 2, 3, 4, 5, INT_MAX}) comparePosition(found, j);
        for (const float min : boundsToAsk()) {
            for (const float max : boundsToAsk()) compareRange({min, max});
        }
    }

private:
    void comparePosition(const OpticsModel* found, int j) {
        Bounds bounds;
        Bounds extended;
        if (found != nullptr && j >= 0 && static_cast<std::size_t>(j) < found->ranges.size()) {
            const RangeModel& range = found->ranges[static_cast<std::size_t>(j)];
            bounds = {range.low, range.high};
            extended = {range.lowExt, range.highExt};
        }
        expectSame(take(m_cali.getTempRange(&m_key, j)), bounds);
        expectSame(take(m_cali.getTempRange(m_key.fov, m_key.text, j)), bounds);
        expectSame(take(m_cali.getExtendedTempRange(&m_key, j)), extended);
        expectSame(take(m_cali.getExtendedTempRange(m_key.fov, m_key.text, j)), extended);
    }

    void compareRange(Range range) {
        const int fov = m_key.fov;
        const RangeModel* const found = m_model.findRange(fov, m_text, range.min, range.max);
        const int index = m_model.rangeIndex(fov, m_text, range.min, range.max);
        ASSERT_EQ(m_cali.getTempRangeIndex(&m_key, &range), index);
        ASSERT_EQ(m_cali.getTempRangeIndex(fov, m_key.text, range.min, range.max), index);
        ASSERT_EQ(m_cali.getTempRangeDecimal(fov, m_key.text, range.min, range.max),
                  m_model.decimal(fov, m_text, range.min, range.max));
        expectSame(take(m_cali.getExtendedTempRange(fov, m_key.text, range.min, range.max)),
                   found == nullptr ? Bounds() : Bounds({found->lowExt, found->highExt}));
        const int count = found == nullptr ? -1
                          : found->rates   ? static_cast<int>(found->rates->size())
                                           : 0;
        ASSERT_EQ(m_cali.getFramerateCount(&m_key, &range), count);
        for (int k = -1; k <= std::max(count, 0); ++k) {
            const bool isThere = k >= 0 && k < count;
            ASSERT_EQ(m_cali.getFramerate(&m_key, &range, k),
                      isThere ? (*found->rates)[static_cast<std::size_t>(k)] : 0);
        }
        for (const int rate : kRates) compareRate(range, static_cast<unsigned short>(rate));
    }

    void compareRate(Range range, unsigned short rate) {
        const int fov = m_key.fov;
        const int index = m_model.rateIndex(fov, m_text, range.min, range.max, rate);
        ASSERT_EQ(m_cali.getFramerateIndex(&m_key, &range, rate), index);
        ASSERT_EQ(m_cali.getFramerateIndex(fov, m_key.text, range.min, range.max, rate), index);
        unsigned short byRecord = rate;
        unsigned short byBounds = rate;
        ASSERT_EQ(m_cali.checkFramerate(&m_key, &range, byRecord), index != -2);
        ASSERT_EQ(m_cali.checkFramerate(fov, m_key.text, range.min, range.max, byBounds),
                  index != -2);
        ASSERT_EQ(byRecord, index < 0 ? 0 : rate);
        ASSERT_EQ(byBounds, byRecord);
    }

    ConfigCali& m_cali;
    const CaliModel& m_model;
    OPTICS m_key;
    std::string m_text;
};

void expectSameRange(const TemperatureRange& read, const RangeModel& expected) {
    EXPECT_EQ(read.Fid, expected.fid);
    EXPECT_EQ(read.Skim, expected.skim);
    EXPECT_EQ(read.SkimRatio, expected.skimRatio);
    expectSame({{read.TempLo, read.TempHi}}, {{expected.low, expected.high}});
    expectSame({{read.TempLoExt, read.TempHiExt}}, {{expected.lowExt, expected.highExt}});
    ASSERT_EQ(read.Framerates.has_value(), expected.rates.has_value());
    if (read.Framerates) {
        EXPECT_EQ(std::vector<int>(read.Framerates->begin(), read.Framerates->end()),
                  *expected.rates);
    }
    EXPECT_EQ(read.Decimal, expected.decimal);
    EXPECT_EQ(read.Table.Normalize, expected.isNormalized);
    EXPECT_EQ(read.Table.T1, expected.t1);
    EXPECT_EQ(read.Table.T3, expected.t3);
    EXPECT_EQ(read.Table.E1, expected.e1);
    EXPECT_EQ(read.Table.E3, expected.e3);
    EXPECT_TRUE(isSame(static_cast<float>(read.Table.Lambda), static_cast<float>(expected.lambda)));
}

void expectSameOptics(const OpticsDef& read, const OpticsModel& expected) {
    EXPECT_EQ(read.FOV, expected.fov);
    EXPECT_EQ(read.SerNo, expected.serNo);
    ASSERT_EQ(read.Text != nullptr, expected.text.has_value());
    if (read.Text) {
        EXPECT_EQ(read.Text.get(), *expected.text);
    }
    EXPECT_EQ(read.SamplePointCali, expected.isSamplePoint);
    ASSERT_EQ(read.TempRanges.size(), expected.ranges.size());
    for (std::size_t j = 0; j < read.TempRanges.size(); ++j)
        expectSameRange(read.TempRanges[j], expected.ranges[j]);
}

class CaliModelComparison : public testing::Test {
protected:
    /// Calls `compare` with a folder, the model and the document for each random description.
    template <typename Compare>
    void forEachDescription(Compare compare) {
        std::size_t optics = 0;
        for (unsigned int seed = 1; seed <= kDescriptions; ++seed) {
            std::mt19937 random(seed);
            const DescriptionText text = randomDescription(random);
            SCOPED_TRACE("seed " + std::to_string(seed) + ":\n" + text.document);
            writeFile(m_folder / "Cali-12345678.xml", text.document);
            const CaliModel model(text.content);
            optics += model.optics.size();
            compare(model);
            if (HasFailure()) return;
        }
        EXPECT_GT(optics, kDescriptions) << "the descriptions are nearly empty";
    }

    TempDir m_folder;
};

TEST_F(CaliModelComparison, readsEveryFieldAsTheModelDoes) {
    forEachDescription([&](const CaliModel& model) {
        dax::SimpleXML document;
        ASSERT_TRUE(document.open((m_folder / "Cali-12345678.xml").c_str(), "CaliData"));
        const std::vector<OpticsDef> read = readOptics(document);
        ASSERT_EQ(read.size(), model.optics.size());
        for (std::size_t i = 0; i < read.size(); ++i) expectSameOptics(read[i], model.optics[i]);
    });
}

TEST_F(CaliModelComparison, answersQuestionsByPositionAsTheModelDoes) {
    forEachDescription([&](const CaliModel& model) {
        ConfigCali cali;
        ASSERT_EQ(cali.load(m_folder.path().c_str(), kSerial), 0);
        ASSERT_EQ(cali.getOpticsCount(), static_cast<int>(model.optics.size()));
        for (std::size_t i = 0; i < model.optics.size(); ++i) {
            const OpticsModel& expected = model.optics[i];
            EXPECT_EQ(take(cali.getOptics(static_cast<int>(i))),
                      std::make_pair(expected.fov, expected.text.value_or("(null)")));
            EXPECT_EQ(cali.isSamplePointCali(static_cast<int>(i)), expected.isSamplePoint);
        }
        EXPECT_EQ(cali.getOptics(cali.getOpticsCount()), nullptr);
        expectSame(take(cali.getTempRangeOverAll()), CaliModel::span(model.optics));
    });
}

TEST_F(CaliModelComparison, answersQuestionsByKeyAsTheModelDoes) {
    forEachDescription([&](const CaliModel& model) {
        ConfigCali cali;
        ASSERT_EQ(cali.load(m_folder.path().c_str(), kSerial), 0);
        for (const int fov : kFovs) {
            KeyComparison(cali, model, fov, nullptr).compare();
            for (const std::string& text : randomTexts())
                KeyComparison(cali, model, fov, text.c_str()).compare();
            KeyComparison(cali, model, fov, "absent").compare();
        }
    });
}

}  // namespace
}  // namespace thermika_test
