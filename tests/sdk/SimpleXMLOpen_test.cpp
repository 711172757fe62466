// Opening a document: what is loaded, what a failure leaves behind, and what the log says.
#include <malloc.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "sdk/SimpleXML.h"
#include "support/BuildPaths.h"
#include "support/LoadedDocument.h"
#include "support/LogText.h"
#include "support/Matches.h"
#include "support/TestFiles.h"

namespace {

using thermika_test::LogCapture;
using thermika_test::nodeText;
using thermika_test::stringOf;
using thermika_test::TempDir;
using thermika_test::writeFile;

/// A reader with a folder for its documents, which all have the root "R".
class SimpleXMLOpen : public testing::Test {
protected:
    TempDir m_dir;
    dax::SimpleXML m_reader;

    std::string file(const char* name = "document.xml") const { return m_dir / name; }

    bool open(const std::string& bytes, const char* name = "document.xml") {
        writeFile(file(name), bytes);
        return m_reader.open(file(name).c_str(), "R");
    }

    /// The text of the whole document, opened; "" when it is empty.
    std::string opened(const std::string& bytes) {
        EXPECT_TRUE(open(bytes));
        m_reader.setNode();
        return nodeText(m_reader).value_or("");
    }

    std::string failureLine(const std::string& path) const {
        return "DEBUG [SimpleXML] Failed to open file " + path + "\n";
    }

    std::string formatLines(const std::string& text, const char* name = "document.xml") const {
        return "ERROR [SimpleXML] " + text + "\nERROR [SimpleXML] Format of file " + file(name) +
               " is wrong. Verify, that the XML document is well-formed!\n";
    }
};

/// The number in each "[SimpleXML:number] @ " of a log.
std::vector<int> sourceLines(const std::string& log) {
    std::vector<int> numbers;
    for (const auto& line : thermika_test::matchesIn(log, R"(\[SimpleXML:(-?[0-9]+)\] @ )"))
        numbers.push_back(std::stoi(line[1]));
    return numbers;
}

std::string craftedText(const char* name) {
    dax::SimpleXML reader;
    const std::string path = std::string(THERMIKA_TEST_DATA "/crafted/") + name;
    if (!reader.open(path.c_str(), "CaliData")) return "cannot open " + path;
    reader.setNode();
    return nodeText(reader).value_or("");
}

TEST_F(SimpleXMLOpen, loadsADocumentWhoseRootCarriesAttributes) {
    EXPECT_EQ(opened("<?xml version='1.0'?>\n<R version='1'>\n<a>1</a>\n</R>\n"), "<a>1</a>");
}

TEST_F(SimpleXMLOpen, leavesOutWhateverStandsOnTheRootsLines) {
    EXPECT_EQ(opened("<R><a>0</a>\n<a>1</a>\n<a>2</a></R><a>3</a>\n"), "<a>1</a>");
}

TEST_F(SimpleXMLOpen, loadsNothingAndSaysNothingWhenTheRootIsMissing) {
    LogCapture log;
    EXPECT_EQ(opened("<a>\n<b>1</b>\n</a>\n"), "");
    EXPECT_EQ(opened("no markup at all"), "");
    EXPECT_EQ(m_reader.getNodeCount("b"), 0);
    EXPECT_EQ(log.lines(), "");
}

TEST_F(SimpleXMLOpen, endsSilentlyAtALineThatIsTooLong) {
    LogCapture log;
    const std::string line(4090, 'x');
    EXPECT_EQ(opened("<R>\n1\n<a>" + line + "\n</R>\n"), "1<a>" + line.substr(0, 4090));
    EXPECT_EQ(opened("<R>\n1\n<a>" + line + "123\n</R>\n"), "1");
    EXPECT_EQ(log.lines(), "");
}

TEST_F(SimpleXMLOpen, removesACommentThatSpansLines) {
    EXPECT_EQ(opened("<R>\n<a>1<!-- over\nthree\nlines -->2</a>\n</R>\n"), "<a>12</a>");
    EXPECT_EQ(craftedText("comments-nested-and-adjacent.xml"),
              "<Serial>14080045</Serial><FOV>3</FOV>");
}

TEST_F(SimpleXMLOpen, removesCommentsWhoseDelimitersALineBreakDivided) {
    EXPECT_EQ(opened("<R>\n1<!\n-- x -\n->2\n</R>\n"), "12");
}

TEST_F(SimpleXMLOpen, leavesASecondClosingDelimiterRightAfterTheFirst) {
    LogCapture log;
    EXPECT_EQ(opened("<R>\n1<!-- x -->-->2\n</R>\n"), "1-->2");
    EXPECT_EQ(log.lines(), "");
}

TEST_F(SimpleXMLOpen, takesRootLinesInCommentsForRootLines) {
    LogCapture log;
    dax::SimpleXML reader;
    EXPECT_FALSE(
        reader.open(THERMIKA_TEST_DATA "/crafted/comments-across-root-lines.xml", "CaliData"));
    EXPECT_NE(log.lines().find("ERROR [SimpleXML] <Serial>1</Serial> <!-- <Serial>2</Serial>\n"),
              std::string::npos);
}

TEST_F(SimpleXMLOpen, refusesACommentThatIsNeverClosed) {
    LogCapture log;
    EXPECT_FALSE(open("<R>\n<a>1</a>\n<!-- x\n</R>\n"));
    EXPECT_EQ(log.lines(), formatLines("<a>1</a><!-- x"));
}

TEST_F(SimpleXMLOpen, refusesAClosingDelimiterWithoutAnOpening) {
    LogCapture log;
    EXPECT_FALSE(open("<R>\n<!-- x --><a>1</a>\r\n -->\n</R>\n"));
    EXPECT_EQ(log.lines(), formatLines("<!-- x --><a>1</a>\n -->"));
}

TEST_F(SimpleXMLOpen, logsEachMessageWithASourceLineOfItsOwn) {
    LogCapture log;
    EXPECT_FALSE(m_reader.open(file("missing.xml").c_str(), "R"));
    EXPECT_FALSE(open("<R>\n<!-- x\n</R>\n"));
    const std::vector<int> numbers = sourceLines(log.text());
    ASSERT_EQ(numbers.size(), 3U);
    EXPECT_GT(numbers[0], 0) << "DEBUG";
    EXPECT_GT(numbers[1], 0) << "ERROR";
    EXPECT_GT(numbers[2], numbers[1]) << "the second ERROR comes after the first";
    EXPECT_NE(numbers[0], numbers[1]);
    EXPECT_NE(numbers[0], numbers[2]);
}

TEST_F(SimpleXMLOpen, keepsTheTextWithItsCommentsAfterAFormatError) {
    const LogCapture quiet;
    EXPECT_FALSE(open("<R>\n<a><!-- 1 -->2</a>\n<!-- x\n</R>\n"));
    EXPECT_FALSE(m_reader.setNode("a")) << "nobody stands on the new document yet";
    m_reader.setNode();
    EXPECT_EQ(nodeText(m_reader), "<a><!-- 1 -->2</a><!-- x");
    EXPECT_EQ(stringOf(m_reader, "a"), "<!-- 1 -->2");
}

TEST_F(SimpleXMLOpen, replacesTheDocumentBeforeEvenAtAFormatError) {
    const LogCapture quiet;
    ASSERT_TRUE(open("<R>\n<a>1</a>\n</R>\n"));
    EXPECT_FALSE(open("<R>\n<b>2</b>-->\n</R>\n"));
    m_reader.setNode();
    EXPECT_EQ(nodeText(m_reader), "<b>2</b>-->");
}

TEST_F(SimpleXMLOpen, doesNotOpenAMissingFile) {
    LogCapture log;
    EXPECT_FALSE(m_reader.open(file().c_str(), "R"));
    EXPECT_EQ(log.lines(), failureLine(file()));
}

TEST_F(SimpleXMLOpen, doesNotOpenAnEmptyFile) {
    LogCapture log;
    EXPECT_FALSE(open(""));
    EXPECT_EQ(log.lines(), failureLine(file()));
}

TEST_F(SimpleXMLOpen, doesNotOpenADirectory) {
    LogCapture log;
    EXPECT_FALSE(m_reader.open(m_dir.path().c_str(), "R"));
    EXPECT_EQ(log.lines(), failureLine(m_dir.path()));
}

TEST_F(SimpleXMLOpen, doesNotWaitForAPipe) {
    LogCapture log;
    ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
    EXPECT_FALSE(m_reader.open(file().c_str(), "R"));
    EXPECT_EQ(log.lines(), failureLine(file()));
}

TEST_F(SimpleXMLOpen, doesNotOpenADevice) {
    LogCapture log;
    EXPECT_FALSE(m_reader.open("/dev/zero", "R"));
    EXPECT_EQ(log.lines(), failureLine("/dev/zero"));
}

TEST_F(SimpleXMLOpen, doesNotOpenAFileWhoseLengthItCannotHold) {
    for (const off_t bytes : {(off_t{1} << 31) + 1, off_t{3} << 30, (off_t{1} << 32) + 24}) {
        LogCapture log;
        writeFile(file(), "<R>\n<a>1</a>\n</R>\n");
        ASSERT_EQ(truncate(file().c_str(), bytes), 0);
        EXPECT_FALSE(m_reader.open(file().c_str(), "R"));
        EXPECT_EQ(log.lines(), failureLine(file()));
    }
}

TEST_F(SimpleXMLOpen, opensThroughASymbolicLink) {
    writeFile(file("target.xml"), "<R>\n<a>1</a>\n</R>\n");
    ASSERT_EQ(symlink("target.xml", file().c_str()), 0);
    EXPECT_TRUE(m_reader.open(file().c_str(), "R"));
}

TEST_F(SimpleXMLOpen, doesNotOpenNullTexts) {
    LogCapture log;
    ASSERT_TRUE(open("<R>\n<a>1</a>\n</R>\n"));
    EXPECT_FALSE(m_reader.open(nullptr, "R"));
    EXPECT_FALSE(m_reader.open(file().c_str(), nullptr));
    EXPECT_EQ(log.lines(), "");
    m_reader.setNode();
    EXPECT_EQ(stringOf(m_reader, "a"), "1");
}

TEST_F(SimpleXMLOpen, writesNoPercentSignAsAFormat) {
    LogCapture log;
    EXPECT_FALSE(open("<R>\n%s%n%d -->\n</R>\n", "%s%n.xml"));
    EXPECT_EQ(log.lines(), formatLines("%s%n%d -->", "%s%n.xml"));
}

TEST_F(SimpleXMLOpen, keepsTheDocumentAndTheCursorWhenTheNextFileCannotBeOpened) {
    const LogCapture quiet;
    ASSERT_TRUE(open("<R>\n<p><a>1</a><a>2</a></p>\n</R>\n"));
    m_reader.setNode();
    ASSERT_TRUE(m_reader.setNode("p"));
    EXPECT_FALSE(m_reader.open(file("missing.xml").c_str(), "R"));
    EXPECT_FALSE(open("", "empty.xml"));
    EXPECT_EQ(nodeText(m_reader), "<a>1</a><a>2</a>");
    EXPECT_TRUE(m_reader.setNode("a", 1));
    EXPECT_EQ(nodeText(m_reader), "2");
    EXPECT_TRUE(m_reader.resetNode());
    EXPECT_TRUE(m_reader.resetNode());
    EXPECT_FALSE(m_reader.resetNode());
}

TEST_F(SimpleXMLOpen, replacesTheDocumentByTheNextOne) {
    const LogCapture quiet;
    ASSERT_TRUE(open("<R>\n<p><a>1</a></p>\n</R>\n"));
    m_reader.setNode();
    ASSERT_TRUE(m_reader.setNode("p"));
    ASSERT_TRUE(open("<R>\n<b>2</b>\n</R>\n"));
    EXPECT_FALSE(m_reader.resetNode()) << "the cursor is on top again";
    EXPECT_EQ(nodeText(m_reader), std::nullopt);
    m_reader.setNode();
    EXPECT_EQ(nodeText(m_reader), "<b>2</b>");
    EXPECT_FALSE(m_reader.setNode("p"));
}

TEST_F(SimpleXMLOpen, releasesTheDocumentBeforeWhenItIsReplaced) {
    // With an address sanitizer, whose allocator has no such numbers, its leak check takes over.
    const auto heapBytes = [] {
        const struct mallinfo2 heap = mallinfo2();
        return heap.uordblks + heap.hblkhd;
    };
    std::string bytes = "<R>\n";
    for (int line = 0; line < 1024; ++line) bytes += std::string(1023, 'x') + "\n";
    ASSERT_TRUE(open(bytes));
    const std::size_t before = heapBytes();
    for (int i = 0; i < 20; ++i) ASSERT_TRUE(m_reader.open(file().c_str(), "R"));
    EXPECT_LT(heapBytes(), before + bytes.size());
    m_reader.setNode();
    EXPECT_EQ(nodeText(m_reader)->size(), 1023U * 1024U);
}

TEST_F(SimpleXMLOpen, readsADocumentOfLinksAsAServerWritesIt) {
    ASSERT_TRUE(m_reader.open(THERMIKA_TEST_DATA "/plain/downloadlinks.xml", "DownloadLinks"));
    m_reader.setNode();
    ASSERT_TRUE(m_reader.setNode("Imager") && m_reader.setNode("CaliData"));
    ASSERT_TRUE(m_reader.setNode("Links"));
    EXPECT_EQ(stringOf(m_reader, "string"), "http://files.thermika.example/cali/");
}

}  // namespace
