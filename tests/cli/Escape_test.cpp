// What is done to outside bytes before a person or a program gets them.
#include "cli/Escape.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using thermika::cli::bytesWithin;
using thermika::cli::columnsOf;
using thermika::cli::escaped;
using thermika::cli::losslessUtf8;
using thermika::cli::shortened;

/// What a reader of the documents does to have the bytes back.
std::string bytesOf(const std::string& utf8) {
    std::string bytes;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const bool isEscaped = utf8.compare(i, 2, "\xF4\x8F") == 0 &&
                               (utf8[i + 2] == '\xB8' || utf8[i + 2] == '\xB9' ||
                                utf8[i + 2] == '\xBA' || utf8[i + 2] == '\xBB');
        if (!isEscaped) {
            bytes += utf8[i];
            continue;
        }
        bytes += static_cast<char>(((utf8[i + 2] & 0x3) << 6) | (utf8[i + 3] & 0x3F));
        i += 3;
    }
    return bytes;
}

TEST(Escape, leavesPlainTextAlone) {
    EXPECT_EQ(escaped("Cali-14080045.xml (33 deg)", true), "Cali-14080045.xml (33 deg)");
    EXPECT_EQ(escaped("", true), "");
}

TEST(Escape, showsControlCharactersAsHexadecimalNumbers) {
    EXPECT_EQ(escaped("a\033[31mb\r\n\t\x7F", true), "a\\x1B[31mb\\x0D\\x0A\\x09\\x7F");
    EXPECT_EQ(escaped(std::string("\0", 1), true), "\\x00");
    EXPECT_EQ(escaped("\xC2\x9B\x33", true), "\\xC2\\x9B3");  // a control sequence's one-byte start
}

TEST(Escape, showsWhatChangesTheDirectionOfTextAsHexadecimalNumbers) {
    EXPECT_EQ(escaped("\xE2\x80\xAE", true), "\\xE2\\x80\\xAE");
    EXPECT_EQ(escaped("\xE2\x81\xA6", true), "\\xE2\\x81\\xA6");
    EXPECT_EQ(escaped("\xEF\xBB\xBF", true), "\\xEF\\xBB\\xBF");
}

TEST(Escape, doublesTheBackslashSoThatNothingLooksEscapedThatIsNot) {
    EXPECT_EQ(escaped("\\x1B", true), "\\\\x1B");
}

TEST(Escape, keepsUtf8OnlyWhereItIsWanted) {
    EXPECT_EQ(escaped("33\xC2\xB0 \xE2\x82\xAC \xF0\x9F\x93\xB7", true),
              "33\xC2\xB0 \xE2\x82\xAC \xF0\x9F\x93\xB7");
    EXPECT_EQ(escaped("33\xC2\xB0", false), "33\\xC2\\xB0");
}

TEST(Escape, showsBytesThatAreNoUtf8AsHexadecimalNumbers) {
    EXPECT_EQ(escaped("\xE9t\xE9", true), "\\xE9t\\xE9");
    EXPECT_EQ(escaped("\xC3", true), "\\xC3");
    EXPECT_EQ(escaped("\xC0\xAF", true), "\\xC0\\xAF");                    // overlong
    EXPECT_EQ(escaped("\xE0\x80\xAF", true), "\\xE0\\x80\\xAF");           // overlong
    EXPECT_EQ(escaped("\xED\xA0\x80", true), "\\xED\\xA0\\x80");           // a surrogate
    EXPECT_EQ(escaped("\xF4\x90\x80\x80", true), "\\xF4\\x90\\x80\\x80");  // beyond the last
    EXPECT_EQ(escaped("\xFF", true), "\\xFF");
}

TEST(Escape, makesUtf8FromWhichTheBytesComeBack) {
    EXPECT_EQ(losslessUtf8("Caf\xC3\xA9 \\ \033"), "Caf\xC3\xA9 \\ \033");
    EXPECT_EQ(losslessUtf8("Caf\xE9"), "Caf\xF4\x8F\xBB\xA9");
    std::string every;
    for (int byte = 0; byte < 256; ++byte) every += static_cast<char>(byte);
    every += "\xF4\x8F\xBB\xA9 \xC3\xA9 \xF4\x8F\xBB";
    EXPECT_EQ(bytesOf(losslessUtf8(every)), every);
    EXPECT_EQ(losslessUtf8(losslessUtf8("Caf\xC3\xA9")), "Caf\xC3\xA9");
}

TEST(Escape, takesWholeCharactersThatGoIntoSoManyColumns) {
    EXPECT_EQ(bytesWithin("abc", 2), 2U);
    EXPECT_EQ(bytesWithin("abc", 3), 3U);
    EXPECT_EQ(bytesWithin("33\xC2\xB0", 3), 4U);
    EXPECT_EQ(bytesWithin("a\xE6\xBC\xA2", 2), 1U);  // half of a wide one is none
    EXPECT_EQ(bytesWithin("e\xCC\x81x", 1), 3U);     // with the accent
    EXPECT_EQ(bytesWithin("", 3), 0U);
}

TEST(Escape, shortensTextsAtACharactersEnd) {
    EXPECT_EQ(shortened("abc", 3), "abc");
    EXPECT_EQ(shortened("abcd", 3), "abc...");
    EXPECT_EQ(shortened("ab\xC2\xB0", 3), "ab...");
    EXPECT_EQ(shortened("ab\xC2\xB0", 4), "ab\xC2\xB0");
    EXPECT_EQ(shortened("\xC2\xB0", 1), "...");
}

TEST(Escape, countsTheColumnsOfCharactersNotOfBytes) {
    EXPECT_EQ(columnsOf("abc"), 3U);
    EXPECT_EQ(columnsOf("33\xC2\xB0"), 3U);
    EXPECT_EQ(columnsOf("\xE6\xBC\xA2"), 2U);  // a wide one
    EXPECT_EQ(columnsOf("e\xCC\x81"), 1U);     // an accent of its own
    EXPECT_EQ(columnsOf("\x01"), 1U);          // nobody knows
    EXPECT_EQ(columnsOf(""), 0U);
}

}  // namespace
