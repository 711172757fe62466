// What is found in configuration documents that somebody edited, and that xmllint and the schema
// find the same documents wrong.
#include "cli/ValidateDocument.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/ValidateSchema.h"
#include "sdk/IRCalibrationManager.h"
#include "support/BuildPaths.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using thermika::cli::checkDocument;
using thermika::cli::Finding;
using thermika_test::readFile;
using thermika_test::run;
using thermika_test::RunResult;
using thermika_test::TempDir;
using thermika_test::writeFile;

constexpr const char* kDocumentFolders = THERMIKA_TEST_DATA "/documents";
constexpr const char* kSchema = THERMIKA_SHARE "/imager.xsd";

std::vector<fs::path> documentsIn(const std::string& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(kDocumentFolders + ("/" + folder)))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

RunResult xmllint(const std::string& file) {
    return run("xmllint", {"xmllint", "--noout", "--nonet", "--schema", kSchema, file});
}

std::string linesOf(const std::string& file, const std::vector<Finding>& findings) {
    std::string text;
    for (const Finding& finding : findings)
        text += file + ":" + std::to_string(finding.line) + ": " + finding.wrong + "; " +
                finding.right + "\n";
    return text;
}

std::string findingsIn(const std::string& document) {
    return linesOf("", checkDocument(document).findings);
}

/// The document that the tool prints for a sample camera, its suggestion in force when asked so.
std::string printedDocument(unsigned long serial, bool isActive) {
    auto* const manager = dax::IRCalibrationManager::getInstance();
    manager->setCalibrationDir(THERMIKA_EXAMPLES);
    std::string text = manager->generateConfiguration(serial);
    if (!isActive) return text;
    const std::string opening = "  <!--\n";
    const std::size_t from = text.find(opening);
    text.erase(from, opening.size());
    const std::string closing = "  -->\n";
    text.erase(text.find(closing, from), closing.size());
    return text;
}

TEST(ValidateDocument, namesLineFaultAndRemedyOfEachBrokenEdit) {
    std::string found;
    for (const fs::path& file : documentsIn("broken"))
        found += linesOf(file.filename(), checkDocument(readFile(file)).findings);
    EXPECT_EQ(found, readFile(kDocumentFolders + std::string("/findings.txt")));
}

TEST(ValidateDocument, agreesWithXmllintOnEveryBrokenEdit) {
    const std::vector<fs::path> files = documentsIn("broken");
    EXPECT_GE(files.size(), 20U);
    for (const fs::path& file : files) {
        const RunResult result = xmllint(file);
        EXPECT_TRUE(result.status == 1 || result.status == 3) << file << ": " << result;
        // It writes the folder as a part of an address.
        EXPECT_NE(result.err.find("/" + file.filename().string() + ":"), std::string::npos)
            << result;
        EXPECT_FALSE(checkDocument(readFile(file)).findings.empty()) << file;
    }
}

TEST(ValidateDocument, agreesWithXmllintOnEveryRightOne) {
    for (const char* const folder : {"valid", "uncalibrated"}) {
        const std::vector<fs::path> files = documentsIn(folder);
        EXPECT_GE(files.size(), 6U);
        for (const fs::path& file : files) {
            EXPECT_EQ(xmllint(file).status, 0) << file;
            EXPECT_EQ(findingsIn(readFile(file)), "") << file;
        }
    }
}

/// What an element holds at most and at least, and what lies just beyond; "" where nothing does.
struct Limits {
    std::string element;
    std::string below;
    std::string lowest;
    std::string highest;
    std::string above;
};

std::vector<Limits> limitsOfEveryElement() {
    const std::string path(259, 'd');
    const std::string caliPath(241, 'd');
    const std::string text(200, 't');
    return {
        {"serial", "9999999", "10000000", "99999999", "100000000"},
        {"videoformatindex", "-1", "0", "255", "256"},
        {"formatspath", "", "d", path, path + "d"},
        {"calipath", "", "d", caliPath, caliPath + "d"},
        {"fov", "0", "1", "360", "361"},
        {"min", "-274", "-273", "10000", "10001"},
        {"max", "-274", "-273", "10000", "10001"},
        {"optics_text", "/", "", text, text + "t"},
        {"framerate", "0", "0.001", "65535", "65535.001"},
        {"bispectral", "-1", "0", "1", "2"},
        {"average", "-1", "0", "1", "2"},
        {"enable", "-1", "0", "1", "2"},
        {"mininterval", "-0.001", "0", "86400", "86400.001"},
        {"maxinterval", "-0.001", "0", "86400", "86400.001"},
        {"tchipmode", "-1", "0", "2", "3"},
        {"tchipfixedvalue", "-273.001", "-273", "1000", "1000.001"},
        {"focus", "-0.001", "0", "100", "100.001"},
        {"enable_extended_temp_range", "-1", "0", "1", "2"},
        {"buffer_queue_size", "0", "1", "65535", "65536"},
    };
}

/// A document in which `element` holds `value`, and only what must be there stands beside it.
std::string documentWith(const thermika::cli::SchemaElement& element, const std::string& value) {
    const auto tagged = [](const std::string& name, const std::string& content) {
        return "<" + name + ">" + content + "</" + name + ">";
    };
    std::string content = tagged(element.name, value);
    if (element.name == "min") content += tagged("max", "0");
    if (element.name == "max") content += tagged("min", "0");
    if (element.parent != "imager") content = tagged(element.parent, content);
    if (element.name != "serial") content += tagged("serial", "14080045");
    return tagged("imager", content) + "\n";
}

TEST(ValidateDocument, takesEachElementUpToItsLimitsAsXmllintDoes) {
    const TempDir folder;
    const std::string file = folder / "limits.xml";
    const auto& schema = thermika::cli::ImagerSchema::instance();
    std::set<std::string> tried;
    for (const Limits& limits : limitsOfEveryElement()) {
        const auto* const element = schema.find(limits.element);
        ASSERT_NE(element, nullptr) << limits.element;
        tried.insert(limits.element);
        for (const std::string& value : {limits.lowest, limits.highest}) {
            writeFile(file, documentWith(*element, value));
            EXPECT_EQ(findingsIn(readFile(file)), "");
            EXPECT_EQ(xmllint(file).status, 0) << readFile(file);
        }
        for (const std::string& value : {limits.below, limits.above}) {
            writeFile(file, documentWith(*element, value));
            const auto findings = checkDocument(readFile(file)).findings;
            EXPECT_EQ(xmllint(file).status, 3) << readFile(file);
            EXPECT_EQ(findings.size(), 1U) << readFile(file);
            if (findings.empty()) continue;
            EXPECT_EQ(findings[0].wrong.find("<" + limits.element + "> "), 0U) << findings[0].wrong;
            EXPECT_EQ(findings[0].right, "give " + element->words);
        }
    }
    for (const auto& element : schema.elements())
        EXPECT_EQ(tried.count(element.name), element.isContainer ? 0U : 1U) << element.name;
}

TEST(ValidateDocument, acceptsWhatTheToolPrintsForEverySample) {
    const TempDir folder;
    const std::string file = folder / "printed.xml";
    for (const unsigned long serial : {14080045UL, 14080046UL}) {
        for (const bool isActive : {false, true}) {
            const std::string document = printedDocument(serial, isActive);
            EXPECT_EQ(document.find("  <!--\n") == std::string::npos, isActive);
            writeFile(file, document);
            EXPECT_EQ(xmllint(file).status, 0) << document;
            const auto result = checkDocument(document);
            EXPECT_EQ(linesOf("", result.findings), "");
            EXPECT_EQ(result.settings.fovDeg.has_value(), isActive);
        }
    }
}

TEST(ValidateDocument, readsTheSettings) {
    const auto settings =
        checkDocument(
            "<imager>\n<serial> 14080045\n</serial>\n<fov>+33</fov>\n<temperature>"
            "<max>+100</max>\n<min>-20</min></temperature><optics_text>O &lt; 3"
            "</optics_text></imager>")
            .settings;
    ASSERT_TRUE(settings.serial && settings.fovDeg && settings.minTempC && settings.maxTempC &&
                settings.opticsText);
    EXPECT_EQ(settings.serial->value, 14080045);
    EXPECT_EQ(settings.serial->line, 2);
    EXPECT_EQ(settings.fovDeg->value, 33);
    EXPECT_EQ(settings.fovDeg->line, 4);
    EXPECT_EQ(settings.minTempC->value, -20);
    EXPECT_EQ(settings.minTempC->line, 6);
    EXPECT_EQ(settings.maxTempC->value, 100);
    EXPECT_EQ(settings.opticsText->value, "O < 3");
}

TEST(ValidateDocument, leavesOutSettingsThatAreWrongOrMissing) {
    const auto settings =
        checkDocument("<imager><serial>x</serial><temperature><min>1</min></temperature></imager>")
            .settings;
    EXPECT_FALSE(settings.serial || settings.fovDeg || settings.maxTempC || settings.opticsText);
    EXPECT_TRUE(settings.minTempC);
}

TEST(ValidateDocument, goesOnAfterWhatDoesNotBelong) {
    EXPECT_EQ(findingsIn("<imager>\n stray\n<serial>1</serial>\n<fov>1</fov>\n<fov>x</fov>\n"
                         "<fovv>1</fovv>\n<focus unit='%'>101</focus>\n</imager>"),
              ":2: the text \"stray\" stands between elements; remove it, or put it between "
              "\"<!--\" and \"-->\"\n"
              ":3: <serial> holds \"1\"; give a whole number from 10000000 to 99999999: the "
              "camera's serial number\n"
              ":5: <fov> stands here a second time; keep one of them\n"
              ":6: no element is named <fovv>; write <fov> or remove it\n"
              ":7: <focus> has the attribute \"unit\"; remove it\n"
              ":7: <focus> holds \"101\"; give a number from 0 to 100: the focus motor's position "
              "in percent of its way\n");
}

TEST(ValidateDocument, namesWhatAContainerHoldsWhenNoNameIsNear) {
    EXPECT_EQ(
        findingsIn("<imager><serial>14080045</serial><autoflag><colour/></autoflag></imager>"),
        ":1: no element is named <colour>; remove it; <autoflag> holds enable, mininterval, "
        "maxinterval\n");
}

TEST(ValidateDocument, findsARootInsideTheRoot) {
    EXPECT_EQ(findingsIn("<imager>\n<imager><serial>14080045</serial></imager>\n"
                         "<serial>14080045</serial></imager>"),
              ":2: <imager> stands inside <imager>; keep the outer one\n");
}

TEST(ValidateDocument, findsAnotherTypeGivenToAContainer) {
    const std::string type =
        " xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:type='none'";
    EXPECT_EQ(findingsIn("<imager" + type + "><serial>14080045</serial></imager>"),
              ":1: <imager> has the attribute \"xsi:type\"; remove it\n");
}

TEST(ValidateDocument, blamesAnAttributeForWhatItDoesToARightValue) {
    const TempDir folder;
    const std::string file = folder / "attribute.xml";
    for (const std::string name : {"nil", "type"})
        for (const std::string value : {"true", "false", "none", ""}) {
            writeFile(file,
                      "<imager xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'>"
                      "<serial>14080045</serial>\n<focus xsi:" +
                          name + "='" + value + "'>50</focus></imager>");
            EXPECT_EQ(findingsIn(readFile(file)),
                      ":2: <focus> has the attribute \"xsi:" + name + "\"; remove it\n");
            EXPECT_EQ(xmllint(file).status, 3) << name << value;
        }
}

TEST(ValidateDocument, givesTheParsersWordsForMarkupThatFewGetWrong) {
    EXPECT_EQ(findingsIn("<imager>\n<serial unit=8>14080045</serial></imager>"),
              ":2: the markup is wrong: AttValue: \" or ' expected; correct it here or shortly "
              "before\n");
}

TEST(ValidateDocument, saysThatADocumentIsNotInTheEncodingThatItNames) {
    const std::string body =
        "?>\n<imager><serial>14080045</serial><calipath>\xFF\xA9</calipath></imager>";
    testing::internal::CaptureStderr();
    const std::string found = findingsIn("<?xml version='1.0' encoding='EUC-JP'" + body);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(
        found,
        ":2: the document is not in the encoding that it names, or in UTF-8; save it as UTF-8, "
        "and let its first line name no other encoding\n");
    EXPECT_EQ(findingsIn("<?xml version='1.0' encoding='none'" + body),
              ":1: the document names an encoding that is not known; save it as UTF-8, and let its "
              "first line name no other encoding\n");
    EXPECT_EQ(findingsIn("<?xml version='1.0' encoding='ISO-8859-1'" + body), "");
}

TEST(ValidateDocument, findsElementsInsideValues) {
    EXPECT_EQ(
        findingsIn("<imager><serial>14080045</serial><fov>\n<b>33</b></fov></imager>"),
        ":2: <fov> holds the element <b>; without its tags give a whole number of degrees from "
        "1 to 360: the field of view of one of the camera's optics\n");
}

TEST(ValidateDocument, refusesNumbersThatReadersMayTakeForOctalOnes) {
    const auto findings = [](const std::string& fov) {
        return findingsIn("<imager><serial>14080045</serial><fov>" + fov + "</fov></imager>");
    };
    const std::string right =
        "; give a whole number of degrees from 1 to 360: the field of view of one of the camera's "
        "optics\n";
    EXPECT_EQ(findings("033"), ":1: <fov> holds \"033\", with a zero in front" + right);
    EXPECT_EQ(findings("+033"), ":1: <fov> holds \"+033\", with a zero in front" + right);
    EXPECT_EQ(findings("01.5"), ":1: <fov> holds \"01.5\"" + right);
}

TEST(ValidateDocument, findsAnAttributeOfAnotherNamespace) {
    EXPECT_EQ(findingsIn("<imager xml:lang='en'><serial>14080045</serial></imager>"),
              ":1: <imager> has the attribute \"xml:lang\"; remove it\n");
    EXPECT_EQ(findingsIn("<imager xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'>"
                         "<serial>14080045</serial><focus xsi:foo='1'>5</focus></imager>"),
              ":1: <focus> has the attribute \"xsi:foo\"; remove it\n");
}

TEST(ValidateDocument, takesCharacterDataSectionsForTextAsXmllintDoes) {
    const TempDir folder;
    const std::string file = folder / "section.xml";
    const auto document = [](const std::string& between, const std::string& serial) {
        return "<imager>" + between + "<serial>" + serial + "</serial></imager>\n";
    };
    writeFile(file, document("", "1408<![CDATA[0045]]>"));
    EXPECT_EQ(findingsIn(readFile(file)), "");
    EXPECT_EQ(xmllint(file).status, 0);
    for (const std::string text : {"", "\n ", "\nand"}) {
        writeFile(file, document("\n<![CDATA[" + text + "]]>", "14080045"));
        EXPECT_NE(findingsIn(readFile(file)), "") << text;
        EXPECT_EQ(xmllint(file).status, 3) << text;
    }
    EXPECT_EQ(findingsIn(document("\n<![CDATA[\n\nand]]>", "14080045")),
              ":4: the text \"and\" stands between elements; remove it, or put it between "
              "\"<!--\" and \"-->\"\n");
    EXPECT_EQ(findingsIn(document("\n<![CDATA[ ]]>", "14080045")),
              ":2: an empty character data section stands between elements; remove it\n");
}

TEST(ValidateDocument, takesANameWhosePrefixNobodyDeclaredForANameOfItsOwn) {
    EXPECT_EQ(
        findingsIn("<imager><serial>14080045</serial><a:fov>1</a:fov></imager>").substr(0, 35),
        ":1: no element is named <a:fov>; re");
}

TEST(ValidateDocument, refusesNamespaces) {
    EXPECT_EQ(findingsIn("<imager xmlns='urn:x'><serial>14080045</serial></imager>"),
              ":1: <imager> is in a namespace; remove its attribute xmlns\n");
    EXPECT_EQ(findingsIn("<imager><serial>14080045</serial>\n<fov xmlns='urn:x'>1</fov></imager>"),
              ":2: <fov> is in a namespace; remove its attribute xmlns\n");
    EXPECT_EQ(findingsIn("<imager xmlns:a='urn:x'><serial>14080045</serial><a:fov>1</a:fov>"
                         "</imager>")
                  .substr(0, 35),
              ":1: no element is named <a:fov>; re");
}

// Nothing that a document names is opened: the pipes below have no writer, so a look into them
// would wait for ever.
TEST(ValidateDocument, opensNoFileThatTheDocumentNames) {
    const TempDir folder;
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string hint = "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' ";
    for (const std::string& place : {"xsi:noNamespaceSchemaLocation='" + pipe + "'",
                                     "xsi:schemaLocation='urn:x " + pipe + "'"}) {
        EXPECT_EQ(findingsIn("<imager " + hint + place + "><serial>14080045</serial></imager>"),
                  "");
        EXPECT_EQ(findingsIn("<imager><serial " + hint + place + ">14080045</serial></imager>"),
                  "");
    }
    for (const std::string& type : {"<!DOCTYPE imager SYSTEM '" + pipe + "'>",
                                    "<!DOCTYPE imager [<!ENTITY x SYSTEM '" + pipe + "'>]>",
                                    "<!DOCTYPE imager [<!ENTITY % x SYSTEM '" + pipe + "'> %x;]>"})
        EXPECT_EQ(findingsIn("\n" + type + "<imager><serial>&x;</serial></imager>"),
                  ":2: a document type declaration stands here; remove everything from "
                  "\"<!DOCTYPE\" to its \">\"\n")
            << type;
}

TEST(ValidateDocument, cutsLongTexts) {
    const std::string wrong =
        checkDocument("<imager><serial>" + std::string(79, 'x') + "\u00e4\u00e4</serial></imager>")
            .findings.at(0)
            .wrong;
    EXPECT_EQ(wrong, "<serial> holds \"" + std::string(79, 'x') + "...\"");
}

TEST(ValidateDocument, stopsAtAHundredFindings) {
    std::string document = "<imager><serial>14080045</serial>";
    for (int i = 0; i < 100; ++i) document += "<x/>";
    const auto all = checkDocument(document + "</imager>");
    EXPECT_EQ(all.findings.size(), 100U);
    EXPECT_FALSE(all.areMore);
    const auto first = checkDocument(document + "<x/></imager>");
    EXPECT_EQ(first.findings.size(), 100U);
    EXPECT_TRUE(first.areMore);
}

TEST(ValidateDocument, refusesWhatIsNoDocumentByItsSize) {
    const std::string largest(thermika::cli::kMostDocumentBytes, ' ');
    EXPECT_EQ(findingsIn(largest).find(":1: the document has"), std::string::npos);
    EXPECT_EQ(findingsIn(largest + ' '),
              ":1: the document has more than 1048576 bytes; begin with the one that thermika "
              "config prints\n");
}

TEST(ValidateDocument, reportsNoLineBeforeTheElementAroundATextWithLoneCarriageReturns) {
    for (const std::string text : {"a\r\rb", "<![CDATA[\r]]>", "\xC3\xA9\r\r"})
        EXPECT_EQ(findingsIn("<!-- -->\n<imager>" + text + "<serial>14080045</serial></imager>")
                      .substr(0, 3),
                  ":2:")
            << text;
}

TEST(ValidateDocument, reportsLinesBeyondSixteenBits) {
    const std::string lines(70000, '\n');
    EXPECT_EQ(findingsIn("<imager>" + lines + "<serial>14080045</serial>" + lines +
                         "<focus>\n-1</focus></imager>")
                  .substr(0, 8),
              ":140001:");
}

}  // namespace
