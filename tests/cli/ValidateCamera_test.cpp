// Field of view, text and limits against a camera's optics.
#include "cli/ValidateCamera.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using thermika::cli::checkChoice;
using thermika::cli::checkDocument;
using thermika::cli::Finding;

const std::vector<dax::OpticsEntry> kOptics = {
    {33, {{-20, 100}, {0, 250}}, ""},
    {53, {{-20, 100}}, "O53"},
    {53, {{150, 900}}, "HT"},
    {18, {}, ""},
};

std::string findings(const std::string& elements,
                     const std::vector<dax::OpticsEntry>& optics = kOptics) {
    const auto document =
        checkDocument("<imager><serial>14080045</serial>\n" + elements + "</imager>");
    EXPECT_TRUE(document.findings.empty());
    std::string text;
    for (const Finding& finding : checkChoice(document.settings, optics))
        text += std::to_string(finding.line) + ": " + finding.wrong + "; " + finding.right;
    return text;
}

std::string limits(int min, int max) {
    return "<temperature>\n<min>" + std::to_string(min) + "</min><max>" + std::to_string(max) +
           "</max></temperature>";
}

TEST(ValidateCamera, acceptsADocumentThatChoosesNothing) {
    EXPECT_EQ(findings(""), "");
    EXPECT_EQ(findings("<optics_text/>"), "");
    EXPECT_FALSE(thermika::cli::choosesOptics({}));
    thermika::cli::ImagerSettings half;
    half.minTempC = thermika::cli::DocumentNumber{-20, 1};
    EXPECT_FALSE(thermika::cli::choosesOptics(half));
}

TEST(ValidateCamera, comparesADocumentThatChoosesAnything) {
    using thermika::cli::DocumentNumber;
    thermika::cli::ImagerSettings fov;
    fov.fovDeg = DocumentNumber{33, 1};
    EXPECT_TRUE(thermika::cli::choosesOptics(fov));
    thermika::cli::ImagerSettings limits;
    limits.minTempC = DocumentNumber{-20, 1};
    limits.maxTempC = DocumentNumber{100, 1};
    EXPECT_TRUE(thermika::cli::choosesOptics(limits));
    thermika::cli::ImagerSettings text;
    text.opticsText = thermika::cli::DocumentText{"HT", 1};
    EXPECT_TRUE(thermika::cli::choosesOptics(text));
}

TEST(ValidateCamera, acceptsEveryCombinationOfTheDescription) {
    EXPECT_EQ(findings("<fov>33</fov>" + limits(-20, 100)), "");
    EXPECT_EQ(findings("<fov>33</fov>" + limits(0, 250)), "");
    EXPECT_EQ(findings("<fov>53</fov><optics_text>HT</optics_text>" + limits(150, 900)), "");
}

// As `thermika config --optics FOV` does.
TEST(ValidateCamera, takesAnEmptyTextForTheOpticsWithoutOne) {
    const std::vector<dax::OpticsEntry> optics = {
        {33, {{0, 250}}, "T"}, {33, {{-20, 100}}, ""}, {53, {{0, 250}}, "T"}};
    EXPECT_EQ(findings("<fov>33</fov>" + limits(-20, 100), optics), "");
    EXPECT_EQ(findings("<fov>33</fov><optics_text>T</optics_text>" + limits(0, 250), optics), "");
    for (const char* const text : {"", "<optics_text/>"})
        EXPECT_EQ(
            findings("<fov>33</fov>" + std::string(text) + limits(0, 250), optics),
            "3: the optics of 33 degrees without a text was not calibrated for 0 to 250; give "
            "-20 to 100");
    EXPECT_EQ(findings("<fov>33</fov>", optics),
              "2: a field of view stands without limits; give -20 to 100 as <temperature> as well");
}

TEST(ValidateCamera, comparesTextsAsADocumentsReaderHasThem) {
    const auto findingsFor = [](const std::string& written, const std::string& described) {
        return findings(
            "<fov>33</fov><optics_text>" + written + "</optics_text>" + limits(-20, 100),
            {{33, {{-20, 100}}, described}});
    };
    EXPECT_EQ(findingsFor("A&amp;B", "A&amp;B"), "");
    EXPECT_EQ(findingsFor("A&#38;B", "A&amp;B"), "");
    EXPECT_EQ(findingsFor("33\u00b0", "33&#xB0;"), "");
    EXPECT_EQ(findingsFor("A&amp;amp;B", "A&amp;B"),
              "2: no optics of 33 degrees has the text \"A&amp;amp;B\"; give \"A&amp;B\"");
    // What can stand in no document is meant as it stands.
    EXPECT_EQ(findingsFor("A&amp;B", "A&B"), "");
    EXPECT_EQ(findingsFor("AB", "A&B"),
              "2: no optics of 33 degrees has the text \"AB\"; give \"A&amp;B\"");
}

TEST(ValidateCamera, takesAnEmptyTextForAnyOpticsWhereEachHasOne) {
    EXPECT_EQ(findings("<fov>53</fov><optics_text/>" + limits(150, 900)), "");
    EXPECT_EQ(findings("<fov>53</fov>" + limits(-20, 100)), "");
}

TEST(ValidateCamera, namesTheFieldsOfViewThereAre) {
    EXPECT_EQ(findings("<fov>34</fov>" + limits(-20, 100)),
              "2: the camera has no optics of 34 degrees; give 33, 53 or 18");
}

TEST(ValidateCamera, namesTheTextsThereAre) {
    EXPECT_EQ(findings("<fov>53</fov>\n<optics_text>XT</optics_text>" + limits(-20, 100)),
              "3: no optics of 53 degrees has the text \"XT\"; give \"O53\" or \"HT\"");
    EXPECT_EQ(findings("<fov>33</fov><optics_text>XT</optics_text>" + limits(-20, 100)),
              "2: no optics of 33 degrees has the text \"XT\"; leave it empty");
}

TEST(ValidateCamera, namesTheRangesThereAre) {
    EXPECT_EQ(findings("<fov>33</fov>" + limits(-20, 250)),
              "3: the optics of 33 degrees was not calibrated for -20 to 250; give -20 to 100 or "
              "0 to 250");
    EXPECT_EQ(findings("<fov>33</fov>" + limits(100, -20)).substr(0, 72),
              "3: the optics of 33 degrees was not calibrated for 100 to -20; give -20 ");
    EXPECT_EQ(findings("<fov>53</fov><optics_text>HT</optics_text>" + limits(-20, 100)),
              "3: the optics of 53 degrees was not calibrated for -20 to 100; give 150 to 900");
    EXPECT_EQ(findings("<fov>18</fov>" + limits(-20, 100)),
              "3: the optics of 18 degrees was not calibrated for -20 to 100; choose another field "
              "of view: this optics has no ranges");
}

TEST(ValidateCamera, wantsFieldOfViewAndLimitsTogether) {
    EXPECT_EQ(findings("<fov>53</fov>"),
              "2: a field of view stands without limits; give -20 to 100 or 150 to 900 as "
              "<temperature> as well");
    EXPECT_EQ(findings(limits(-20, 100)),
              "3: limits stand without a field of view; give 33, 53 or 18 as <fov> as well");
    EXPECT_EQ(findings("<optics_text>HT</optics_text>"),
              "2: a text stands without a field of view; give 33, 53 or 18 as <fov> as well");
    EXPECT_EQ(
        findings("<fov>18</fov>"),
        "2: a field of view stands without limits; choose another: this optics has no ranges");
}

TEST(ValidateCamera, saysThatADescriptionNamesNoOptics) {
    EXPECT_EQ(findings("<fov>53</fov>", {}),
              "2: the camera has no optics of 53 degrees; remove <fov>: its description names no "
              "optics");
    EXPECT_EQ(findings(limits(-20, 100), {}),
              "3: limits stand without a field of view; remove what stands: its description names "
              "no optics");
}

}  // namespace
