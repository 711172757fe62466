// The t functions in both widths, and the number scanners that no locale disturbs.
#include "sdk/StringHelpers.h"

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "support/ProcessState.h"

namespace {

using thermika_test::kDecimalCommaLocale;
using thermika_test::kLatin1Locale;
using thermika_test::kLatin9Locale;
using thermika_test::numericLocale;
using thermika_test::ScopedLocale;

// What a scan gives, and the number, which starts at 77.
template <typename T>
struct Scanned {
    int items;
    T value;
    bool operator==(const Scanned& other) const {
        return items == other.items && value == other.value;
    }
};

template <typename T, typename Char>
Scanned<T> scan(const Char* text, const Char* format) {
    T value = 77;
    const int items = tscanf(text, format, &value);
    return {items, value};
}

template <typename T>
Scanned<T> scan(int (*scanner)(const char*, T*), const char* text) {
    T value = 77;
    const int items = scanner(text, &value);
    return {items, value};
}

template <typename T>
std::ostream& operator<<(std::ostream& out, const Scanned<T>& scanned) {
    return out << scanned.items << " item(s), " << scanned.value;
}

using Short = Scanned<unsigned short>;
using Float = Scanned<float>;
using Long = Scanned<long>;
using Int = Scanned<int>;

/// The least or largest long where it has 32 bits.
long asLong(const char* text) { return std::strtol(text, nullptr, 10); }

TEST(StringHelpers, scansEachTypeFromNarrowTexts) {
    EXPECT_EQ(scan<unsigned short>("65535", "%hu"), (Short{1, 65535}));
    EXPECT_EQ(scan<float>("-1.25e2", "%f"), (Float{1, -125.0F}));
    EXPECT_EQ(scan<long>("-9000000000", "%ld"), (Long{1, asLong("-9000000000")}));
    EXPECT_EQ(scan<int>(" -12", "%i"), (Int{1, -12}));
    EXPECT_EQ(scan<int>("ff", "%x"), (Int{1, 255}));
    EXPECT_EQ(scan<int>("n = 5", "n = %d"), (Int{1, 5}));
}

TEST(StringHelpers, scansEachTypeFromWideTexts) {
    EXPECT_EQ(scan<unsigned short>(L"65535", L"%hu"), (Short{1, 65535}));
    EXPECT_EQ(scan<float>(L"-1.25e2", L"%f"), (Float{1, -125.0F}));
    EXPECT_EQ(scan<long>(L"-9000000000", L"%ld"), (Long{1, asLong("-9000000000")}));
    EXPECT_EQ(scan<int>(L" -12", L"%i"), (Int{1, -12}));
    EXPECT_EQ(scan<int>(L"ff", L"%x"), (Int{1, 255}));
    EXPECT_EQ(scan<int>(L"n = 5", L"n = %d"), (Int{1, 5}));
}

TEST(StringHelpers, keepsTheValueWhenNothingWasConverted) {
    EXPECT_EQ(scan<unsigned short>("x1", "%hu"), (Short{0, 77}));
    EXPECT_EQ(scan<float>("x1", "%f"), (Float{0, 77}));
    EXPECT_EQ(scan<long>("x1", "%ld"), (Long{0, 77}));
    EXPECT_EQ(scan<int>("x1", "%i"), (Int{0, 77}));
    EXPECT_EQ(scan<unsigned short>(L"x1", L"%hu"), (Short{0, 77}));
    EXPECT_EQ(scan<float>(L"x1", L"%f"), (Float{0, 77}));
    EXPECT_EQ(scan<long>(L"x1", L"%ld"), (Long{0, 77}));
    EXPECT_EQ(scan<int>(L"x1", L"%i"), (Int{0, 77}));
}

TEST(StringHelpers, tellsTheEndOfTheTextFromATextWithoutNumber) {
    for (const char* const text : {"", " \t\r\n"}) {
        EXPECT_EQ(scan<unsigned short>(text, "%hu"), (Short{EOF, 77}));
        EXPECT_EQ(scan<float>(text, "%f"), (Float{EOF, 77}));
        EXPECT_EQ(scan<long>(text, "%ld"), (Long{EOF, 77}));
        EXPECT_EQ(scan<int>(text, "%i"), (Int{EOF, 77}));
        EXPECT_EQ(scan(dax::_tscanff, text), (Float{EOF, 77}));
        EXPECT_EQ(scan(dax::_tscanfld, text), (Long{EOF, 77}));
        EXPECT_EQ(scan(dax::_tscanfi, text), (Int{EOF, 77}));
        EXPECT_EQ(scan(dax::_tscanfus, text), (Short{EOF, 77}));
    }
    EXPECT_EQ(scan<unsigned short>(L"", L"%hu"), (Short{EOF, 77}));
    EXPECT_EQ(scan<float>(L"", L"%f"), (Float{EOF, 77}));
    EXPECT_EQ(scan<long>(L" ", L"%ld"), (Long{EOF, 77}));
    EXPECT_EQ(scan<int>(L"\n", L"%i"), (Int{EOF, 77}));
}

TEST(StringHelpers, scansFloats) {
    EXPECT_EQ(scan(dax::_tscanff, "3.5"), (Float{1, 3.5F}));
    EXPECT_EQ(scan(dax::_tscanff, " -0.125 mm"), (Float{1, -0.125F}));
    EXPECT_EQ(scan(dax::_tscanff, "+2e3"), (Float{1, 2000.0F}));
    EXPECT_EQ(scan(dax::_tscanff, "3,5"), (Float{1, 3.0F}));
    EXPECT_EQ(scan(dax::_tscanff, "mm"), (Float{0, 77}));
}

TEST(StringHelpers, scansLongs) {
    EXPECT_EQ(scan(dax::_tscanfld, "9000000000"), (Long{1, asLong("9000000000")}));
    EXPECT_EQ(scan(dax::_tscanfld, "-5;6"), (Long{1, -5}));
    EXPECT_EQ(scan(dax::_tscanfld, "012"), (Long{1, 12}));
    EXPECT_EQ(scan(dax::_tscanfld, "0x1A"), (Long{1, 0}));
    EXPECT_EQ(scan(dax::_tscanfld, ";"), (Long{0, 77}));
}

TEST(StringHelpers, scansIntegersOfThreeBases) {
    EXPECT_EQ(scan(dax::_tscanfi, "12"), (Int{1, 12}));
    EXPECT_EQ(scan(dax::_tscanfi, "012"), (Int{1, 10}));
    EXPECT_EQ(scan(dax::_tscanfi, "0x1A"), (Int{1, 26}));
    EXPECT_EQ(scan(dax::_tscanfi, "-0x1A"), (Int{1, -26}));
    EXPECT_EQ(scan(dax::_tscanfi, "3.9"), (Int{1, 3}));
    EXPECT_EQ(scan(dax::_tscanfi, "A12"), (Int{0, 77}));
}

TEST(StringHelpers, wrapsShortsTo16Bits) {
    EXPECT_EQ(scan(dax::_tscanfus, "65535"), (Short{1, 65535}));
    EXPECT_EQ(scan(dax::_tscanfus, "65537"), (Short{1, 1}));
    EXPECT_EQ(scan(dax::_tscanfus, "-1"), (Short{1, 65535}));
    EXPECT_EQ(scan(dax::_tscanfus, "012"), (Short{1, 12}));
    EXPECT_EQ(scan(dax::_tscanfus, "x"), (Short{0, 77}));
}

// Every guarded scan under one locale; LC_NUMERIC is the decimal comma's before each.
void expectGuardedScans(const char* characterLocale) {
    const auto expectGuard = [&](const char* what, const auto& scanOne, auto expected) {
        const ScopedLocale locale({{LC_CTYPE, characterLocale}, {LC_NUMERIC, kDecimalCommaLocale}});
        EXPECT_EQ(scanOne(), expected) << what;
        EXPECT_EQ(numericLocale(), characterLocale) << what;
        EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), characterLocale) << what;
    };
    expectGuard(
        "float", [] { return scan<float>("3.5", "%f"); }, Float{1, 3.5F});
    expectGuard(
        "short", [] { return scan<unsigned short>("3", "%hu"); }, Short{1, 3});
    expectGuard(
        "long", [] { return scan<long>("3", "%ld"); }, Long{1, 3});
    expectGuard(
        "int", [] { return scan<int>("3", "%i"); }, Int{1, 3});
    expectGuard(
        "end", [] { return scan<float>("", "%f"); }, Float{EOF, 77});
    expectGuard(
        "_tscanff", [] { return scan(dax::_tscanff, "3.5"); }, Float{1, 3.5F});
    expectGuard(
        "_tscanfld", [] { return scan(dax::_tscanfld, "3"); }, Long{1, 3});
    expectGuard(
        "_tscanfi", [] { return scan(dax::_tscanfi, "x"); }, Int{0, 77});
    expectGuard(
        "_tscanfus", [] { return scan(dax::_tscanfus, "3"); }, Short{1, 3});
}

TEST(StringHelpers, readsAPointUnderADecimalCommaAndNamesLcNumericAfterLcCtype) {
    expectGuardedScans(kDecimalCommaLocale);
    expectGuardedScans(kLatin1Locale);
    expectGuardedScans("C");
}

TEST(StringHelpers, scansWideTextsAsTheNumericLocaleSays) {
    const ScopedLocale locale({{LC_NUMERIC, kDecimalCommaLocale}});
    EXPECT_EQ(scan<float>(L"3,5", L"%f"), (Float{1, 3.5F}));
    EXPECT_EQ(scan<float>(L"3.5", L"%f"), (Float{1, 3.0F}));
    EXPECT_EQ(scan<int>(L"3", L"%i"), (Int{1, 3}));
    EXPECT_EQ(numericLocale(), kDecimalCommaLocale);
}

TEST(StringHelpers, findsTheFirstOccurrence) {
    char text[] = "one two two";
    char two[] = "two", none[] = "three", empty[] = "", longer[] = "one two two two";
    EXPECT_EQ(tstrstr(text, two), text + 4);
    EXPECT_EQ(tstrstr(text, none), nullptr);
    EXPECT_EQ(tstrstr(text, empty), text);
    EXPECT_EQ(tstrstr(text, longer), nullptr);

    wchar_t wide[] = L"one two two";
    wchar_t wideTwo[] = L"two", wideNone[] = L"three", wideEmpty[] = L"";
    EXPECT_EQ(tstrstr(wide, wideTwo), wide + 4);
    EXPECT_EQ(tstrstr(wide, wideNone), nullptr);
    EXPECT_EQ(tstrstr(wide, wideEmpty), wide);
}

TEST(StringHelpers, convertsCaseInPlace) {
    const ScopedLocale locale({});
    char text[] = "aZ [19] `z{\0kept";
    EXPECT_EQ(tstrupr(text), text);
    EXPECT_EQ(std::string(text, sizeof text), std::string("AZ [19] `Z{\0kept", sizeof text));
    EXPECT_EQ(tstrlwr(text), text);
    EXPECT_EQ(std::string(text, sizeof text), std::string("az [19] `z{\0kept", sizeof text));
    char empty[] = "";
    EXPECT_STREQ(tstrupr(empty), "");
    EXPECT_STREQ(tstrlwr(empty), "");
}

// Bytes 128 to 255 as `convert` leaves them.
template <typename Convert>
std::string converted(Convert convert) {
    std::string text;
    for (int byte = 128; byte < 256; ++byte) text += static_cast<char>(byte);
    EXPECT_EQ(convert(text.data()), text.data());
    return text;
}

TEST(StringHelpers, leavesBytesAbove127AloneInTheCLocale) {
    const ScopedLocale locale({});
    const std::string same = converted([](char* text) { return text; });
    EXPECT_EQ(converted<char*(char*)>(tstrupr), same);
    EXPECT_EQ(converted<char*(char*)>(tstrlwr), same);
}

TEST(StringHelpers, convertsBytesAbove127ByTheCharacterLocale) {
    const ScopedLocale locale({{LC_CTYPE, kLatin1Locale}});
    std::string upper, lower;
    for (int byte = 128; byte < 256; ++byte) {
        const bool isSmall = byte >= 0xE0 && byte <= 0xFE && byte != 0xF7;
        const bool isCapital = byte >= 0xC0 && byte <= 0xDE && byte != 0xD7;
        upper += static_cast<char>(isSmall ? byte - 0x20 : byte);
        lower += static_cast<char>(isCapital ? byte + 0x20 : byte);
    }
    EXPECT_EQ(converted<char*(char*)>(tstrupr), upper);
    EXPECT_EQ(converted<char*(char*)>(tstrlwr), lower);
}

// Passed on as -1, which toupper() takes for the end of a file, although the locale has a capital.
TEST(StringHelpers, leavesTheHighestByteSmall) {
    const ScopedLocale locale({{LC_CTYPE, kLatin9Locale}});
    char small[] = "\xFF\xBD";
    EXPECT_STREQ(tstrupr(small), "\xFF\xBC");
    char capital[] = "\xBE\xBC";
    EXPECT_STREQ(tstrlwr(capital), "\xFF\xBD");
}

TEST(StringHelpers, convertsWideCaseByTheCharacterLocale) {
    wchar_t text[] = L"aZ\u00E4\u00C4\u00DF\u0416";
    {
        const ScopedLocale locale({{LC_CTYPE, kDecimalCommaLocale}});
        EXPECT_EQ(tstrupr(text), text);
        EXPECT_STREQ(text, L"AZ\u00C4\u00C4\u00DF\u0416");
        EXPECT_EQ(tstrlwr(text), text);
        EXPECT_STREQ(text, L"az\u00E4\u00E4\u00DF\u0436");
    }
    const ScopedLocale locale({});
    EXPECT_STREQ(tstrupr(text), L"AZ\u00E4\u00E4\u00DF\u0436");
}

TEST(StringHelpers, printsWhatFitsAndGivesTheWholeLength) {
    const struct {
        unsigned int size;
        const char* printed;  // the buffer had "??????????????" before
    } rows[] = {
        {0, "??????????????"}, {1, ""}, {4, "012"}, {10, "012345678"}, {11, "0123456789"},
        {15, "0123456789"},
    };
    for (const auto& row : rows) {
        char buffer[16] = "??????????????";
        EXPECT_EQ(tsnprintf(buffer, row.size, "01%s%i", "2345", 6789), 10) << row.size;
        EXPECT_STREQ(buffer, row.printed) << row.size;
        EXPECT_EQ(buffer[11], '?') << row.size;
    }
}

TEST(StringHelpers, givesMinusOneWhenAWideTextDoesNotFit) {
    for (const unsigned int size : {0U, 1U, 4U, 10U, 11U, 15U}) {
        std::wstring buffer(16, L'?');
        const int length = tsnprintf(buffer.data(), size, L"01%ls%i", L"2345", 6789);
        EXPECT_EQ(length, size > 10 ? 10 : -1) << size;
        if (size > 10) {
            EXPECT_STREQ(buffer.c_str(), L"0123456789") << size;
        }
        EXPECT_EQ(buffer.substr(std::min(size, 11U), 5), L"?????") << size;
    }
}

TEST(StringHelpers, writesNothingBehindAnEmptyWideText) {
    wchar_t buffer[] = L"????";
    EXPECT_EQ(tsnprintf(buffer, 4, L"%ls", L""), 0);
    EXPECT_EQ(std::wstring(buffer, 4), std::wstring(L"\0???", 4));
}

TEST(StringHelpers, terminatesAWideTextThatDoesNotFit) {
    for (const unsigned int size : {1U, 4U, 10U}) {
        std::wstring buffer(16, L'?');
        tsnprintf(buffer.data(), size, L"01%ls%i", L"2345", 6789);
        EXPECT_STREQ(buffer.c_str(), std::wstring(L"0123456789", size - 1).c_str()) << size;
    }
}

TEST(StringHelpers, countsCharactersBeforeTheTerminator) {
    EXPECT_EQ(tstrlen(""), 0U);
    EXPECT_EQ(tstrlen("abc\0def"), 3U);
    EXPECT_EQ(tstrlen("\xC3\xA4"), 2U);
    EXPECT_EQ(tstrlen(L""), 0U);
    EXPECT_EQ(tstrlen(L"abc\0def"), 3U);
    EXPECT_EQ(tstrlen(L"\u00E4"), 1U);
}

TEST(StringHelpers, appendsAtMostSizeCharactersWhateverTheRoom) {
    const struct {
        unsigned int size;
        const char* joined;
    } rows[] = {{0, "ab"}, {1, "abc"}, {2, "abcd"}, {3, "abcde"}, {4, "abcde"}, {100, "abcde"}};
    for (const auto& row : rows) {
        char dest[8] = {'a', 'b', '\0', '?', '?', '?', '?', '?'};
        EXPECT_EQ(tstrcat(dest, row.size, "cde"), dest);
        EXPECT_STREQ(dest, row.joined) << row.size;
        EXPECT_EQ(dest[6], '?') << row.size;
    }
}

TEST(StringHelpers, appendsAllOfAWideTextWhateverTheSize) {
    for (const unsigned int size : {0U, 1U, 100U}) {
        wchar_t dest[8] = L"ab";
        EXPECT_EQ(tstrcat(dest, size, L"cde"), dest);
        EXPECT_STREQ(dest, L"abcde") << size;
    }
}

TEST(StringHelpers, copiesExactlySizeBytes) {
    const struct {
        unsigned int size;
        const char* src;
        const char* bytes;  // nine of them, the buffer held '?' before
    } rows[] = {
        {8, "0123456789", "01234567?"},                                // cut, without terminator
        {8, "01234567", "01234567?"},                                  // the terminator did not fit
        {8, "0123456", "0123456\0?"},   {8, "abc", "abc\0\0\0\0\0?"},  // filled up with zero bytes
        {8, "", "\0\0\0\0\0\0\0\0?"},   {2, "abc", "ab???????"},      {0, "abc", "?????????"},
    };
    for (const auto& row : rows) {
        std::string dest(9, '?');
        EXPECT_EQ(tstrcpy(dest.data(), row.size, row.src), dest.data());
        EXPECT_EQ(dest, std::string(row.bytes, 9)) << row.src;
    }
}

TEST(StringHelpers, copiesAllOfAWideTextWhateverTheSize) {
    for (const unsigned int size : {0U, 1U, 8U}) {
        std::wstring dest(8, L'?');
        EXPECT_EQ(tstrcpy(dest.data(), size, L"abc"), dest.data());
        EXPECT_EQ(dest, std::wstring(L"abc\0????", 8)) << size;
    }
}

TEST(StringHelpers, comparesCharacterByCharacter) {
    EXPECT_EQ(tstrcmp("same", "same"), 0);
    EXPECT_EQ(tstrcmp("", ""), 0);
    EXPECT_LT(tstrcmp("abc", "abd"), 0);
    EXPECT_GT(tstrcmp("b", "abc"), 0);
    EXPECT_LT(tstrcmp("ab", "abc"), 0);
    EXPECT_GT(tstrcmp("abc", ""), 0);
    EXPECT_LT(tstrcmp("A", "a"), 0);
    EXPECT_GT(tstrcmp("\x80", "z"), 0);
    EXPECT_EQ(tstrcmp(L"same", L"same"), 0);
    EXPECT_LT(tstrcmp(L"abc", L"abd"), 0);
    EXPECT_GT(tstrcmp(L"b", L"abc"), 0);
    EXPECT_LT(tstrcmp(L"ab", L"abc"), 0);
    EXPECT_GT(tstrcmp(L"\u20AC", L"z"), 0);
}

TEST(StringHelpers, comparesInNoLocalesOrder) {
    const ScopedLocale locale({{LC_ALL, kDecimalCommaLocale}});
    EXPECT_GT(tstrcmp("a", "B"), 0);
    EXPECT_GT(tstrcmp(L"a", L"B"), 0);
}

}  // namespace
