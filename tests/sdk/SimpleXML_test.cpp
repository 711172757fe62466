// Moving through a document: descending, climbing, counting, and handing out texts.
#include "sdk/SimpleXML.h"

#include <climits>
#include <cstddef>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "support/LoadedDocument.h"

namespace {

using thermika_test::LoadedDocument;
using thermika_test::nodeText;
using thermika_test::stringOf;

std::string nested(int levels) {
    std::string text = "<v>7</v>";
    for (int level = levels - 1; level >= 0; --level) {
        const std::string name = "n" + std::to_string(level);
        text = "<" + name + ">" + text + "</" + name + ">\n";
    }
    return text;
}

/// Descends through "n0", "n1", ... and answers how many levels that went.
int descend(dax::SimpleXML& reader, int levels) {
    for (int level = 0; level < levels; ++level)
        if (!reader.setNode(("n" + std::to_string(level)).c_str())) return level;
    return levels;
}

/// Every way to ask, none of which may find anything.
void expectNothing(dax::SimpleXML& reader) {
    int number = -7;
    unsigned short small = 7;
    bool flag = true;
    long large = -7;
    float real = -7;
    char mark = 'm';
    char* text = &mark;
    EXPECT_FALSE(reader.setNode("a"));
    EXPECT_FALSE(reader.setNode("a", 0));
    EXPECT_FALSE(reader.resetNode());
    EXPECT_EQ(reader.getNodeCount("a"), 0);
    EXPECT_FALSE(reader.getInt("a", &number));
    EXPECT_FALSE(reader.getUnsignedShort("a", &small));
    EXPECT_FALSE(reader.getBool("a", &flag));
    EXPECT_FALSE(reader.getLong("a", &large));
    EXPECT_FALSE(reader.getFloat("a", &real));
    EXPECT_FALSE(reader.getNode(&text));
    EXPECT_EQ(text, &mark);
    EXPECT_FALSE(reader.getString("a", &text));
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(number, -7);
    EXPECT_EQ(small, 7);
    EXPECT_TRUE(flag);
    EXPECT_EQ(large, -7);
    EXPECT_EQ(real, -7.0F);
}

}  // namespace

TEST(SimpleXML, comparesCommentTokensByTheirPlaceAlone) {
    EXPECT_TRUE(dax::compTokens({1, 3}, {0, 4}));
    EXPECT_FALSE(dax::compTokens({0, 4}, {1, 3}));
    EXPECT_FALSE(dax::compTokens({0, 4}, {1, 4}));
    EXPECT_FALSE(dax::compTokens({1, 4}, {0, 4}));
    EXPECT_TRUE(dax::compTokens({0, -1}, {0, 1}));
    EXPECT_TRUE(dax::compTokens({0, INT_MIN}, {0, INT_MAX}));
}

TEST(SimpleXML, findsNothingBeforeADocumentIsOpened) {
    dax::SimpleXML reader;
    expectNothing(reader);
    EXPECT_EQ(reader.getKey("a", 0, INT_MAX, false), -1);
    EXPECT_TRUE(reader.setNode());
    expectNothing(reader);
}

TEST(SimpleXML, findsNothingBeforeItStandsOnTheDocument) {
    const thermika_test::TempDir dir;
    thermika_test::writeFile(dir / "document.xml", "<R>\n<a>1</a>\n</R>\n");
    dax::SimpleXML reader;
    ASSERT_TRUE(reader.open((dir / "document.xml").c_str(), "R"));
    expectNothing(reader);
    EXPECT_EQ(reader.getKey("a", 0, INT_MAX, false), 3) << "takes its own offsets";
    EXPECT_TRUE(reader.setNode());
    EXPECT_TRUE(reader.setNode("a"));
}

TEST(SimpleXML, findsNothingForNullTexts) {
    // With a name that is nearly no name.
    LoadedDocument document("<a>1</a><\1>2</\1>");
    EXPECT_FALSE(document->setNode(nullptr));
    EXPECT_FALSE(document->setNode(nullptr, 0));
    EXPECT_EQ(document->getNodeCount(nullptr), 0);
    EXPECT_EQ(document->getKey(nullptr, 0, 8, false), -1);
    EXPECT_FALSE(document->getNode(nullptr));
    EXPECT_FALSE(document->getInt("a", nullptr));
    EXPECT_FALSE(document->getUnsignedShort("a", nullptr));
    EXPECT_FALSE(document->getBool("a", nullptr));
    EXPECT_FALSE(document->getLong("a", nullptr));
    EXPECT_FALSE(document->getFloat("a", nullptr));
    EXPECT_FALSE(document->getString("a", nullptr));
    int number = 0;
    EXPECT_FALSE(document->getInt(nullptr, &number));
    char* text = nullptr;
    EXPECT_FALSE(document->getString(nullptr, &text));
    EXPECT_EQ(nodeText(*document), "<a>1</a><\1>2</\1>");
}

TEST(SimpleXML, handsOutTheTextOfTheElementItStandsIn) {
    LoadedDocument document("<a><b>1</b>\n <b>2</b></a>x");
    EXPECT_EQ(nodeText(*document), "<a><b>1</b> <b>2</b></a>x");
    ASSERT_TRUE(document->setNode("a"));
    EXPECT_EQ(nodeText(*document), "<b>1</b> <b>2</b>");
    ASSERT_TRUE(document->setNode("b"));
    EXPECT_EQ(nodeText(*document), "1");
}

TEST(SimpleXML, handsOutNoNodeForAnEmptyElement) {
    LoadedDocument document("<a></a>");
    ASSERT_TRUE(document->setNode("a"));
    char mark = 'm';
    char* text = &mark;
    EXPECT_FALSE(document->getNode(&text));
    EXPECT_EQ(text, &mark);
}

TEST(SimpleXML, keepsTheLengthOfADocumentWhoseCommentsAreGone) {
    LoadedDocument document("<!-- twenty-two  -->12");
    char* text = nullptr;
    ASSERT_TRUE(document->getNode(&text));
    EXPECT_EQ(std::string(text, 23), std::string("12").append(21, '\0'));
    delete[] text;
}

TEST(SimpleXML, handsOutAnEmptyTextForADocumentThatWasAllComment) {
    LoadedDocument document("<!-- nothing else -->");
    EXPECT_EQ(nodeText(*document), "");
    EXPECT_FALSE(document->setNode("a"));
}

TEST(SimpleXML, findsTheFirstElementAtWhateverNestingLevel) {
    LoadedDocument document("<x><y><a>1</a></y></x><a>2</a>");
    EXPECT_EQ(stringOf(*document, "a"), "1");
    EXPECT_EQ(document->getNodeCount("a"), 2);
}

TEST(SimpleXML, endsAnElementAtTheFirstClosingTagOfItsName) {
    LoadedDocument document("<a>1<a>2</a>3</a>");
    EXPECT_EQ(stringOf(*document, "a"), "1<a>2");
    EXPECT_EQ(document->getNodeCount("a"), 1);
}

TEST(SimpleXML, neverFindsAnElementWhoseTagCarriesAttributes) {
    LoadedDocument document("<a x='1'>1</a><b/><c >3</c>");
    EXPECT_FALSE(document->setNode("a"));
    EXPECT_FALSE(document->setNode("b"));
    EXPECT_FALSE(document->setNode("c"));
    EXPECT_EQ(document->getNodeCount("a"), 0);
}

TEST(SimpleXML, findsNoElementThatIsNeverClosed) {
    LoadedDocument document("<a>1</a><a>2<b>3");
    EXPECT_FALSE(document->setNode("b"));
    EXPECT_TRUE(document->setNode("a", 0));
    document->resetNode();
    EXPECT_FALSE(document->setNode("a", 1));
    EXPECT_EQ(document->getNodeCount("a"), 1);
}

TEST(SimpleXML, looksForClosingTagsBehindTheOpeningOne) {
    LoadedDocument document("</a><a>1</a>");
    EXPECT_EQ(stringOf(*document, "a"), "1");
}

TEST(SimpleXML, staysInsideTheElementItStandsIn) {
    LoadedDocument document("<p><a>1</a></p><a>2</a><b>3</b>");
    ASSERT_TRUE(document->setNode("p"));
    EXPECT_EQ(document->getNodeCount("a"), 1);
    EXPECT_FALSE(document->setNode("a", 1));
    EXPECT_FALSE(document->setNode("b"));
    EXPECT_EQ(document->getNodeCount("b"), 0);
    EXPECT_EQ(stringOf(*document, "b"), std::nullopt);
}

TEST(SimpleXML, findsNoElementThatClosesBeyondTheOneItStandsIn) {
    LoadedDocument document("<p><a>1</p></a>");
    ASSERT_TRUE(document->setNode("p"));
    EXPECT_FALSE(document->setNode("a"));
    EXPECT_EQ(document->getNodeCount("a"), 0);
}

TEST(SimpleXML, takesAnyTextAsAName) {
    LoadedDocument document("<>1</></a>2<//a><x y>3</x y>");
    EXPECT_EQ(stringOf(*document, ""), "1");
    EXPECT_EQ(stringOf(*document, "/a"), "2");
    EXPECT_EQ(stringOf(*document, "x y"), "3");
}

TEST(SimpleXML, climbsOneLevelAtATimeAndStopsAtTheTop) {
    LoadedDocument document("<a>x<b>1</b></a>");
    EXPECT_FALSE(document->resetNode());
    ASSERT_TRUE(document->setNode("a"));
    ASSERT_TRUE(document->setNode("b"));
    EXPECT_TRUE(document->resetNode());
    EXPECT_EQ(nodeText(*document), "x<b>1</b>");
    EXPECT_TRUE(document->resetNode());
    EXPECT_EQ(nodeText(*document), "<a>x<b>1</b></a>");
    EXPECT_FALSE(document->resetNode());
}

TEST(SimpleXML, returnsToTheTopFromAnyLevel) {
    LoadedDocument document("<a><b>1</b></a>");
    ASSERT_TRUE(document->setNode("a"));
    ASSERT_TRUE(document->setNode("b"));
    EXPECT_TRUE(document->setNode());
    EXPECT_FALSE(document->resetNode());
    EXPECT_TRUE(document->setNode("a"));
}

TEST(SimpleXML, readsValuesOneLevelAboveTheDeepest) {
    LoadedDocument document(nested(253));
    ASSERT_EQ(descend(*document, 253), 253);
    int number = 0;
    EXPECT_TRUE(document->getInt("v", &number));
    EXPECT_EQ(number, 7);
    EXPECT_EQ(stringOf(*document, "v"), "7");
    EXPECT_EQ(document->getNodeCount("v"), 1);
    EXPECT_TRUE(document->setNode("v", 0));
    EXPECT_TRUE(document->resetNode());
    EXPECT_TRUE(document->setNode("v"));
    EXPECT_EQ(nodeText(*document), "7");
}

TEST(SimpleXML, descendsNoFurtherThanLevel254) {
    LoadedDocument document(nested(256));
    EXPECT_EQ(descend(*document, 256), 254);
    EXPECT_FALSE(document->setNode("v"));
    EXPECT_FALSE(document->setNode("v", 0));
    EXPECT_EQ(document->getNodeCount("v"), 0);
    int number = -7;
    unsigned short small = 8;
    bool flag = false;
    long large = -7;
    float real = -7;
    EXPECT_FALSE(document->getInt("v", &number));
    EXPECT_FALSE(document->getUnsignedShort("v", &small));
    EXPECT_FALSE(document->getBool("v", &flag));
    EXPECT_FALSE(document->getLong("v", &large));
    EXPECT_FALSE(document->getFloat("v", &real));
    EXPECT_EQ(stringOf(*document, "v"), std::nullopt);
    EXPECT_EQ(number, -7);
    EXPECT_EQ(nodeText(*document), "<n254><n255><v>7</v></n255></n254>");
    for (int level = 254; level > 0; --level) ASSERT_TRUE(document->resetNode());
    EXPECT_FALSE(document->resetNode());
}

TEST(SimpleXML, searchesFromAnyPlaceWhereverItStands) {
    LoadedDocument document("<a>1</a><a>2</a>");
    ASSERT_TRUE(document->setNode("a"));
    EXPECT_EQ(document->getKey("a", 0, 16, false), 3);
    EXPECT_EQ(document->getKey("a", 0, 16, true), 4);
    EXPECT_EQ(document->getKey("a", 1, 16, false), 11);
    EXPECT_EQ(document->getKey("a", 8, 16, false), 11);
    EXPECT_EQ(document->getKey("a", 9, 16, false), -1);
    EXPECT_EQ(document->getKey("a", 12, 16, true), 12);
    EXPECT_EQ(document->getKey("a", 13, 16, true), -1);
}

TEST(SimpleXML, findsOnlyTagsThatBeginBeforeTheLimit) {
    LoadedDocument document("<a>1</a><a>2</a>");
    EXPECT_EQ(document->getKey("a", 1, 9, false), 11);
    EXPECT_EQ(document->getKey("a", 1, 8, false), -1);
    EXPECT_EQ(document->getKey("a", 5, 13, true), 12);
    EXPECT_EQ(document->getKey("a", 5, 12, true), -1);
    EXPECT_EQ(document->getKey("a", 0, 0, false), -1);
    EXPECT_EQ(document->getKey("a", 0, 1, false), 3);
    EXPECT_EQ(document->getKey("a", 0, INT_MAX, false), 3);
}

TEST(SimpleXML, findsNothingFromOrToPlacesOutsideTheText) {
    LoadedDocument document("<a>1</a>");
    for (const int from : {-1, INT_MIN, 8, 9, 1000, INT_MAX}) {
        EXPECT_EQ(document->getKey("a", from, INT_MAX, false), -1) << from;
        EXPECT_EQ(document->getKey("a", from, INT_MAX, true), -1) << from;
    }
    EXPECT_EQ(document->getKey("a", 0, -1, false), -1);
    EXPECT_EQ(document->getKey("a", 0, INT_MIN, true), -1);
}

TEST(SimpleXML, findsNothingOfWhatLayBehindRemovedComments) {
    LoadedDocument document("<!-- -->x<a>1</a>");
    EXPECT_EQ(document->getKey("a", 1, INT_MAX, false), 4);
    for (int from = 2; from < 20; ++from)
        EXPECT_EQ(document->getKey("a", from, INT_MAX, false), -1) << from;
}
