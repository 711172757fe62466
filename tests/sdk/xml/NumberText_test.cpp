// The quick number readers against the C library's scanner, whose values they promise to give.
#include "sdk/xml/NumberText.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/ProcessState.h"

namespace {

using dax::plainFloat;
using dax::plainInteger;
using thermika_test::ScopedLocale;

constexpr int kTexts = 200'000;

template <typename T>
T scanned(const std::string& text, const char* format) {
    T value = 77;
    EXPECT_EQ(std::sscanf(text.c_str(), format, &value), 1);
    return value;
}

std::uint32_t bitsOf(float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

/// Texts of up to 14 bytes, most of them nearly numbers; the same ones in every run.
class NearNumbers {
public:
    std::string next() {
        static const std::string digits = "0123456789";
        static const std::string others =
            std::string("+-.,xXeEpinfNaAF \t\n\v\f\r\b\x1B\x7F\x85\xA0\xC2") + '\0';
        std::string text;
        for (std::size_t length = pick(15); text.size() < length;)
            text += pick(4) != 0 ? digits[pick(digits.size())] : others[pick(others.size())];
        return text;
    }

    std::size_t pick(std::size_t count) { return m_random() % count; }

private:
    std::mt19937 m_random{20261115};
};

void expectIntegersAsScanned(const std::string& text, int value) {
    EXPECT_EQ(scanned<int>(text, "%i"), value) << testing::PrintToString(text);
    EXPECT_EQ(scanned<long>(text, "%ld"), value) << testing::PrintToString(text);
    EXPECT_EQ(scanned<unsigned short>(text, "%hu"), static_cast<unsigned short>(value))
        << testing::PrintToString(text);
}

void expectFloatAsScanned(const std::string& text, float value) {
    EXPECT_EQ(bitsOf(scanned<float>(text, "%f")), bitsOf(value)) << testing::PrintToString(text);
}

TEST(NumberText, givesTheScannersValuesInEveryCharacterLocale) {
    for (const char* const name :
         {"C", thermika_test::kDecimalCommaLocale, thermika_test::kLatin1Locale}) {
        const ScopedLocale locale({{LC_CTYPE, name}});
        NearNumbers texts;
        int integers = 0;
        int floats = 0;
        for (int i = 0; i < kTexts && !testing::Test::HasFailure(); ++i) {
            const std::string text = texts.next();
            if (const auto integer = plainInteger(text)) {
                ++integers;
                expectIntegersAsScanned(text, *integer);
            }
            if (const auto number = plainFloat(text)) {
                ++floats;
                expectFloatAsScanned(text, *number);
            }
        }
        EXPECT_GT(integers, kTexts / 4) << name;
        EXPECT_GT(floats, kTexts / 8) << name;
    }
}

TEST(NumberText, givesEveryIntegerOfUpToNineDigits) {
    NearNumbers texts;
    for (int i = 0; i < kTexts; ++i) {
        const int value = static_cast<int>(texts.pick(1'000'000'000) >> texts.pick(30));
        const std::string text = std::to_string(value);
        ASSERT_EQ(plainInteger(text), value);
        ASSERT_EQ(plainInteger("-" + text), -value);
        ASSERT_EQ(plainInteger(" \t\n\v\f\r+" + text + ".xyz"), value);
    }
    EXPECT_EQ(plainInteger("999999999"), 999999999);
    EXPECT_EQ(plainInteger("-999999999"), -999999999);
    EXPECT_EQ(plainInteger("0"), 0);
    EXPECT_EQ(plainInteger("-0"), 0);
    EXPECT_EQ(plainInteger("0.5"), 0);
    EXPECT_EQ(plainInteger("0 x"), 0);
    EXPECT_EQ(plainInteger("7\xA0"), 7);
    EXPECT_EQ(plainInteger(std::string_view("12345", 3)), 123) << "it read behind its text";
}

TEST(NumberText, leavesOtherIntegersToTheScanner) {
    for (const char* const text : {"",
                                   " ",
                                   "-",
                                   "+",
                                   "+-1",
                                   "--1",
                                   "- 1",
                                   "x1",
                                   ".5",
                                   ",5",
                                   "1234567890",
                                   "-1234567890",
                                   "0000000000",
                                   "00",
                                   "012",
                                   "-012",
                                   "0x1A",
                                   "0X1A",
                                   "+0x1A",
                                   "0b1",
                                   "0a",
                                   "\xA0"
                                   "1",
                                   "\b1"})
        EXPECT_FALSE(plainInteger(text).has_value()) << text;
    EXPECT_FALSE(plainInteger(std::string_view("\0001", 2)).has_value());
}

TEST(NumberText, givesEveryPlainFloat) {
    const ScopedLocale locale({});
    NearNumbers texts;
    for (int i = 0; i < kTexts; ++i) {
        std::string text = i % 2 == 0 ? "-" : "";
        for (std::size_t digits = 1 + texts.pick(12); digits > 0; --digits)
            text += static_cast<char>('0' + texts.pick(10));
        if (texts.pick(4) != 0) text += ".";
        if (text.back() == '.')
            for (std::size_t digits = texts.pick(30); digits > 0; --digits)
                text += static_cast<char>('0' + texts.pick(10));
        if (i % 3 == 0) text = " \n" + text + " 5";
        const auto number = plainFloat(text);
        ASSERT_TRUE(number.has_value()) << text;
        expectFloatAsScanned(text, *number);
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_EQ(plainFloat("3.5"), 3.5F);
    EXPECT_EQ(plainFloat(" \t\n\v\f\r-20.25\n"), -20.25F);
    EXPECT_EQ(plainFloat("5."), 5.0F);
    EXPECT_EQ(bitsOf(plainFloat("-0").value_or(1)), bitsOf(-0.0F));
    EXPECT_EQ(plainFloat(std::string_view("1.2345", 3)), 1.2F) << "it read behind its text";
}

TEST(NumberText, readsFloatsAlikeUnderADecimalComma) {
    const ScopedLocale locale({{LC_ALL, thermika_test::kDecimalCommaLocale}});
    EXPECT_EQ(plainFloat("3.5"), 3.5F);
    EXPECT_FALSE(plainFloat("3,5").has_value());
}

TEST(NumberText, leavesOtherFloatsToTheScanner) {
    for (const char* const text : {"",
                                   " ",
                                   "-",
                                   ".",
                                   "-.",
                                   ".5",
                                   "-.5",
                                   "+1",
                                   "+-1",
                                   "--1",
                                   "- 1",
                                   "inf",
                                   "-inf",
                                   "nan",
                                   "infinity",
                                   "x",
                                   "1x",
                                   "1e5",
                                   "1E5",
                                   "1.5e",
                                   "0x1A",
                                   "0x1p3",
                                   "1,5",
                                   "1..5",
                                   "1-",
                                   "1\xA0",
                                   "\xA0"
                                   "1",
                                   "1\b"})
        EXPECT_FALSE(plainFloat(text).has_value()) << text;
    EXPECT_FALSE(plainFloat(std::string_view("1\0", 2)).has_value());
    EXPECT_FALSE(plainFloat(std::string(50, '9')).has_value()) << "more than a float holds";
}

}  // namespace
