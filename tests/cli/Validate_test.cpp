// The command `thermika validate`, as a user runs it.
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/BuildPaths.h"
#include "support/Companion.h"
#include "support/TestFiles.h"

namespace {

using nlohmann::json;
using thermika_test::runCompanion;
using thermika_test::RunResult;
using thermika_test::TempDir;
using thermika_test::writeFile;

const std::string kDocuments = THERMIKA_TEST_DATA "/documents/";

/// With the sample cameras' descriptions.
RunResult validate(std::vector<std::string> arguments, const std::function<void()>& prepare = {}) {
    arguments.insert(arguments.begin(), {"--dir", THERMIKA_EXAMPLES, "validate"});
    return runCompanion(arguments, prepare);
}

TEST(Validate, says0AndNothingOnStandardOutputForARightDocument) {
    const std::string file = kDocuments + "valid/suggestion-activated.xml";
    EXPECT_EQ(validate({file}), (RunResult{"", file + ": nothing is wrong with it\n", 0}));
    EXPECT_EQ(validate({"-q", file}), (RunResult{"", "", 0}));
    EXPECT_EQ(validate({"-q", file, "14080045"}), (RunResult{"", "", 0}));
    EXPECT_EQ(validate({"-q", kDocuments + "valid/optics-with-text.xml"}), (RunResult{"", "", 0}));
}

TEST(Validate, says1AndALineForEachFinding) {
    const std::string file = kDocuments + "broken/limits-outside-temperature.xml";
    EXPECT_EQ(
        validate({file}),
        (RunResult{file + ":13: <min> does not belong into <imager>; move it into <temperature>\n" +
                       file +
                       ":14: <max> does not belong into <imager>; move it into <temperature>\n",
                   "", 1}));
}

TEST(Validate, saysWhenItShowsTheFirstFindingsOnly) {
    const TempDir folder;
    const std::string file = folder / "many.xml";
    std::string inner;
    for (int i = 0; i < 101; ++i) inner += "<x/>";
    writeFile(file, "<imager><serial>14080045</serial>" + inner + "</imager>\n");
    EXPECT_EQ(validate({file}).err, "only the first 100 findings are shown\n");
    const RunResult result = validate({"--json", file});
    EXPECT_EQ(result.err, "only the first 100 findings are shown\n");
    EXPECT_EQ(json::parse(result.out).at("findings").size(), 100U);
}

TEST(Validate, comparesTheChoiceWithTheCamerasDescription) {
    const std::string file = kDocuments + "uncalibrated/field-of-view-unknown.xml";
    EXPECT_EQ(validate({file}),
              (RunResult{file + ":12: the camera has no optics of 34 degrees; give 33, 53 or 18\n",
                         "", 1}));
    const std::string other = kDocuments + "uncalibrated/limits-of-another-camera.xml";
    EXPECT_EQ(validate({other}),
              (RunResult{other + ":14: the optics of 60 degrees was not calibrated for -20 to 100; "
                                 "give 0 to 250\n",
                         "", 1}));
    for (const char* const name : {"limits-exchanged", "limits-unknown", "optics-text-unknown",
                                   "field-of-view-without-limits", "limits-without-field-of-view"})
        EXPECT_EQ(validate({kDocuments + "uncalibrated/" + name + ".xml"}).status, 1) << name;
}

TEST(Validate, wantsTheSerialNumberThatWasGiven) {
    const std::string file = kDocuments + "valid/as-printed.xml";
    EXPECT_EQ(validate({file, "14080046"}),
              (RunResult{file + ":3: <serial> holds \"14080045\"; give 14080046: the number of the "
                                "camera that it is for\n",
                         "", 1}));
}

TEST(Validate, says2ForAWrongCommandLine) {
    EXPECT_EQ(validate({}).status, 2);
    EXPECT_EQ(validate({kDocuments + "valid/as-printed.xml", "1408"}).status, 2);
}

TEST(Validate, says3WhenTheFileCannotBeRead) {
    const TempDir folder;
    EXPECT_EQ(validate({folder / "none.xml"}),
              (RunResult{"",
                         "thermika: cannot read " + folder / "none.xml" +
                             ": No such file or directory (name the document that you edited)\n",
                         3}));
    EXPECT_EQ(validate({folder.path()}).status, 3);
    EXPECT_NE(validate({folder.path()}).err.find(": Is a directory ("), std::string::npos);
}

// Of a longer file no more is read than it takes to know.
TEST(Validate, saysOfAFarTooLongDocumentWhatIsTrue) {
    const TempDir folder;
    const std::string file = folder / "long.xml";
    writeFile(file, std::string(3000000, ' '));
    EXPECT_EQ(validate({file}),
              (RunResult{file + ":1: the document has more than 1048576 bytes; begin with the one "
                                "that thermika config prints\n",
                         "", 1}));
}

TEST(Validate, says3WhenTheChoiceCannotBeComparedForWantOfADescription) {
    const TempDir folder;
    const auto without = [&](const std::string& document) {
        return runCompanion({"--dir", folder.path(), "validate", kDocuments + document});
    };
    const RunResult result = without("valid/suggestion-activated.xml");
    EXPECT_EQ(result.status, 3);
    EXPECT_NE(result.err.find("Cali-14080045.xml"), std::string::npos) << result;
    EXPECT_NE(result.err.find("thermika fetch 14080045"), std::string::npos) << result;
    EXPECT_EQ(without("valid/as-printed.xml").status, 0);
}

TEST(Validate, readsFromAPipe) {
    EXPECT_EQ(thermika_test::run(
                  "sh", {"sh", "-c", R"("$0" validate /dev/stdin <"$1")", THERMIKA_COMPANION,
                         std::string(kDocuments) + "broken/focus-above-hundred.xml"}),
              (RunResult{"/dev/stdin:28: <focus> holds \"100.5\"; give a number from 0 to 100: the "
                         "focus motor's position in percent of its way\n",
                         "", 1}));
}

TEST(Validate, escapesWhatTheDocumentHolds) {
    const TempDir folder;
    const std::string file = folder / "\033[31m.xml";
    writeFile(file,
              "<imager><serial>14080045</serial>\xC2\x9B"
              "31m red\n</imager>");
    const RunResult result = validate({file});
    EXPECT_EQ(result.out, folder.path() +
                              "/\\x1B[31m.xml:1: the text \"\\xC2\\x9B31m red\" stands "
                              "between elements; remove it, or put it between \"<!--\" "
                              "and \"-->\"\n");
}

TEST(Validate, answersProgramsInJson) {
    const std::string file = kDocuments + "broken/focus-above-hundred.xml";
    const RunResult result = validate({"--json", file});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(json::parse(result.out),
              json({{"file", file},
                    {"serial", 14080045},
                    {"findings",
                     {{{"line", 28},
                       {"wrong", "<focus> holds \"100.5\""},
                       {"right",
                        "give a number from 0 to 100: the focus motor's position in "
                        "percent of its way"}}}}}));
    const std::string right = kDocuments + "valid/as-printed.xml";
    EXPECT_EQ(json::parse(validate({"--json", right}).out),
              json({{"file", right}, {"serial", 14080045}, {"findings", json::array()}}));
    const json none = json::parse(validate({"--json", kDocuments + "broken/no-markup.xml"}).out);
    EXPECT_TRUE(none.at("serial").is_null());
}

}  // namespace
