// The text of the configuration document, to the byte.
#include "sdk/camera/ConfigurationDocument.h"

#include <algorithm>
#include <climits>
#include <locale>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "support/ExpectedDocument.h"
#include "support/ProcessState.h"

namespace {

using thermika_test::ExpectedDocument;

dax::ConfigurationDocument defaultDocument() {
    dax::ConfigurationDocument document;
    document.serial = 12345678;
    document.formatsDir = "/usr/share/libthermika";
    document.calibrationDir = "/usr/share/libthermika/cali";
    return document;
}

TEST(ConfigurationDocument, isTheExpectedText) {
    EXPECT_EQ(defaultDocument().text(), ExpectedDocument().text());
}

TEST(ConfigurationDocument, hasThirtyThreeLinesEachEndedByALineFeed) {
    const std::string text = defaultDocument().text();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 33);
    EXPECT_EQ(text.substr(text.size() - 11), "\n</imager>\n");
    EXPECT_EQ(text.find('\r'), std::string::npos);
    EXPECT_EQ(text.find('\t'), std::string::npos);
}

TEST(ConfigurationDocument, carriesItsValues) {
    dax::ConfigurationDocument document = defaultDocument();
    document.serial = 14080045;
    document.formatsDir = "/formats";
    document.calibrationDir = "/calibration";
    document.fovDeg = 33;
    document.minTempC = 150;
    document.maxTempC = 900;
    EXPECT_EQ(document.text(),
              (ExpectedDocument{"14080045", "/formats", "/calibration", 33, 150, 900}.text()));
}

TEST(ConfigurationDocument, carriesTheLowestAndTheHighestValues) {
    dax::ConfigurationDocument document = defaultDocument();
    document.serial = ULONG_MAX;
    document.fovDeg = INT_MIN;
    document.minTempC = INT_MIN;
    document.maxTempC = INT_MAX;
    ExpectedDocument expected;
    expected.serial = std::to_string(ULONG_MAX);
    expected.fovDeg = INT_MIN;
    expected.minTempC = INT_MIN;
    expected.maxTempC = INT_MAX;
    EXPECT_EQ(document.text(), expected.text());
}

// A user who names a directory like this has to escape it in the document.
TEST(ConfigurationDocument, doesNotEscapeDirectories) {
    dax::ConfigurationDocument document = defaultDocument();
    document.formatsDir = "/a&b<c>\"d'</formatspath>-->%s\\";
    document.calibrationDir = "/K\xc3\xa4lte \xff\x01";
    ExpectedDocument expected;
    expected.formatsDir = document.formatsDir;
    expected.calibrationDir = document.calibrationDir;
    EXPECT_EQ(document.text(), expected.text());
}

TEST(ConfigurationDocument, takesEmptyAndLongDirectories) {
    dax::ConfigurationDocument document = defaultDocument();
    document.formatsDir = "";
    ExpectedDocument expected;
    expected.formatsDir = "";
    EXPECT_EQ(document.text(), expected.text());

    const std::string longDir = "/" + std::string(5000, 'f');
    document.formatsDir = longDir;
    expected.formatsDir = longDir;
    EXPECT_EQ(document.text(), expected.text());
}

TEST(ConfigurationDocument, takesNoMoreOfADirectoryThanItIsGiven) {
    const std::string longer = "/formats/of/another";
    dax::ConfigurationDocument document = defaultDocument();
    document.formatsDir = std::string_view(longer).substr(0, 8);
    ExpectedDocument expected;
    expected.formatsDir = "/formats";
    EXPECT_EQ(document.text(), expected.text());
}

TEST(ConfigurationDocument, groupsNoDigits) {
    const std::locale former =
        std::locale::global(std::locale(std::locale(), new thermika_test::Grouping));
    dax::ConfigurationDocument document = defaultDocument();
    document.maxTempC = 1500;
    ExpectedDocument expected;
    expected.maxTempC = 1500;
    EXPECT_EQ(document.text(), expected.text());
    std::locale::global(former);
}

TEST(ConfigurationDocument, letsAChoiceTakeEffect) {
    dax::ConfigurationDocument document = defaultDocument();
    document.opticsText = "T1";
    const std::string suggestion = document.text();
    document.isChosen = true;
    std::string choice = suggestion;
    for (const auto& [from, to] :
         {std::pair("  <!--\n  <fov>", "  <fov>"),
          std::pair("<optics_text></optics_text>\n  -->\n", "<optics_text>T1</optics_text>\n")}) {
        ASSERT_NE(choice.find(from), std::string::npos) << from;
        choice.replace(choice.find(from), std::string(from).size(), to);
    }
    EXPECT_EQ(document.text(), choice);
}

}  // namespace
