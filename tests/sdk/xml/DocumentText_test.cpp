// Which bytes of a file become the document's text: the lines between the root's two.
#include "sdk/xml/DocumentText.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "support/BuildPaths.h"
#include "support/TestFiles.h"

namespace {

using dax::kMaxLineChars;
using thermika_test::TempDir;
using thermika_test::writeFile;

constexpr std::size_t kBlock = 64;  // bytes that are searched or moved together

std::optional<dax::DocumentText> readBytes(const std::string& bytes, const char* rootName) {
    const TempDir dir;
    const std::string file = dir / "document.xml";
    writeFile(file, bytes);
    return dax::readDocumentText(file.c_str(), rootName);
}

/// Nothing when the file cannot be read. A text whose size is not its length fails the test.
std::optional<std::string> textOf(const std::string& bytes, const char* rootName = "R") {
    const std::optional<dax::DocumentText> document = readBytes(bytes, rootName);
    if (!document) return std::nullopt;
    std::string text(document->text.get());
    EXPECT_EQ(text.size(), document->size);
    return text;
}

std::string crafted(const char* name) {
    return thermika_test::readFile(std::string(THERMIKA_TEST_DATA "/crafted/") + name);
}

std::string lineOf(std::size_t characters) { return std::string(characters, 'x'); }

}  // namespace

TEST(DocumentText, joinsTheLinesBetweenTheRootsTwo) {
    EXPECT_EQ(textOf("<R>\none\n two \n\nthree\n</R>\n"), "one two three");
    EXPECT_EQ(textOf("<R>\n</R>\n"), "");
}

TEST(DocumentText, takesARootTagWithAttributes) {
    EXPECT_EQ(textOf("<R version=\"1\" x='2'>\none\n</R>\n"), "one");
}

TEST(DocumentText, takesTheFirstLineThatHoldsTheBeginningOfTheRootTag) {
    EXPECT_EQ(textOf("<Reader>\none\n</R>\n"), "one");
    EXPECT_EQ(textOf("<!-- <R -->\none\n<R>\ntwo\n</R>\n"), "one<R>two");
}

TEST(DocumentText, leavesOutWhateverStandsOnTheRootsLines) {
    EXPECT_EQ(textOf("before<R>behind\none\nbefore</R>behind\n"), "one");
    EXPECT_EQ(textOf("<R></R>\none\n</R>\n"), "one");
    EXPECT_EQ(textOf(crafted("text-on-root-lines.xml"), "CaliData"), "<Serial>14080045</Serial>");
}

TEST(DocumentText, endsAtTheFirstLineThatHoldsTheWholeClosingTag) {
    EXPECT_EQ(textOf("<R>\none\n</R >\n</Reader>\n< /R>\ntwo\nx</R>y\nthree\n</R>\n"),
              "one</R ></Reader>< /R>two");
}

TEST(DocumentText, takesEveryLineWhenTheRootIsNeverClosed) {
    EXPECT_EQ(textOf("<R>\none\ntwo\n"), "onetwo");
    EXPECT_EQ(textOf("<R>\none\ntwo"), "onetwo");
}

TEST(DocumentText, isEmptyWithoutTheRoot) {
    EXPECT_EQ(textOf("<a>\none\n</a>\n"), "");
    EXPECT_EQ(textOf("</R>\n"), "");
    EXPECT_EQ(textOf("<r>\none\n</r>\n"), "");
}

TEST(DocumentText, isEmptyWithoutAnyMarkup) {
    EXPECT_EQ(textOf("no markup at all\n"), "");
    EXPECT_EQ(textOf("\n"), "");
    EXPECT_EQ(textOf(std::string(1, '\0')), "");
}

TEST(DocumentText, startsAtTheFirstOpeningBracket) {
    EXPECT_EQ(textOf("\xEF\xBB\xBF<R>\none\n</R>\n"), "one");
    EXPECT_EQ(textOf("junk\nmore junk <R>\none\n</R>\n"), "one");
    EXPECT_EQ(textOf(std::string("\0\0<R>\none\n", 10)), "one");
    EXPECT_EQ(textOf("<"), "");
}

TEST(DocumentText, readsAnEmptyRootNameAsAnyTag) {
    EXPECT_EQ(textOf("x\n<a>\none\n</a>\n</>\ntwo\n", ""), "one</a>");
}

TEST(DocumentText, isEmptyForARootNameThatNoLineCanHold) {
    EXPECT_EQ(textOf("<R\nx>\none\n</R\nx>\n", "R\nx"), "");
}

TEST(DocumentText, takesAClosingTagOnlyFromOneLine) {
    EXPECT_EQ(textOf("<R>\none</R\n>two\n</R>\n"), "one</R>two");
}

TEST(DocumentText, turnsCarriageReturnsIntoLineFeeds) {
    EXPECT_EQ(textOf("<R>\r\none\r\ntwo\r\n</R>\r\n"), "one\ntwo\n");
    EXPECT_EQ(textOf("<R>\none\rtwo\n\r\n</R>\n"), "one\ntwo\n");
    EXPECT_EQ(textOf("<R>\n\r\r\n</R>\n"), "\n\n");
    EXPECT_EQ(textOf(crafted("crlf-without-final-line-end.xml"), "DownloadLinks"),
              "  <Imager>\n    <CaliData/>\n  </Imager>\n");
}

TEST(DocumentText, endsNoLineAtALoneCarriageReturn) {
    EXPECT_EQ(textOf("<R>\rone\r</R>\r"), "");
    EXPECT_EQ(textOf("<R>\none\r</R>\rtwo\nthree\n"), "");
}

TEST(DocumentText, readsALineUpToItsFirstZeroByte) {
    EXPECT_EQ(textOf(std::string("<R>\none\0two\nthree\n</R>\n", 23)), "onethree");
    EXPECT_EQ(textOf(std::string("<R>\n\0two\nthree\n</R>\n", 20)), "three");
    EXPECT_EQ(textOf(std::string("<a>\0<R>\none\n<R>\ntwo\n", 20)), "two");
    EXPECT_EQ(textOf(std::string("<R>\none\0</R>\ntwo\n</R>\n", 22)), "onetwo");
    EXPECT_EQ(textOf(std::string("<R>\none\n</R>\0\ntwo\n", 18)), "one");
}

TEST(DocumentText, takesALineOfTheGreatestLength) {
    for (const std::size_t length : {4094U, 4095U}) {
        const std::string line = lineOf(length);
        EXPECT_EQ(textOf("<R>\none\n" + line + "\ntwo\n</R>\n"), "one" + line + "two") << length;
        EXPECT_EQ(textOf("<R>\none\n" + line), "one" + line) << length;
        EXPECT_EQ(textOf("<R>\none\n" + line + "\n"), "one" + line) << length;
    }
}

TEST(DocumentText, endsBeforeALineThatIsTooLong) {
    for (const std::size_t length : {4096U, 4097U, 10000U}) {
        const std::string line = lineOf(length);
        EXPECT_EQ(textOf("<R>\none\n" + line + "\ntwo\n</R>\n"), "one") << length;
        EXPECT_EQ(textOf("<R>\none\n" + line), "one") << length;
    }
}

TEST(DocumentText, joinsLinesOfEveryLength) {
    const std::string filler = lineOf(kBlock - 3) + "\r\n";
    for (std::size_t length = 0; length < 3 * kBlock; ++length) {
        const std::string start = "<R>\n" + filler + lineOf(length) + "\n";
        const std::string text = lineOf(kBlock - 3) + "\n" + lineOf(length);
        ASSERT_EQ(textOf(start), text) << length;
        ASSERT_EQ(textOf(start + "</R>\nbehind\n"), text) << length;
        ASSERT_EQ(textOf(start + "\n" + filler + "x</R>\nbehind\n"),
                  text + lineOf(kBlock - 3) + "\n")
            << length;
        ASSERT_EQ(textOf(start + std::string("a\0b\rc\n\rd\n</R>\n", 14)), text + "a\nd") << length;
        ASSERT_EQ(textOf(start + lineOf(kMaxLineChars + 1) + "\nbehind\n"), text) << length;
    }
}

TEST(DocumentText, findsTheRootWhereverItStands) {
    const std::string marks = "<R>\r\none\n\ntwo\n</R>\nthree\n";
    for (std::size_t before = kBlock; before <= 3 * kBlock; ++before) {
        std::string blank(before, ' ');
        ASSERT_EQ(textOf(blank + marks), "onetwo") << before;
        ASSERT_EQ(textOf(lineOf(before + kMaxLineChars) + marks), "onetwo") << before;
        for (std::size_t at = 40; at < blank.size(); at += 40) blank[at] = '\n';
        ASSERT_EQ(textOf("<" + blank.substr(1) + marks), "onetwo") << before;
        std::string joined = blank.substr(5);
        joined.erase(std::remove(joined.begin(), joined.end(), '\n'), joined.end());
        ASSERT_EQ(textOf("<R>\n" + blank.substr(5) + "\n" + marks), joined + "<R>\nonetwo")
            << before;
    }
}

TEST(DocumentText, takesCommentsOut) {
    EXPECT_EQ(textOf("<R>\n<!-- 1 -->one<!-- 2\n3 -->\n</R>\n"), "one");
    EXPECT_EQ(textOf("<R>\none<!\n-- 1 --\n>two\n"), "onetwo");
    EXPECT_EQ(textOf("<R>\none<!-- 1 --\r\n> 2 -->two\n"), "onetwo");
}

TEST(DocumentText, tellsHowLongTheTextWasWithItsComments) {
    const std::optional<dax::DocumentText> document =
        readBytes("<R>\none\n<!-- 1 -->\n<!-- 2\n-->\ntwo\n</R>\n", "R");
    EXPECT_EQ(document->size, 6U);
    EXPECT_EQ(document->joinedSize, 6U + 10 + 9);
    EXPECT_TRUE(document->commentsPairUp);

    std::string many;
    for (int i = 0; i < 5000; ++i) many += "<!-- one -->\nabc\n";
    const std::optional<dax::DocumentText> longer = readBytes("<R>\n" + many + "</R>\n", "R");
    EXPECT_EQ(longer->size, 15000U);
    EXPECT_EQ(longer->joinedSize, 75000U);
}

TEST(DocumentText, keepsEveryCommentWhenTheyDoNotPairUp) {
    std::string filler;
    std::string joined;
    for (int i = 0; i < 50; ++i) {
        filler += "<!-- one -->\n<a> 1 </a>\n  <!-- two\n three -->\n";
        joined += "<!-- one --><a> 1 </a>  <!-- two three -->";
    }
    for (const char* const wrong : {"<!--", " -->", "<!-- <!-- -->"}) {
        const std::optional<dax::DocumentText> document =
            readBytes("<R>\n" + filler + wrong + "\n" + filler + "</R>\n", "R");
        EXPECT_FALSE(document->commentsPairUp) << wrong;
        EXPECT_TRUE(document->text.get() == joined + wrong + joined) << wrong;
        EXPECT_EQ(document->size, 2 * joined.size() + std::string(wrong).size()) << wrong;
        EXPECT_EQ(document->joinedSize, document->size) << wrong;
    }
}

TEST(DocumentText, takesACommentOutThatLineFeedsPart) {
    const std::string marks = "<\n!\n-\n- <!--\n--\n>\n -\n->one<!-- -->-->\n<!--\n -->";
    for (std::size_t before = 10; before < 10 + 2 * kBlock; ++before) {
        std::string blank(before, ' ');
        blank.back() = '\n';
        const std::string left(before - 1, ' ');
        ASSERT_EQ(textOf("<R>\n" + blank + marks + "\n</R>\n"), left + "one-->") << before;
        ASSERT_EQ(textOf("<R>\n<!--" + blank + "-->" + marks + "\n</R>\n"), "one-->") << before;
    }
}

TEST(DocumentText, leavesOutWhatFollowsTheRoot) {
    std::string behind;
    for (int i = 0; i < 200; ++i) behind += lineOf(1023) + "\n";
    EXPECT_EQ(textOf("<R>\none\n</R>\n" + behind + "<R>\ntwo\n</R>\n"), "one");
    EXPECT_EQ(textOf("<R>\none\n" + lineOf(kMaxLineChars + 1) + "\n" + behind), "one");
    EXPECT_EQ(textOf("<x>" + lineOf(kMaxLineChars) + "\n" + behind + "<R>\ntwo\n</R>\n"), "");
    EXPECT_EQ(textOf("<x>\n" + behind + lineOf(kMaxLineChars) + "<\n<R>\ntwo\n</R>\n"), "");
}

TEST(DocumentText, endsBeforeALineOfAnyLengthBeyondTheLimit) {
    const std::string start = "<R>\none\n";
    const std::string longLine(100000, 'x');
    EXPECT_EQ(textOf(start + longLine + "\ntwo\n</R>\n"), "one");
    EXPECT_EQ(textOf(start + longLine + "</R>\ntwo\n"), "one");
    EXPECT_EQ(textOf(start + "two\n" + longLine), "onetwo");
    for (const std::size_t length : {4094U, 4095U, 4096U, 4100U})
        EXPECT_EQ(textOf(start + lineOf(length) + "</R>\ntwo\n"), "one") << length;
}

TEST(DocumentText, seesNoClosingTagBehindAZeroByte) {
    const std::string zero(1, '\0');
    EXPECT_EQ(textOf("<R>\none" + zero + "</R></R>\ntwo</R>\nthree\n</R>\n"), "one");
    EXPECT_EQ(textOf("<R>\none" + zero + "</R></R>\ntwo\n</R>\n"), "onetwo");
    EXPECT_EQ(textOf("<R>\none" + zero + "</R>"), "one");
    EXPECT_EQ(textOf("<R>\none" + zero + "</R>\n</R>" + zero + "\ntwo\n"), "one");
}

TEST(DocumentText, countsTheBytesBehindAZeroByteToTheLine) {
    std::string line = lineOf(4096);
    line[1] = '\0';
    EXPECT_EQ(textOf("<R>\none\n" + line + "\ntwo\n"), "one");
    line.resize(4095);
    EXPECT_EQ(textOf("<R>\none\n" + line + "\ntwo\n"), "onextwo");
}

TEST(DocumentText, countsACarriageReturnToTheLine) {
    EXPECT_EQ(textOf("<R>\none\n" + lineOf(4094) + "\r\ntwo\n"), "one" + lineOf(4094) + "\ntwo");
    EXPECT_EQ(textOf("<R>\none\n" + lineOf(4095) + "\r\ntwo\n"), "one");
}

TEST(DocumentText, isEmptyWhenALineBeforeTheRootIsTooLong) {
    EXPECT_EQ(textOf("<a>\n" + lineOf(4095) + "\n<R>\none\n</R>\n"), "one");
    EXPECT_EQ(textOf("<a>\n" + lineOf(4096) + "\n<R>\none\n</R>\n"), "");
}

TEST(DocumentText, measuresTheFirstLineFromItsOpeningBracket) {
    EXPECT_EQ(textOf(lineOf(9000) + "<R" + lineOf(4093) + "\none\n"), "one");
    EXPECT_EQ(textOf(lineOf(9000) + "<R" + lineOf(4094) + "\none\n"), "");
}

TEST(DocumentText, readsNoEmptyOrMissingFileAndNoDirectory) {
    const TempDir dir;
    EXPECT_FALSE(textOf(""));
    EXPECT_FALSE(dax::readDocumentText((dir / "missing.xml").c_str(), "R"));
    EXPECT_FALSE(dax::readDocumentText(dir.path().c_str(), "R"));
}

TEST(DocumentText, makesTheSameTextOfBytesInMemory) {
    for (const std::string bytes : {"", "<R>", "<R>\none<!-- x -->\r\ntwo", "<R>\n-->\n</R>\n"}) {
        // Exactly the one byte more that is asked for.
        dax::FileBytes file{std::make_unique<char[]>(bytes.size() + 1), bytes.size()};
        std::copy(bytes.begin(), bytes.end(), file.bytes.get());
        const dax::DocumentText document = dax::documentText(std::move(file), "R");
        EXPECT_EQ(document.text.get(), textOf(bytes).value_or("")) << bytes;
        EXPECT_EQ(document.commentsPairUp, bytes.find("-->\n<") == std::string::npos) << bytes;
    }
}

TEST(DocumentText, readsASampleWhole) {
    const std::string text =
        *textOf(thermika_test::readFile(THERMIKA_EXAMPLES "/Cali-14080046.xml"), "CaliData");
    EXPECT_EQ(text.substr(0, 27), "  <Temperature>    <Optics>");
    EXPECT_EQ(text.substr(text.size() - 29), "    </Optics>  </Temperature>");
}
