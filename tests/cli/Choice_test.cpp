// Choosing an optics and a range of a description.
#include "cli/Choice.h"

#include <string>

#include <gtest/gtest.h>

#include "cli/Command.h"
#include "support/CaliDescriptions.h"

namespace {

using thermika::cli::choose;
using thermika::cli::parseOptics;
using thermika::cli::parseRange;
using thermika::cli::Problem;
using thermika_test::LoadedCali;
using thermika_test::opticsElement;
using thermika_test::opticsList;
using thermika_test::rangeElement;

std::string twoRanges() { return rangeElement("-20", "100") + rangeElement("0.5", "250.75"); }

/// What the choice is, or the message of the Problem.
std::string chosen(LoadedCali& cali, const std::string& optics, const std::string& range) {
    try {
        const auto choice = choose(*cali, optics, range);
        return std::to_string(choice.fovDeg) + "," + choice.text + " " +
               std::to_string(choice.minTempC) + ".." + std::to_string(choice.maxTempC);
    } catch (const Problem& problem) {
        return problem.what();
    }
}

TEST(Choice, readsAnOpticsWithAndWithoutText) {
    EXPECT_EQ(parseOptics("33")->fovDeg, 33);
    EXPECT_FALSE(parseOptics("33")->text);
    EXPECT_EQ(parseOptics("33,T, 2")->text, "T, 2");
    EXPECT_EQ(parseOptics("33,")->text, "");
    for (const char* const wrong : {"", "x", "33x", " 33", "33.5", ",wide", "99999999999"})
        EXPECT_FALSE(parseOptics(wrong)) << wrong;
}

TEST(Choice, readsARange) {
    EXPECT_EQ(parseRange("-20..100")->min, -20.0F);
    EXPECT_EQ(parseRange("-20.5..+100.25")->max, 100.25F);
    EXPECT_EQ(parseRange("-20.5..+100.25")->min, -20.5F);
    for (const char* const wrong : {"", "..", "1..", "..1", "1.2", "1..2x", "a..b", "1,2"})
        EXPECT_FALSE(parseRange(wrong)) << wrong;
}

TEST(Choice, isTheFirstOpticsAndRangeUnlessNamed) {
    LoadedCali cali(
        opticsList(opticsElement(33, "", twoRanges()) + opticsElement(60, "wide", twoRanges())));
    EXPECT_EQ(chosen(cali, "", ""), "33, -20..100");
    EXPECT_EQ(chosen(cali, "60", ""), "60,wide -20..100");
    EXPECT_EQ(chosen(cali, "60,wide", "0.5..250.75"), "60,wide 0..250");
    EXPECT_EQ(chosen(cali, "", "0..250"), "33, 0..250");
}

TEST(Choice, prefersTheOpticsWithoutTextWhereNoneIsNamed) {
    LoadedCali cali(
        opticsList(opticsElement(33, "wide", twoRanges()) + opticsElement(33, "", twoRanges())));
    EXPECT_EQ(chosen(cali, "33", ""), "33, -20..100");
    EXPECT_EQ(chosen(cali, "33,wide", ""), "33,wide -20..100");
}

TEST(Choice, countsOpticsOfOneNameOnce) {
    LoadedCali cali(opticsList(opticsElement(33, "wide", twoRanges()) +
                               opticsElement(33, "wide", twoRanges())));
    EXPECT_EQ(chosen(cali, "33", ""), "33,wide -20..100");
    EXPECT_EQ(chosen(cali, "60", ""),
              "--optics: the camera was not calibrated for \"60\" (there is: \"33,wide\")");
}

TEST(Choice, tellsRangesApartThatBeginAlike) {
    LoadedCali cali(
        opticsList(opticsElement(33, "", rangeElement("-20", "100") + rangeElement("-20", "250"))));
    EXPECT_EQ(chosen(cali, "", "-20..250"), "33, -20..250");
}

TEST(Choice, namesWhatThereIsWhenTheChoiceIsWrong) {
    LoadedCali cali(
        opticsList(opticsElement(33, "a\033", twoRanges()) + opticsElement(33, "b", twoRanges())));
    EXPECT_EQ(chosen(cali, "34", ""),
              "--optics: the camera was not calibrated for \"34\" (there is: \"33,a\x1B\", "
              "\"33,b\")");
    EXPECT_EQ(chosen(cali, "33", ""),
              "--optics: \"33\" is more than one optics (there is: \"33,a\x1B\", \"33,b\")");
    EXPECT_EQ(chosen(cali, "wide", ""),
              "--optics: \"wide\" is not FOV or FOV,TEXT (there is: \"33,a\x1B\", \"33,b\")");
    EXPECT_EQ(chosen(cali, "33,b", "0..100"),
              "--range: the optics \"33,b\" was not calibrated for \"0..100\" (there is: "
              "\"-20..100\", \"0.5..250.75\")");
    EXPECT_EQ(chosen(cali, "33,b", "hot"),
              "--range: \"hot\" is not MIN..MAX (there is: \"-20..100\", \"0.5..250.75\")");
}

TEST(Choice, isNoneWhereThereIsNothingToChooseFrom) {
    LoadedCali noRange(opticsList(opticsElement(33, "", "")));
    EXPECT_EQ(chosen(noRange, "", "").find("the optics \"33\" has no temperature range"), 0U);
}

}  // namespace
