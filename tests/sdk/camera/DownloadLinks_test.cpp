// The base address in a download-links document, whatever the server made of the document.
#include "sdk/camera/DownloadLinks.h"

#include <array>
#include <clocale>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/ProcessState.h"
#include "support/TestFiles.h"

namespace {

using dax::DownloadLinks;
using dax::readDownloadLinks;
using thermika_test::TempDir;
using thermika_test::writeFile;

std::optional<DownloadLinks> readLinks(std::string_view document) {
    const TempDir dir;
    writeFile(dir / "links.xml", document);
    const thermika_test::StderrCapture quiet;
    return readDownloadLinks((dir / "links.xml").c_str());
}

/// The document is read, has no `Links`, and so no base.
void expectNoLinks(std::string_view document) {
    const auto links = readLinks(document);
    ASSERT_TRUE(links) << document;
    EXPECT_FALSE(links->hasLinks) << document;
    EXPECT_EQ(links->base, std::nullopt) << document;
}

/// The document has `Links`, and the base is `base`.
void expectBase(std::string_view document, const std::optional<std::string>& base) {
    const auto links = readLinks(document);
    ASSERT_TRUE(links) << document;
    EXPECT_TRUE(links->hasLinks) << document;
    EXPECT_EQ(links->base, base) << document;
}

/// A whole document with this in its `Links`.
std::string linking(const std::string& links) {
    return "<DownloadLinks>\n<Imager><CaliData><Links>" + links +
           "</Links></CaliData></Imager>\n</DownloadLinks>\n";
}

constexpr std::string_view kLaidOut =
    "<DownloadLinks>\n  <Imager>\n    <CaliData>\n      <Links>\n"
    "        <string>http://server/files</string>\n"
    "      </Links>\n    </CaliData>\n  </Imager>\n</DownloadLinks>\n";

TEST(DownloadLinks, readsTheBaseOfADocumentLaidOutLineByLine) {
    expectBase(kLaidOut, "http://server/files");
}

TEST(DownloadLinks, doesNotMindIndentation) {
    expectBase(linking("<string>http://server</string>"), "http://server");
    expectBase(
        "  <DownloadLinks>\n\t<Imager>\n\n<CaliData>\n <Links> \n<string>B</string>\n</Links>\n"
        "</CaliData></Imager>\n\t</DownloadLinks>",
        "B");
}

TEST(DownloadLinks, usesTheFirstOfTwoStrings) {
    expectBase(linking("<string>first</string><string>second</string>"), "first");
    expectBase(linking("<string></string><string>second</string>"), "");
}

TEST(DownloadLinks, hasNoBaseWithoutAString) {
    expectBase(linking(""), std::nullopt);
    expectBase(linking("<text>B</text>"), std::nullopt);
    expectBase(linking("<string>never closed"), std::nullopt);
    expectBase(linking("closed only</string>"), std::nullopt);
}

TEST(DownloadLinks, doesNotKnowAStringWithAnAttribute) {
    expectBase(linking("<string lang=\"en\">B</string>"), std::nullopt);
    expectBase(linking("<string lang=\"en\">A</string><string>B</string>"), "B");
}

TEST(DownloadLinks, tellsNamesByCaseAndToTheLetter) {
    expectBase(linking("<String>B</String>"), std::nullopt);
    expectBase(linking("<strings>B</strings>"), std::nullopt);
    expectBase(linking("< string>B</string>"), std::nullopt);
}

TEST(DownloadLinks, takesAnEmptyStringForTheEmptyBase) {
    expectBase(linking("<string></string>"), "");
}

TEST(DownloadLinks, keepsWhiteSpaceAndEverythingElseInTheBase) {
    expectBase(linking("<string> \thttp://server </string>"), " \thttp://server ");
    expectBase(linking("<string>\r</string>"), "\n");
    expectBase(linking("<string>a&amp;b \"$(id)`\\</string>"), "a&amp;b \"$(id)`\\");
    expectBase(linking("<string><b>B</b></string>"), "<b>B</b>");
}

TEST(DownloadLinks, joinsTheLinesOfABase) {
    expectBase(linking("<string>\n  http://\nserver\n</string>"), "  http://server");
}

TEST(DownloadLinks, readsADocumentWithCarriageReturns) {
    std::string document;
    for (const char c : kLaidOut) document += c == '\n' ? std::string("\r\n") : std::string(1, c);
    expectBase(document, "http://server/files");
}

TEST(DownloadLinks, looksForEachElementInTheOneBeforeItOnly) {
    expectNoLinks(
        "<DownloadLinks>\n<CaliData><Links><string>B</string></Links></CaliData>\n"
        "</DownloadLinks>\n");
    expectNoLinks(
        "<DownloadLinks>\n<Imager><Links><string>B</string></Links></Imager>\n"
        "</DownloadLinks>\n");
    expectNoLinks(
        "<DownloadLinks>\n<Imager><CaliData><string>B</string></CaliData></Imager>\n"
        "</DownloadLinks>\n");
    expectNoLinks(
        "<DownloadLinks>\n<Imager></Imager>\n<CaliData><Links></Links></CaliData>\n"
        "</DownloadLinks>\n");
    expectNoLinks(
        "<DownloadLinks>\n<Imager a=\"\"><CaliData><Links></Links></CaliData></Imager>\n"
        "</DownloadLinks>\n");
}

TEST(DownloadLinks, usesTheFirstElementOfAName) {
    expectBase(
        "<DownloadLinks>\n<Imager><CaliData><Links></Links><Links><string>B</string></Links>"
        "</CaliData></Imager>\n</DownloadLinks>\n",
        std::nullopt);
    expectNoLinks(
        "<DownloadLinks>\n<Imager></Imager><Imager><CaliData><Links></Links></CaliData>"
        "</Imager>\n</DownloadLinks>\n");
}

TEST(DownloadLinks, usesNoStringOutsideTheLinks) {
    expectBase(
        "<DownloadLinks>\n<string>A</string><Imager><string>B</string><CaliData><Links>"
        "</Links><string>C</string></CaliData></Imager>\n</DownloadLinks>\n",
        std::nullopt);
}

TEST(DownloadLinks, seesNothingThatSharesALineWithTheRootsTags) {
    expectNoLinks(
        "<DownloadLinks><Imager>\n<CaliData><Links><string>B</string></Links>\n"
        "</CaliData></Imager>\n</DownloadLinks>\n");
    expectNoLinks(
        "<DownloadLinks>\n<Imager><CaliData><Links></Links></CaliData>\n"
        "</Imager></DownloadLinks>\n");
    expectNoLinks(
        "<DownloadLinks><Imager><CaliData><Links><string>B</string></Links></CaliData></Imager>"
        "</DownloadLinks>");
}

TEST(DownloadLinks, allowsAttributesOnTheRootOnly) {
    expectBase(
        "<?xml version=\"1.0\"?>\n<DownloadLinks version=\"1\">\n"
        "<Imager><CaliData><Links><string>B</string></Links></CaliData></Imager>\n"
        "</DownloadLinks>\n",
        "B");
}

TEST(DownloadLinks, leavesCommentsOut) {
    expectBase(linking("<!-- <string>A</string> --><string>B<!-- C --></string>"), "B");
    expectNoLinks(
        "<DownloadLinks>\n<!--<Imager>--><CaliData><Links></Links></CaliData></Imager>\n"
        "</DownloadLinks>\n");
}

TEST(DownloadLinks, hasNothingFromAFileThatCannotBeRead) {
    const TempDir dir;
    const thermika_test::StderrCapture quiet;
    EXPECT_FALSE(readDownloadLinks((dir / "absent.xml").c_str()));
    EXPECT_FALSE(readDownloadLinks(dir.path().c_str()));
    EXPECT_FALSE(readLinks(""));
}

TEST(DownloadLinks, hasNothingFromADocumentWhoseCommentsDoNotPairUp) {
    EXPECT_FALSE(readLinks(linking("<!--<string>B</string>")));
    EXPECT_FALSE(readLinks(linking("<string>B</string>-->")));
}

TEST(DownloadLinks, hasNoLinksFromAnythingElse) {
    expectNoLinks("\n");
    expectNoLinks("404 Not Found\n");
    expectNoLinks("<html>\n<body>\n</body>\n</html>\n");
    expectNoLinks(std::string_view("\0\0\0\0", 4));
}

TEST(DownloadLinks, readsEveryPrefixWithoutInventingABase) {
    // The base is there as soon as the last of the elements around it is closed.
    constexpr std::string_view kEnough = "</Imager>";
    const std::size_t needed = kLaidOut.find(kEnough) + kEnough.size();
    for (std::size_t length = 1; length <= kLaidOut.size(); ++length) {
        const auto links = readLinks(kLaidOut.substr(0, length));
        ASSERT_TRUE(links) << length;
        EXPECT_EQ(links->hasLinks, length >= needed) << length;
        EXPECT_EQ(links->base, length >= needed ? std::optional<std::string>("http://server/files")
                                                : std::nullopt)
            << length;
    }
}

TEST(DownloadLinks, leavesTheNumericLocaleAtC) {
    const thermika_test::ScopedLocale locale({{LC_ALL, thermika_test::kDecimalCommaLocale}});
    EXPECT_TRUE(readLinks(kLaidOut));
    EXPECT_EQ(thermika_test::numericLocale(), "C");
}

TEST(DownloadLinks, areFoundInTheTextOfADocumentAlone) {
    const thermika_test::ScopedLocale locale({{LC_ALL, thermika_test::kDecimalCommaLocale}});
    const DownloadLinks links = dax::downloadLinksIn(
        "<Imager><CaliData><Links><string>B</string></Links></CaliData></Imager>");
    EXPECT_TRUE(links.hasLinks);
    EXPECT_EQ(links.base, "B");
    EXPECT_FALSE(dax::downloadLinksIn("").hasLinks);
    EXPECT_FALSE(dax::downloadLinksIn("<Imager><CaliData>").hasLinks);
    EXPECT_EQ(thermika_test::numericLocale(), thermika_test::kDecimalCommaLocale);
}

TEST(DownloadLinks, leadToFilesByTheBeginningOfTheSerialNumber) {
    using Parts = std::array<std::string, 4>;
    EXPECT_EQ(dax::serverPath("14080045", "Cali-14080045.xml"),
              (Parts{"14", "1408", "Califiles SN14080045", "Cali-14080045.xml"}));
    EXPECT_EQ(dax::serverPath("7", ""), (Parts{"7", "7", "Califiles SN7", ""}));
    EXPECT_EQ(dax::serverPath("", "a/b"), (Parts{"", "", "Califiles SN", "a/b"}));
}

}  // namespace
