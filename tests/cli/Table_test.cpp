// How tables are laid out.
#include "cli/Table.h"

#include <gtest/gtest.h>

namespace {

using thermika::cli::Color;
using thermika::cli::Output;
using thermika::cli::Style;
using thermika::cli::Table;

Output plain() {
    Output output;
    output.color = Color::kNever;
    return output;
}

TEST(Table, alignsTextsLeftAndNumbersRight) {
    Table table({{"NAME"}, {"SIZE", true}, {"STATE"}});
    table.add({{"a"}, {"7"}, {"present"}});
    table.add({{"longer"}, {"123456"}, {"missing"}});
    EXPECT_EQ(table.text(plain(), 0),
              "NAME      SIZE  STATE\n"
              "a            7  present\n"
              "longer  123456  missing\n");
}

TEST(Table, alignsByColumnsNotBytes) {
    Table table({{"TEXT"}, {"STATE"}});
    table.add({{"33\xC2\xB0"}, {"present"}});
    table.add({{"1234"}, {"missing"}});
    EXPECT_EQ(table.text(plain(), 0), "TEXT  STATE\n33\xC2\xB0   present\n1234  missing\n");
}

TEST(Table, goesOnBelowTheLastCellWhereTheTerminalIsTooNarrow) {
    Table table({{"FOV", true}, {"HZ"}});
    table.add({{"33"}, {"27 32 80 100 120"}});
    EXPECT_EQ(table.text(plain(), 15),
              "FOV  HZ\n"
              " 33  27 32 80\n"
              "     100 120\n");
}

TEST(Table, narrowsItsWidestColumnsWhereTheTerminalIsTooNarrow) {
    Table table({{"PRODUCT"}, {"STATE"}, {"SIZE", true}});
    table.add({{"a thermal camera of some kind"}, {"ready"}, {"12"}});
    EXPECT_EQ(table.text(plain(), 24),
              "PRODUCT      STATE  SIZE\n"
              "a thermal    ready    12\n"
              "camera of\n"
              "some kind\n");
}

TEST(Table, narrowsColumnsOfOneWidthAlike) {
    Table table({{"A"}, {"B"}});
    table.add({{"one two three four"}, {"five six seven ten"}});
    EXPECT_EQ(table.text(plain(), 22),
              "A           B\n"
              "one two     five six\n"
              "three four  seven ten\n");
}

TEST(Table, staysWiderThanATerminalThatHoldsNoWords) {
    Table table({{"SERIAL"}, {"PRODUCT"}});
    table.add({{"14080045"}, {"infrared camera"}});
    EXPECT_EQ(table.text(plain(), 5),
              "SERIAL    PRODUCT\n"
              "14080045  infrared\n"
              "          camera\n");
}

TEST(Table, colorsNothingBelowACellThatHasEnded) {
    Output output;
    output.color = Color::kAlways;
    Table table({{"A"}, {"B"}});
    table.add({{"1", Style::kBad}, {"12345678 9"}});
    EXPECT_EQ(table.text(output, 11),
              "\033[1mA\033[0m  \033[1mB\033[0m\n"
              "\033[31m1\033[0m  12345678\n"
              "   9\n");
}

TEST(Table, breaksAWordThatIsWiderThanItsRoom) {
    Table table({{"FOV", true}, {"TEXT"}});
    table.add({{"33"}, {"abcdefghijkl"}});
    EXPECT_EQ(table.text(plain(), 13), "FOV  TEXT\n 33  abcdefgh\n     ijkl\n");
}

TEST(Table, breaksAWordBehindABlank) {
    Table table({{"TEXT"}});
    table.add({{" abcdefghijkl"}});
    EXPECT_EQ(table.text(plain(), 8), "TEXT\n abcdefg\nhijkl\n");
}

TEST(Table, breaksNoCharacterInItsMiddle) {
    Table table({{"TEXT"}});
    table.add(
        {{"\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xE6\xBC\xA2"}});
    EXPECT_EQ(table.text(plain(), 8),
              "TEXT\n"
              "\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\n"
              "\xC3\xA4\xE6\xBC\xA2\n");
}

// Each row is as wide as the widest cell: the texts of a description of two megabytes took six
// gigabytes, and those without any width took minutes.
TEST(Table, leavesOutTheEndOfVeryLongTexts) {
    std::string accents;
    for (int i = 0; i < 100000; ++i) accents += "\xCC\x81";
    Table table({{"A"}, {"B"}});
    table.add({{std::string(2000000, 'a')}, {accents}});
    const std::string text = table.text(plain(), 0);
    EXPECT_LT(text.size(), 2000U);
    EXPECT_NE(text.find("a...  "), std::string::npos);
    EXPECT_LT(table.text(plain(), 20).size(), 4000U);
}

TEST(Table, leavesTheLastCellWholeWhereNobodyCountsColumns) {
    Table table({{"A"}, {"B"}});
    table.add({{"1"}, {std::string(500, 'b')}});
    EXPECT_EQ(table.text(plain(), 0), "A  B\n1  " + std::string(500, 'b') + "\n");
}

TEST(Table, colorsCellsWithoutCountingTheCodes) {
    Output output;
    output.color = Color::kAlways;
    Table table({{"A"}, {"B"}});
    table.add({{"1", Style::kBad}, {"2"}});
    EXPECT_EQ(table.text(output, 0), "\033[1mA\033[0m  \033[1mB\033[0m\n\033[31m1\033[0m  2\n");
}

}  // namespace
