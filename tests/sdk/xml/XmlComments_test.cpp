// Taking comments out of a text: what goes, what stays, and what is no proper pairing.
#include "sdk/xml/XmlComments.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

/// What is left of a text that arrives in pieces of `pieceBytes`; nothing when its delimiters do
/// not pair up.
std::optional<std::string> withoutInPieces(const std::string& text, std::size_t pieceBytes) {
    // Not a string, so that reading behind what is there shows.
    std::vector<char> left;
    dax::CommentRemover remover;
    for (std::size_t at = 0; at < text.size(); at += pieceBytes) {
        const std::string piece = text.substr(at, pieceBytes);
        left.insert(left.end(), piece.begin(), piece.end());
        left.shrink_to_fit();
        left.resize(remover.take(left.data(), left.size(), false));
    }
    left.resize(remover.take(left.data(), left.size(), true));
    if (!remover.pairUp()) return std::nullopt;
    return std::string(left.begin(), left.end());
}

/// The same, at once; it has to be the same however it arrives.
std::optional<std::string> without(const std::string& text) {
    std::string copy = text;
    dax::CommentRemover remover;
    copy.resize(remover.take(copy.data(), copy.size(), true));
    const std::optional<std::string> left =
        remover.pairUp() ? std::optional<std::string>(copy) : std::nullopt;
    for (std::size_t pieceBytes = 1; pieceBytes <= text.size(); ++pieceBytes)
        EXPECT_EQ(withoutInPieces(text, pieceBytes), left) << text << ", by " << pieceBytes;
    return left;
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
    dax::CommentRemover first;
    EXPECT_EQ(first.take(text.data(), 1, true), 1U);
    EXPECT_TRUE(first.pairUp());
    dax::CommentRemover second;
    second.take(text.data(), 10, true);
    EXPECT_FALSE(second.pairUp());
}

TEST(XmlComments, seesNoDelimiterInWhatACommentHadParted) {
    EXPECT_EQ(without("a<!<!-- x -->--b"), "a<!--b");
    EXPECT_EQ(without("a-<!-- x -->->b"), "a-->b");
    EXPECT_EQ(without("a<!<!-- x -->-- <!-- y -->b"), "a<!-- b");
    EXPECT_EQ(without("a<<!-- x -->!--b"), "a<!--b");
    EXPECT_EQ(without("a<<!-- x -->b"), "a<b");
}

TEST(XmlComments, holdsOnlyTheEndOfACommentThatIsOpen) {
    std::string text = "ab<!-- " + std::string(1000, 'x');
    dax::CommentRemover remover;
    EXPECT_EQ(remover.take(text.data(), text.size(), false), 6U);
    EXPECT_FALSE(remover.pairUp());
    text.resize(6);
    text += "-->c";
    EXPECT_EQ(remover.take(text.data(), text.size(), true), 3U);
    EXPECT_TRUE(remover.pairUp());
    EXPECT_EQ(text.substr(0, 3), "abc");
}
