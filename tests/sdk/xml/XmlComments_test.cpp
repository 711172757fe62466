// Taking comments out of a text: what goes, what stays, and what is no proper pairing.
#include "sdk/xml/XmlComments.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

/// What is left of a text; nothing when its delimiters do not pair up, and then it is unchanged.
std::optional<std::string> without(const std::string& text) {
    // Not a string, so that reading behind its end shows.
    std::vector<char> bytes(text.begin(), text.end());
    const auto left = dax::removeComments(bytes.data(), bytes.size());
    if (left) return std::string(bytes.data(), *left);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), text);
    return std::nullopt;
}

struct Row {
    const char* text;
    const char* left;
};

}  // namespace

TEST(XmlComments, leavesATextWithoutCommentsAsItIs) {
    for (const char* const text : {"", "-", "--", "->", "<!-", "<!", "a--b", "<a>1</a>", "- - >"})
        EXPECT_EQ(without(text), text);
}

TEST(XmlComments, removesCommentsWithTheirDelimiters) {
    constexpr Row kRows[] = {
        {"a<!-- x -->b", "ab"},
        {"<!-- x -->", ""},
        {"<!-- x -->b", "b"},
        {"a<!-- x -->", "a"},
        {"a<!---->b", "ab"},
        {"a<!-- x --->b", "ab"},
        {"a<!--- x -->b", "ab"},
        {"a<!-- x -- y -> z -->b", "ab"},
        {"a<!-- 1 -->b<!-- 2 -->c<!-- 3 -->d", "abcd"},
        {"a<!-- one\nand\r\nmore -->b", "ab"},
    };
    for (const Row& row : kRows) EXPECT_EQ(without(row.text), row.left) << row.text;
}

// The text is scanned in blocks, so each dash is one time the first of a block and the last of one.
TEST(XmlComments, removesACommentWhereverItStands) {
    for (std::size_t before = 0; before < 200; ++before) {
        const std::string left(before, 'x');
        const std::string behind(150, 'y');
        EXPECT_EQ(without(left + "<!-- c -->" + behind), left + behind) << before;
    }
}

TEST(XmlComments, removesNeighboursWithoutAnythingBetweenThem) {
    EXPECT_EQ(without("a<!--1--><!--2-->b"), "ab");
    EXPECT_EQ(without("<!--1--><!--2--><!--3-->"), "");
    EXPECT_EQ(without("<!----><!---->"), "");
}

TEST(XmlComments, removesACommentWithTheCommentsInIt) {
    EXPECT_EQ(without("a<!-- b <!-- c --> d -->e"), "ae");
    EXPECT_EQ(without("a<!--<!--<!-- c --> --> -->e"), "ae");
    EXPECT_EQ(without("a<!-- <!--1--> <!--2--> -->b<!--3-->c"), "abc");
}

TEST(XmlComments, takesDelimitersThatShareDashes) {
    EXPECT_EQ(without("a<!-->b"), "ab");
    EXPECT_EQ(without("a<!--->b"), "ab");
    EXPECT_EQ(without("<!-->"), "");
    EXPECT_EQ(without("<!--><!--->"), "");
}

TEST(XmlComments, leavesASecondClosingDelimiterRightAfterTheFirst) {
    EXPECT_EQ(without("a<!-- x -->-->b"), "a-->b");
    EXPECT_EQ(without("<!---->-->"), "-->");
    EXPECT_EQ(without("a<!-- x -->-->b<!-- y -->c"), "a-->bc");
}

TEST(XmlComments, refusesAClosingDelimiterOneCharacterAfterAnother) {
    EXPECT_EQ(without("a<!-- x --> -->b"), std::nullopt);
    EXPECT_EQ(without("a<!-- x -->--->b"), std::nullopt);
}

TEST(XmlComments, refusesTheThirdOfThreeClosingDelimitersInARow) {
    EXPECT_EQ(without("a<!-- x -->-->-->b"), std::nullopt);
}

TEST(XmlComments, refusesAClosingDelimiterWithoutAnOpening) {
    for (const char* const text :
         {"-->", "a-->b", "<x-- y -->", "--> <!-- x -->", "<!-- x --> y -->", "-->-->",
          "--><!-- x -->", "--><!--", "<!--a--> --><!-- b"})
        EXPECT_EQ(without(text), std::nullopt) << text;
}

TEST(XmlComments, refusesACommentThatIsNeverClosed) {
    for (const char* const text :
         {"<!--", "a<!-- b", "<!-- x --><!-- y", "<!-- <!-- x -->", "<!--x--", "<!--x->"})
        EXPECT_EQ(without(text), std::nullopt) << text;
}

TEST(XmlComments, refusesATextOfWhichOnlyTheLastCommentIsWrong) {
    EXPECT_EQ(without("a<!-- 1 -->b<!-- 2 -->c<!-- 3"), std::nullopt);
    EXPECT_EQ(without("a<!-- 1 -->b<!-- 2 -->c -->"), std::nullopt);
}

TEST(XmlComments, seesAClosingDelimiterInsideACommentAsItsEnd) {
    // The first closing delimiter in a row counts for the inner comment, the second is not seen.
    EXPECT_EQ(without("<!-- <!-- x -->-->"), std::nullopt);
    EXPECT_EQ(without("<!-- <!-- x -->--> -->y"), "y");
}

TEST(XmlComments, looksNowhereBehindTheGivenLength) {
    std::string text = "a<!-- x -->";
    EXPECT_EQ(dax::removeComments(text.data(), 1), 1U);
    EXPECT_EQ(dax::removeComments(text.data(), 10), std::nullopt);
    EXPECT_EQ(text, "a<!-- x -->");
    EXPECT_EQ(dax::removeComments(text.data(), 11), 1U);
}

TEST(XmlComments, seesNoDelimiterInWhatACommentHadParted) {
    EXPECT_EQ(without("a<!<!-- x -->--b"), "a<!--b");
    EXPECT_EQ(without("a-<!-- x -->->b"), "a-->b");
    EXPECT_EQ(without("a<!<!-- x -->-- <!-- y -->b"), "a<!-- b");
    EXPECT_EQ(without("a<<!-- x -->!--b"), "a<!--b");
    EXPECT_EQ(without("a<<!-- x -->b"), "a<b");
}
