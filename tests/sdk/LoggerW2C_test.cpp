// The log sink's conversion of wide texts, with its fixed buffer.
#include "sdk/Logger.h"

#include <algorithm>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "support/ProcessState.h"

namespace {

using kelvra::W2C;
using thermika_test::kDecimalCommaLocale;
using thermika_test::kLatin1Locale;
using thermika_test::ScopedLocale;

TEST(LoggerW2C, givesANarrowTextBack) {
    const char text[] = "narrow";
    EXPECT_EQ(W2C(text), text);
    const char* const none = nullptr;
    EXPECT_EQ(W2C(none), nullptr);
}

TEST(LoggerW2C, convertsByTheCharacterLocale) {
    {
        const ScopedLocale locale({{LC_CTYPE, kDecimalCommaLocale}});
        EXPECT_STREQ(W2C(L"20 \u00B0C, \u20AC"), "20 \xC2\xB0\x43, \xE2\x82\xAC");
    }
    const ScopedLocale locale({{LC_CTYPE, kLatin1Locale}});
    EXPECT_STREQ(W2C(L"20 \u00B0C"), "20 \xB0\x43");
}

TEST(LoggerW2C, overwritesTheFormerTextInItsOneBuffer) {
    const char* const first = W2C(L"a long text");
    EXPECT_STREQ(first, "a long text");
    EXPECT_EQ(W2C(L"short"), first);
    EXPECT_STREQ(first, "short");
    EXPECT_STREQ(W2C(L""), "");
}

TEST(LoggerW2C, endsWhereACharacterCannotBeConverted) {
    const ScopedLocale locale({});
    W2C(L"an earlier and longer text");
    EXPECT_STREQ(W2C(L"before\u20ACafter"), "before");
    W2C(L"an earlier text");
    EXPECT_STREQ(W2C(L"\u20AC"), "");
}

TEST(LoggerW2C, givesAtMost1023Bytes) {
    for (const std::size_t length : {1022U, 1023U, 1024U, 1025U, 5000U}) {
        const std::string converted = W2C(std::wstring(length, L'w').c_str());
        EXPECT_EQ(converted, std::string(std::min<std::size_t>(length, 1023), 'w')) << length;
    }
}

TEST(LoggerW2C, cutsAtACharactersBoundary) {
    const ScopedLocale locale({{LC_CTYPE, kDecimalCommaLocale}});
    W2C(std::wstring(1023, L'w').c_str());  // nothing of it may show behind the cut
    EXPECT_EQ(std::strlen(W2C(std::wstring(600, L'\u00E4').c_str())), 1022U);
    EXPECT_EQ(std::strlen(W2C(std::wstring(600, L'\u20AC').c_str())), 1023U);
    const std::wstring astride = std::wstring(1021, L'w') + L"\u20AC";
    EXPECT_EQ(W2C(astride.c_str()), std::string(1021, 'w'));
    const std::wstring fitting = std::wstring(1020, L'w') + L"\u20AC";
    EXPECT_EQ(W2C(fitting.c_str()), std::string(1020, 'w') + "\xE2\x82\xAC");
}

}  // namespace
