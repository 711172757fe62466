// Reading values: how each getter takes a text, and what that does to the process's locale.
#include "sdk/SimpleXML.h"

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "support/BuildPaths.h"
#include "support/LoadedDocument.h"
#include "support/ProcessState.h"

namespace {

using thermika_test::kDecimalCommaLocale;
using thermika_test::LoadedDocument;
using thermika_test::nodeText;
using thermika_test::numericLocale;
using thermika_test::ScopedLocale;
using thermika_test::stringOf;

template <typename T>
using Getter = bool (dax::SimpleXML::*)(const char*, T*);

/// What the getter leaves in its output for an element with this text.
template <typename T>
T readAs(Getter<T> get, const std::string& text, T before) {
    LoadedDocument document("<v>" + text + "</v>");
    const std::optional<std::string> whole = nodeText(*document);
    T out = before;
    EXPECT_TRUE(((*document).*get)("v", &out)) << text;
    EXPECT_EQ(nodeText(*document), whole) << "the cursor has moved";
    return out;
}

int readInt(const std::string& text) { return readAs(&dax::SimpleXML::getInt, text, -77); }
bool readBool(const std::string& text) { return readAs(&dax::SimpleXML::getBool, text, true); }
long readLong(const std::string& text) { return readAs(&dax::SimpleXML::getLong, text, -77L); }
float readFloat(const std::string& text) { return readAs(&dax::SimpleXML::getFloat, text, -77.0F); }
unsigned short readShort(const std::string& text) {
    return readAs(&dax::SimpleXML::getUnsignedShort, text, static_cast<unsigned short>(77));
}

}  // namespace

TEST(SimpleXMLValues, readsIntegersInTheBaseTheirPrefixNames) {
    EXPECT_EQ(readInt("10"), 10);
    EXPECT_EQ(readInt("010"), 8);
    EXPECT_EQ(readInt("0x10"), 16);
    EXPECT_EQ(readInt("0X1f"), 31);
    EXPECT_EQ(readInt("-010"), -8);
    EXPECT_EQ(readInt("-0x10"), -16);
    EXPECT_EQ(readInt("0"), 0);
    EXPECT_EQ(readInt("-5"), -5);
    EXPECT_EQ(readInt("+5"), 5);
    EXPECT_EQ(readInt("2147483647"), 2147483647);
    EXPECT_EQ(readInt("-2147483648"), -2147483647 - 1);
}

TEST(SimpleXMLValues, readsANumberUpToWhateverFollowsIt) {
    EXPECT_EQ(readInt("12 mm"), 12);
    EXPECT_EQ(readInt("12.9"), 12);
    EXPECT_EQ(readInt("08"), 0);
    EXPECT_EQ(readInt("3<w>4</w>"), 3);
    EXPECT_EQ(readLong("12x"), 12);
    EXPECT_EQ(readFloat("1.5mm"), 1.5F);
    EXPECT_EQ(readFloat("1,5"), 1.0F);
    EXPECT_EQ(readShort("7;8"), 7);
}

TEST(SimpleXMLValues, skipsBlanksBeforeANumber) {
    EXPECT_EQ(readInt(" \t\r12"), 12);
    EXPECT_EQ(readInt("\v\f12"), 12);
    EXPECT_EQ(readFloat("  -1.5"), -1.5F);
    EXPECT_EQ(readLong("\n\n 9"), 9);
}

TEST(SimpleXMLValues, readsLongsAsDecimalsWithLeadingZeros) {
    EXPECT_EQ(readLong("010"), 10);
    EXPECT_EQ(readLong("0x10"), 0);
    EXPECT_EQ(readLong("14080045"), 14080045);
    // The least long where it has 32 bits.
    EXPECT_EQ(readLong("-9000000000"), std::strtol("-9000000000", nullptr, 10));
}

TEST(SimpleXMLValues, readsUnsignedShortsAsDecimalsThatWrap) {
    EXPECT_EQ(readShort("010"), 10);
    EXPECT_EQ(readShort("65535"), 65535);
    EXPECT_EQ(readShort("65536"), 0);
    EXPECT_EQ(readShort("70000"), 4464);
    EXPECT_EQ(readShort("-1"), 65535);
}

TEST(SimpleXMLValues, readsFloatsInEveryNotation) {
    EXPECT_EQ(readFloat("1.5"), 1.5F);
    EXPECT_EQ(readFloat("+1.25"), 1.25F);
    EXPECT_EQ(readFloat("-.5"), -0.5F);
    EXPECT_EQ(readFloat("5."), 5.0F);
    EXPECT_EQ(readFloat("1.5e2"), 150.0F);
    EXPECT_EQ(readFloat("0x10"), 16.0F);
    EXPECT_EQ(readFloat("0.1"), 0.1F);
    EXPECT_EQ(readFloat("16777217"), 16777216.0F);
    EXPECT_TRUE(std::signbit(readFloat("-0")));
    EXPECT_TRUE(std::isinf(readFloat("inf")));
    EXPECT_TRUE(std::isnan(readFloat("nan")));
}

TEST(SimpleXMLValues, takesOnlyNumbersAboveZeroAsTrue) {
    EXPECT_TRUE(readBool("1"));
    EXPECT_TRUE(readBool("0x2"));
    EXPECT_TRUE(readBool(" 10"));
    EXPECT_FALSE(readBool("0"));
    EXPECT_FALSE(readBool("-1"));
    EXPECT_FALSE(readBool("00"));
}

TEST(SimpleXMLValues, keepsTheOutputWhenTheTextIsNoNumber) {
    for (const char* const text : {"", " ", "x", "-", "true", "<w>1</w>"}) {
        EXPECT_EQ(readInt(text), -77) << text;
        EXPECT_EQ(readLong(text), -77) << text;
        EXPECT_EQ(readShort(text), 77) << text;
        EXPECT_EQ(readFloat(text), -77.0F) << text;
    }
}

TEST(SimpleXMLValues, answersFalseForABooleanThatIsNoNumber) {
    for (const char* const text : {"", " ", "x", "true", "-"}) EXPECT_FALSE(readBool(text)) << text;
}

TEST(SimpleXMLValues, keepsTheOutputWhenTheElementIsMissing) {
    LoadedDocument document("<v>1</v>");
    int number = -7;
    unsigned short small = 7;
    bool flag = true;
    long large = -7;
    float real = -7;
    EXPECT_FALSE(document->getInt("w", &number));
    EXPECT_FALSE(document->getUnsignedShort("w", &small));
    EXPECT_FALSE(document->getBool("w", &flag));
    EXPECT_FALSE(document->getLong("w", &large));
    EXPECT_FALSE(document->getFloat("w", &real));
    EXPECT_EQ(number, -7);
    EXPECT_EQ(small, 7);
    EXPECT_TRUE(flag);
    EXPECT_EQ(large, -7);
    EXPECT_EQ(real, -7.0F);
}

TEST(SimpleXMLValues, clearsAStringWhoseElementIsMissing) {
    LoadedDocument document("<v>1</v>");
    char mark = 'm';
    char* text = &mark;
    EXPECT_FALSE(document->getString("w", &text));
    EXPECT_EQ(text, nullptr);
}

TEST(SimpleXMLValues, handsOutStringsAsTheyStand) {
    LoadedDocument document("<a> x\ny\r </a><b>&amp;<c>1</c></b>");
    EXPECT_EQ(stringOf(*document, "a"), " xy\n ");
    EXPECT_EQ(stringOf(*document, "b"), "&amp;<c>1</c>");
    EXPECT_EQ(nodeText(*document), "<a> xy\n </a><b>&amp;<c>1</c></b>");
}

TEST(SimpleXMLValues, handsOutAnEmptyStringForAnEmptyElement) {
    LoadedDocument document("<a></a>");
    EXPECT_EQ(stringOf(*document, "a"), "");
}

TEST(SimpleXMLValues, readsTheFirstElementInsideTheOneItStandsIn) {
    LoadedDocument document("<p><v>1</v></p><p><v>2</v><v>3</v></p>");
    ASSERT_TRUE(document->setNode("p", 1));
    int number = 0;
    EXPECT_TRUE(document->getInt("v", &number));
    EXPECT_EQ(number, 2);
    EXPECT_EQ(stringOf(*document, "v"), "2");
    EXPECT_EQ(nodeText(*document), "<v>2</v><v>3</v>");
}

TEST(SimpleXMLValues, readsASampleFromTopToBottom) {
    dax::SimpleXML reader;
    ASSERT_TRUE(reader.open(THERMIKA_EXAMPLES "/Cali-14080045.xml", "CaliData"));
    reader.setNode();
    ASSERT_TRUE(reader.setNode("Main"));
    int number = 0;
    EXPECT_TRUE(reader.getInt("AddedOffset", &number));
    EXPECT_EQ(number, -12);
    unsigned short small = 0;
    EXPECT_TRUE(reader.getUnsignedShort("TecA", &small));
    EXPECT_EQ(small, 3412);
    float real = 0;
    EXPECT_TRUE(reader.getFloat("TempTECGain", &real));
    EXPECT_EQ(real, 13.0625F);
    EXPECT_TRUE(reader.getFloat("TempChipOffset", &real));
    EXPECT_EQ(real, -0.75F);
    reader.setNode();
    ASSERT_TRUE(reader.setNode("Temperature") && reader.setNode("Optics"));
    EXPECT_EQ(reader.getNodeCount("OpticsDef"), 3);
    long large = 0;
    ASSERT_TRUE(reader.setNode("OpticsDef"));
    EXPECT_TRUE(reader.getLong("SerNo", &large));
    EXPECT_EQ(large, 1207);
    EXPECT_EQ(stringOf(reader, "Text"), "");
}

TEST(SimpleXMLValues, setsTheNumericLocaleToCOnConstruction) {
    const ScopedLocale comma({{LC_ALL, kDecimalCommaLocale}});
    const dax::SimpleXML reader;
    EXPECT_EQ(numericLocale(), "C");
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), kDecimalCommaLocale);
}

TEST(SimpleXMLValues, readsDecimalPointsUnderADecimalCommaLocale) {
    const ScopedLocale comma({{LC_ALL, kDecimalCommaLocale}});
    for (const char* const text : {"1.5", "1.5x", "+1.5", "15e-1"}) {
        LoadedDocument document(std::string("<v>") + text + "</v><w>1,5</w>");
        std::setlocale(LC_NUMERIC, kDecimalCommaLocale);
        float real = 0;
        EXPECT_TRUE(document->getFloat("v", &real));
        EXPECT_EQ(real, 1.5F) << text;
        EXPECT_TRUE(document->getFloat("v", &real)) << "the first reading changed the locale";
        EXPECT_EQ(real, 1.5F) << text;
        EXPECT_TRUE(document->getFloat("w", &real));
        EXPECT_EQ(real, 1.0F) << text;
    }
}

TEST(SimpleXMLValues, leavesTheNumericLocaleBearingTheNameOfTheCharacterLocale) {
    const ScopedLocale comma({{LC_CTYPE, kDecimalCommaLocale}});
    for (const char* const text : {"7", "007", "7.5", "+7.5", "x", ""}) {
        LoadedDocument document(std::string("<v>") + text + "</v>");
        int number = 0;
        unsigned short small = 0;
        bool flag = false;
        long large = 0;
        float real = 0;
        const auto expectCharacterLocale = [&](const char* getter) {
            EXPECT_EQ(numericLocale(), kDecimalCommaLocale) << getter << " of " << text;
            std::setlocale(LC_NUMERIC, "C");
        };
        document->getInt("v", &number);
        expectCharacterLocale("getInt");
        document->getUnsignedShort("v", &small);
        expectCharacterLocale("getUnsignedShort");
        document->getBool("v", &flag);
        expectCharacterLocale("getBool");
        document->getLong("v", &large);
        expectCharacterLocale("getLong");
        document->getFloat("v", &real);
        expectCharacterLocale("getFloat");
    }
}

TEST(SimpleXMLValues, leavesTheNumericLocaleAtCWhereTheCharacterLocaleIsC) {
    const ScopedLocale plain({{LC_ALL, "C"}});
    LoadedDocument document("<v>7</v><w>x</w>");
    for (const char* const name : {"v", "w"}) {
        std::setlocale(LC_NUMERIC, kDecimalCommaLocale);
        int number = 0;
        EXPECT_TRUE(document->getInt(name, &number));
        EXPECT_EQ(numericLocale(), "C") << name;
    }
}

TEST(SimpleXMLValues, leavesTheNumericLocaleAloneWhenNothingIsScanned) {
    const ScopedLocale plain({{LC_ALL, "C"}});
    LoadedDocument document("<v>7</v>");
    std::setlocale(LC_NUMERIC, kDecimalCommaLocale);
    int number = 0;
    EXPECT_FALSE(document->getInt("w", &number));
    EXPECT_EQ(stringOf(*document, "v"), "7");
    EXPECT_EQ(stringOf(*document, "w"), std::nullopt);
    EXPECT_EQ(nodeText(*document), "<v>7</v>");
    EXPECT_EQ(document->getNodeCount("v"), 1);
    EXPECT_EQ(numericLocale(), kDecimalCommaLocale);
}
