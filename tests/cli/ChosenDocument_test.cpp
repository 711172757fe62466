// A choice that no document may hold is refused with what would be right.
#include "cli/ChosenDocument.h"

#include <string>

#include <gtest/gtest.h>

#include "cli/Command.h"
#include "support/CaliDescriptions.h"

namespace {

using thermika::cli::chosenDocument;
using thermika::cli::Problem;
using thermika::cli::Status;
using thermika_test::LoadedCali;
using thermika_test::opticsElement;
using thermika_test::opticsList;
using thermika_test::rangeElement;

constexpr const char* kNextStep =
    " (choose another optics or range, or ask the vendor for another description)";

/// Why the only choice of such a description makes no document; "" when it makes one.
std::string problem(int fov, const std::string& text, const char* min, const char* max) {
    LoadedCali cali(opticsList(opticsElement(fov, text, rangeElement(min, max))));
    try {
        chosenDocument(*cali, {14080045, "/cali", std::to_string(fov), ""});
        return "";
    } catch (const Problem& refused) {
        EXPECT_EQ(refused.status(), Status::kFailed) << refused.what();
        return refused.what();
    }
}

TEST(ChosenDocument, hasTextsThatTheSchemaAllows) {
    const std::string longest(200, 'T');
    EXPECT_EQ(problem(33, longest, "0", "9"), "");
    EXPECT_EQ(problem(33, longest + "T", "0", "9"),
              "the choice makes no right document: <optics_text> holds \"" + std::string(80, 'T') +
                  "...\"; give at most 200 characters without \"/\": the text that tells optics "
                  "with one field of view apart" +
                  kNextStep);
    const std::string ofReferences = [] {
        std::string text;
        for (int i = 0; i < 200; ++i) text += "&amp;";
        return text;
    }();
    EXPECT_EQ(problem(33, ofReferences, "0", "9"), "");
    EXPECT_NE(problem(33, ofReferences + "&lt;", "0", "9"), "");
    EXPECT_NE(problem(33, "a/b", "0", "9"), "");
    EXPECT_NE(problem(33, "a&#47;b", "0", "9"), "");
}

TEST(ChosenDocument, hasFieldsOfViewThatTheSchemaAllows) {
    EXPECT_EQ(problem(1, "", "0", "9"), "");
    EXPECT_EQ(problem(360, "", "0", "9"), "");
    for (const int fov : {-33, 0, 361})
        EXPECT_EQ(problem(fov, "", "0", "9"),
                  "the choice makes no right document: <fov> holds \"" + std::to_string(fov) +
                      "\"; give a whole number of degrees from 1 to 360: the field of view of one "
                      "of the camera's optics" +
                      kNextStep);
}

TEST(ChosenDocument, hasLimitsThatTheSchemaAllows) {
    EXPECT_EQ(problem(33, "", "-273", "10000"), "");
    EXPECT_NE(problem(33, "", "-274", "100"), "");
    EXPECT_NE(problem(33, "", "0", "10001"), "");
    EXPECT_NE(problem(33, "", "0", "inf"), "");
}

TEST(ChosenDocument, hasNoTextThatCannotStandBetweenTags) {
    EXPECT_EQ(problem(33, "a&b", "0", "9"),
              "the optics text \"a&b\" cannot stand in an XML document (choose another optics, or "
              "ask the vendor for another description)");
    for (const char* const text : {"a&nbsp;b", "a&#1;b", "a\x01", "a\xE9", "a\xEF\xBF\xBE"})
        EXPECT_NE(problem(33, text, "0", "9"), "") << text;
}

}  // namespace
