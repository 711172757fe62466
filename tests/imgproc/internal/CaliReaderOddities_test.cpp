// Documents that are not as the camera's maker writes them: containers and closing tags that are
// missing, elements that are repeated, nested or in the wrong place, and very many of them.
#include "imgproc/internal/CaliReader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/BuildPaths.h"
#include "support/CaliDescriptions.h"
#include "support/TestFiles.h"

namespace thermika_test {
namespace {

TEST(CaliReaderOddities, searchesParametersInTheWholeDocumentWithoutMain) {
    EXPECT_EQ(mainOf("<Other><TecA>7</TecA></Other>").TecA, 7);
    EXPECT_EQ(mainOf("<TecA>7</TecA><Main></Main>").TecA, 3400) << "Main is there";
}

TEST(CaliReaderOddities, takesTheFirstOfRepeatedElements) {
    const MainSection section = mainOf(
        "<Main><TecA>7</TecA><TecA>8</TecA></Main><Main><TecA>9</TecA><TecB>9</TecB>"
        "</Main>");
    EXPECT_EQ(section.TecA, 7);
    EXPECT_EQ(section.TecB, 400) << "the second Main is not looked into";
}

TEST(CaliReaderOddities, doesNotSeeElementsWithAttributes) {
    EXPECT_EQ(mainOf("<Main><TecA unit=\"mA\">7</TecA><TecB >8</TecB></Main>").TecA, 3400);
    EXPECT_TRUE(opticsOf(opticsList("<OpticsDef id=\"1\"><FOV>7</FOV></OpticsDef>")).empty());
}

// The containers are only narrower places to search in.
TEST(CaliReaderOddities, searchesOpticsInTheEnclosingElementWhenAContainerIsMissing) {
    const std::string one = opticsElement(33, "", "");
    EXPECT_EQ(opticsOf(one).size(), 1U);
    EXPECT_EQ(opticsOf("<Optics>" + one + "</Optics>" + one).size(), 1U);
    EXPECT_EQ(opticsOf("<Temperature>" + one + "</Temperature>" + one).size(), 1U);
    EXPECT_EQ(opticsOf("<Other>" + one + "</Other>" + one).size(), 2U);
    EXPECT_EQ(opticsOf("<Temperature></Temperature>" + opticsList(one)).size(), 0U)
        << "the first Temperature is entered, and empty";
}

TEST(CaliReaderOddities, findsNoOpticsInAnEmptyList) {
    EXPECT_TRUE(opticsOf(opticsList("")).empty());
    EXPECT_TRUE(opticsOf("").empty());
}

// An element ends at the first closing tag of its name, so what it holds of its own name takes its
// place: the outer optics has the inner one's fields, and what follows belongs to nobody.
TEST(CaliReaderOddities, endsNestedOpticsAtTheFirstClosingTag) {
    const std::vector<OpticsDef> all =
        opticsOf(opticsList("<OpticsDef><OpticsDef><FOV>1</FOV></OpticsDef><FOV>2</FOV></OpticsDef>"
                            "<OpticsDef><FOV>3</FOV></OpticsDef>"));
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].FOV, 1);
    EXPECT_EQ(all[1].FOV, 3);
}

// A repeated element is cut short by a missing closing tag: it ends where the next one does.
TEST(CaliReaderOddities, mergesOpticsWhoseClosingTagIsMissing) {
    const std::vector<OpticsDef> all =
        opticsOf(opticsList("<OpticsDef><FOV>1</FOV><OpticsDef><FOV>2</FOV></OpticsDef>"));
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all[0].FOV, 1);
}

TEST(CaliReaderOddities, searchesRangeFieldsAtEveryDepth) {
    const std::vector<OpticsDef> all = opticsOf(opticsList(
        opticsElement(1, "",
                      "<TemperatureRange><Deep><TempLo>5</TempLo></Deep>"
                      "<TableParams><Decimal>3</Decimal></TableParams></TemperatureRange>")));
    ASSERT_EQ(all.at(0).TempRanges.size(), 1U);
    EXPECT_EQ(all[0].TempRanges[0].TempLo, 5.0F);
    EXPECT_EQ(all[0].TempRanges[0].Decimal, 3);
}
// The range without bounds of its own stands before another one; neither borrows from it.
TEST(CaliReaderOddities, keepsRangesApart) {
    const std::vector<OpticsDef> all = opticsOf(opticsList(opticsElement(
        1, "",
        "<TemperatureRange></TemperatureRange>" + rangeElement("1", "2",
                                                               "<Framerates></Framerates>"
                                                               "<Decimal>4</Decimal>"))));
    const std::vector<TemperatureRange>& ranges = all.at(0).TempRanges;
    ASSERT_EQ(ranges.size(), 2U);
    EXPECT_EQ(ranges[0].TempHi, 0.0F);
    EXPECT_EQ(ranges[0].Decimal, 1);
    EXPECT_FALSE(ranges[0].Framerates.has_value());
    EXPECT_EQ(ranges[1].TempHi, 2.0F);
    EXPECT_EQ(ranges[1].Decimal, 4);
    EXPECT_TRUE(ranges[1].Framerates.has_value());
}

TEST(CaliReaderOddities, fitsWhatTheFileInTheTestDataHas) {
    const std::string document =
        readFile(THERMIKA_TEST_DATA "/crafted/misplaced-and-repeated-elements.xml");
    const std::string content = document.substr(document.find('\n') + 1);
    const std::vector<OpticsDef> all = opticsOf(content.substr(0, content.rfind("</CaliData>")));
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(all[0].FOV, 33) << "the first of two";
    EXPECT_STREQ(all[0].Text.get(), "after its ranges");
    ASSERT_EQ(all[0].TempRanges.size(), 1U) << "of the first TempRanges";
    EXPECT_EQ(all[0].TempRanges[0].TempLo, -20.0F);
    EXPECT_EQ(all[0].TempRanges[0].Decimal, 7) << "the table's, which stands first";
    EXPECT_EQ(all[1].FOV, 0) << "commented out";
    EXPECT_EQ(all[1].TempRanges.size(), 3U) << "a range outside of TempRanges is not read";
    EXPECT_EQ(all[2].FOV, 29);
    EXPECT_EQ(all[2].SerNo, 5) << "found in an element that nobody knows";
    ASSERT_EQ(all[2].TempRanges.size(), 1U);
    EXPECT_EQ(all[2].TempRanges[0].Framerates, (std::vector<std::uint16_t>{27, 0, 80}));
}

TEST(CaliReaderOddities, readsThousandsOfOptics) {
    std::string optics;
    for (int i = 0; i < 5000; ++i) optics += opticsElement(i, std::to_string(i), "");
    const std::vector<OpticsDef> all = opticsOf(opticsList(optics));
    ASSERT_EQ(all.size(), 5000U);
    for (std::size_t i = 0; i < all.size(); ++i) {
        ASSERT_EQ(all[i].FOV, static_cast<int>(i));
        ASSERT_EQ(all[i].Text.get(), std::to_string(i));
        ASSERT_TRUE(all[i].TempRanges.empty());
    }
}

TEST(CaliReaderOddities, readsThousandsOfRangesAndFramerates) {
    std::string ranges;
    for (int j = 0; j < 5000; ++j) ranges += rangeElement(std::to_string(j), "9999");
    std::string rates;
    for (int k = 0; k < 5000; ++k)
        rates += "<Framerate><FR>" + std::to_string(k) + "</FR></Framerate>\n";
    ranges += rangeElement("-1", "0", "<Framerates>\n" + rates + "</Framerates>");
    const std::vector<OpticsDef> all = opticsOf(opticsList(opticsElement(33, "", ranges)));
    ASSERT_EQ(all.size(), 1U);
    ASSERT_EQ(all[0].TempRanges.size(), 5001U);
    for (std::size_t j = 0; j < 5000; ++j)
        ASSERT_EQ(all[0].TempRanges[j].TempLo, static_cast<float>(j));
    const auto& read = all[0].TempRanges.back().Framerates;
    ASSERT_TRUE(read.has_value());
    ASSERT_EQ(read->size(), 5000U);
    for (std::size_t k = 0; k < 5000; ++k) ASSERT_EQ((*read)[k], k);
}

}  // namespace
}  // namespace thermika_test
