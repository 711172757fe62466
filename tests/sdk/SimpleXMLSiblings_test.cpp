// Elements of one name beside each other: visiting them by number, and counting them.
#include <climits>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "sdk/SimpleXML.h"
#include "support/LoadedDocument.h"
#include "support/TestFiles.h"

namespace {

using thermika_test::LoadedDocument;
using thermika_test::nodeText;

/// The texts of the elements `name` in the order in which `numbers` asks for them, "-" for none.
std::string visited(dax::SimpleXML& reader, const char* name, const std::vector<int>& numbers) {
    std::string texts;
    for (const int number : numbers) {
        if (!reader.setNode(name, number)) {
            texts += "-";
            continue;
        }
        texts += nodeText(reader).value_or("");
        reader.resetNode();
    }
    return texts;
}

}  // namespace

TEST(SimpleXMLSiblings, tellsSiblingsApartByTheirNumber) {
    LoadedDocument document("<a>1</a><a>2</a>");
    EXPECT_EQ(document->getNodeCount("a"), 2);
    ASSERT_TRUE(document->setNode("a", 1));
    EXPECT_EQ(nodeText(*document), "2");
    ASSERT_TRUE(document->resetNode());
    EXPECT_FALSE(document->setNode("a", 2));
    EXPECT_FALSE(document->setNode("a", -1));
    EXPECT_FALSE(document->setNode("a", INT_MAX));
    EXPECT_FALSE(document->setNode("a", INT_MIN));
    EXPECT_FALSE(document->resetNode()) << "the cursor has moved";
    EXPECT_EQ(nodeText(*document), "<a>1</a><a>2</a>");
}

TEST(SimpleXMLSiblings, visitsSiblingsInAnyOrder) {
    LoadedDocument document("<a>0</a><b>x</b><a>1</a>.<a>2</a><b>y</b><a>3</a>");
    EXPECT_EQ(visited(*document, "a", {0, 1, 2, 3, 4}), "0123-");
    EXPECT_EQ(visited(*document, "a", {4, 3, 2, 1, 0}), "-3210");
    EXPECT_EQ(visited(*document, "a", {2, 2, 0, 3, 3, 1, 5, 1}), "220331-1");
}

TEST(SimpleXMLSiblings, keepsSiblingsOfTwoNamesApart) {
    LoadedDocument document("<a>0</a><b>x</b><a>1</a><b>y</b><a>2</a>");
    std::string texts;
    for (const int number : {0, 1, 2})
        texts += visited(*document, "a", {number}) + visited(*document, "b", {number});
    EXPECT_EQ(texts, "0x1y2-");
}

TEST(SimpleXMLSiblings, numbersSiblingsAnewInEachParent) {
    LoadedDocument document("<p><a>0</a><a>1</a></p><p><a>2</a><a>3</a></p><p><a>4</a></p>");
    std::string texts;
    for (const int parent : {0, 1, 2, 1, 0}) {
        ASSERT_TRUE(document->setNode("p", parent));
        texts += visited(*document, "a", {1, 0, 1}) + " ";
        document->resetNode();
    }
    EXPECT_EQ(texts, "101 323 -4- 323 101 ");
}

TEST(SimpleXMLSiblings, forgetsTheSiblingsOfAnEarlierDocument) {
    const thermika_test::TempDir dir;
    thermika_test::writeFile(dir / "one.xml", "<R>\n<a>1</a><a>2</a><a>3</a>\n</R>\n");
    thermika_test::writeFile(dir / "two.xml", "<R>\n<a>4</a><a>5</a>\n</R>\n");
    dax::SimpleXML reader;
    ASSERT_TRUE(reader.open((dir / "one.xml").c_str(), "R"));
    reader.setNode();
    EXPECT_EQ(visited(reader, "a", {0, 1, 2}), "123");
    ASSERT_TRUE(reader.open((dir / "two.xml").c_str(), "R"));
    reader.setNode();
    EXPECT_EQ(visited(reader, "a", {0, 1, 2}), "45-");
}

// What was found last serves to find the next sibling. That went wrong where the tags of two names
// end at the same place: the reader took the element of the one for an element of the other.
TEST(SimpleXMLSiblings, takesNoElementForOneOfALongerNameThatEndsInIt) {
    LoadedDocument document("<b<a>1</a>2</b<a>");
    EXPECT_EQ(visited(*document, "a", {0}), "1");
    EXPECT_EQ(visited(*document, "b<a", {0}), "1</a>2");
    EXPECT_EQ(visited(*document, "a", {0}), "1");
}

// What was found in an element stays found while the element is the same. Two that begin at the
// same place are not the same when they end at different ones.
TEST(SimpleXMLSiblings, forgetsTheSiblingsOfAnElementThatBeganAtTheSamePlaceAndEndedLater) {
    LoadedDocument document("<b<a><c>1</c></a><c>2</c></b<a>");
    ASSERT_TRUE(document->setNode("b<a", 0));
    ASSERT_TRUE(document->setNode("c", 1));
    EXPECT_EQ(nodeText(*document), "2");
    ASSERT_TRUE(document->resetNode());
    ASSERT_TRUE(document->resetNode());
    ASSERT_TRUE(document->setNode("a", 0));
    EXPECT_FALSE(document->setNode("c", 1));
    ASSERT_TRUE(document->setNode("c", 0));
    EXPECT_EQ(nodeText(*document), "1");
}

TEST(SimpleXMLSiblings, looksAnewBelowAnElementThatEndsWhereTheFormerOneDid) {
    LoadedDocument document("<p><a><v>1</v><q><a><v>2</v></a></q></p>");
    ASSERT_TRUE(document->setNode("p"));
    ASSERT_TRUE(document->setNode("a"));
    ASSERT_TRUE(document->setNode("v"));
    EXPECT_EQ(nodeText(*document), "1");
    document->setNode();
    ASSERT_TRUE(document->setNode("q"));
    ASSERT_TRUE(document->setNode("a"));
    ASSERT_TRUE(document->setNode("v"));
    EXPECT_EQ(nodeText(*document), "2");
}

TEST(SimpleXMLSiblings, countsAnElementThatClosesRightAtTheEndOfItsParent) {
    LoadedDocument document("<a>0<a>1</a>");
    ASSERT_TRUE(document->setNode("a"));
    EXPECT_EQ(document->getNodeCount("a"), 1);
    EXPECT_FALSE(document->setNode("a")) << "descending asks for a closing tag before the end";
    EXPECT_FALSE(document->setNode("a", 0));
    EXPECT_EQ(thermika_test::stringOf(*document, "a"), std::nullopt);
}

TEST(SimpleXMLSiblings, countsAnElementWhoseContentStartsRightAtTheEndOfItsParent) {
    LoadedDocument document("<a>0<a></a>");
    ASSERT_TRUE(document->setNode("a"));
    EXPECT_EQ(document->getNodeCount("a"), 1);
    EXPECT_FALSE(document->setNode("a"));
}

TEST(SimpleXMLSiblings, countsNoElementWhoseTagsReachBeyondTheEndOfItsParent) {
    LoadedDocument document("<a>0<b</a>1</b</a>");
    ASSERT_TRUE(document->setNode("a"));
    EXPECT_EQ(document->getNodeCount("b</a"), 0);
}

TEST(SimpleXMLSiblings, countsWithoutMovingTheCursor) {
    LoadedDocument document("<p><a>1</a><a>2</a></p>");
    ASSERT_TRUE(document->setNode("p"));
    EXPECT_EQ(document->getNodeCount("a"), 2);
    EXPECT_EQ(nodeText(*document), "<a>1</a><a>2</a>");
}
