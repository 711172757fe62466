// Text between tags: what its reader has, and how it is written.
#include "cli/CharacterData.h"

#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace {

using thermika::cli::readText;
using thermika::cli::writtenText;

TEST(CharacterData, readsTextWithoutReferencesAsItStands) {
    for (const char* const text : {"", "T", "a > b; c", "]]", "\"'", "\u00b0\n\t"})
        EXPECT_EQ(readText(text), text);
}

TEST(CharacterData, resolvesReferences) {
    EXPECT_EQ(readText("a&lt;&gt;&amp;&quot;&apos;b"), "a<>&\"'b");
    EXPECT_EQ(readText("&#65;&#x42;&#x0000063;d"), "ABcd");
    EXPECT_EQ(readText("&#xB0;&#x2028;&#x10FFFF;"), "\u00b0\u2028\U0010ffff");
    EXPECT_EQ(readText("&#9;&#10;&#13;&#x20;&#xD7FF;&#xE000;&#xFFFD;&#x10000;"),
              "\t\n\r \ud7ff\ue000\ufffd\U00010000");
}

TEST(CharacterData, hasNoReferencesToWhatIsNoCharacter) {
    for (const char* const number :
         {"0", "8", "11", "12", "14", "31", "55296", "57343", "65534", "65535", "1114112",
          "99999999999", "", "1x", "x", "-9", "+9", " 9"})
        EXPECT_EQ(readText("&#" + std::string(number) + ";"), std::nullopt) << number;
    for (const char* const number :
         {"9", "10", "13", "32", "255", "256", "55295", "57344", "65533", "65536", "1114111"})
        EXPECT_NE(readText("&#" + std::string(number) + ";"), std::nullopt) << number;
}

TEST(CharacterData, isNotReadASecondTime) {
    EXPECT_EQ(readText("&amp;lt;"), "&lt;");
    EXPECT_EQ(readText("&#38;#65;"), "&#65;");
    EXPECT_EQ(readText("]]&gt;"), "]]>");
}

TEST(CharacterData, isNoneWhereItCannotStandBetweenTags) {
    for (const char* const text :
         {"a<b",      "a]]>b",     "a&b",    "&",        "a&;",      "&amp",
          "&nbsp;",   "&AMP;",     "&am p;", "&#;",      "&#x;",     "&#X41;",
          "&#xg;",    "&#-1;",     "&#+65;", "&# 65;",   "&#65 ;",   "&#4294967361;",
          "&#0;",     "&#1;",      "&#x1F;", "&#xD800;", "&#xDFFF;", "&#xFFFE;",
          "&#xFFFF;", "&#x110000;"})
        EXPECT_EQ(readText(text), std::nullopt) << text;
}

TEST(CharacterData, mayHaveAnyLength) {
    const std::string letters(1U << 22U, 'a');
    EXPECT_EQ(readText('&' + letters), std::nullopt);
    EXPECT_EQ(readText('&' + letters + ';'), std::nullopt);
    EXPECT_EQ(readText("&#" + std::string(1U << 22U, '0') + "65;"), "A");
    std::string references;
    for (int i = 0; i < 1 << 18; ++i) references += "&lt;";
    EXPECT_EQ(readText(references), std::string(1U << 18U, '<'));
}

TEST(CharacterData, isWrittenSoThatItIsReadAgain) {
    EXPECT_EQ(writtenText("a&b<c>d&amp;"), "a&amp;b&lt;c>d&amp;amp;");
    for (const char* const text : {"", "T", "a&b", "&amp;", "<b>", "&#65;"})
        EXPECT_EQ(readText(writtenText(text)), text);
}

}  // namespace
