// What a number scan leaves of the process's numeric locale.
#include "sdk/base/NumericLocale.h"

#include <clocale>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "support/ProcessState.h"
#include "support/TestFiles.h"

namespace {

using dax::NumericLocaleGuard;
using thermika_test::kDecimalCommaLocale;
using thermika_test::kLatin1Locale;
using thermika_test::numericLocale;
using thermika_test::ScopedLocale;

TEST(NumericLocale, isCWhileTheGuardLives) {
    const ScopedLocale locale({{LC_CTYPE, kDecimalCommaLocale}, {LC_NUMERIC, kDecimalCommaLocale}});
    const NumericLocaleGuard guard;
    EXPECT_EQ(numericLocale(), "C");
    EXPECT_STREQ(std::localeconv()->decimal_point, ".");
}

TEST(NumericLocale, bearsTheCharacterLocalesNameAfterTheGuard) {
    const ScopedLocale locale({{LC_CTYPE, kDecimalCommaLocale}});
    { const NumericLocaleGuard guard; }
    EXPECT_EQ(numericLocale(), kDecimalCommaLocale);
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
}

TEST(NumericLocale, losesANumericLocaleThatWasSetAlone) {
    const ScopedLocale locale({{LC_NUMERIC, kDecimalCommaLocale}});
    { const NumericLocaleGuard guard; }
    EXPECT_EQ(numericLocale(), "C");
}

TEST(NumericLocale, takesTheNameThatTheCharacterLocaleHadWhenTheGuardBegan) {
    const ScopedLocale locale({{LC_CTYPE, kLatin1Locale}});
    {
        const NumericLocaleGuard guard;
        std::setlocale(LC_CTYPE, "C");
    }
    EXPECT_EQ(numericLocale(), kLatin1Locale);
}

TEST(NumericLocale, leavesTheOtherCategoriesAlone) {
    const ScopedLocale locale({{LC_ALL, kDecimalCommaLocale}});
    { const NumericLocaleGuard guard; }
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), kDecimalCommaLocale);
}

TEST(NumericLocale, staysCWhenTheSystemHasNoSuchNumericLocale) {
    const ScopedLocale locale({});
    const thermika_test::TempDir locales;
    std::filesystem::create_directory(locales / "half");
    std::filesystem::copy_file("/usr/lib/locale/C.utf8/LC_CTYPE", locales / "half/LC_CTYPE");
    setenv("LOCPATH", locales.path().c_str(), 1);
    const char* const character = std::setlocale(LC_CTYPE, "half");
    EXPECT_STREQ(character, "half");
    EXPECT_EQ(std::setlocale(LC_NUMERIC, "half"), nullptr);
    { const NumericLocaleGuard guard; }
    EXPECT_EQ(numericLocale(), "C");
    unsetenv("LOCPATH");
}

TEST(NumericLocale, canBeLeftAsAGuardDoesWithoutOne) {
    {
        const ScopedLocale locale({{LC_CTYPE, kDecimalCommaLocale}});
        dax::setNumericLocaleAsCharacterLocale();
        EXPECT_EQ(numericLocale(), kDecimalCommaLocale);
        dax::setNumericLocaleAsCharacterLocale();
        EXPECT_EQ(numericLocale(), kDecimalCommaLocale);
    }
    const ScopedLocale locale({{LC_NUMERIC, kDecimalCommaLocale}});
    dax::setNumericLocaleAsCharacterLocale();
    EXPECT_EQ(numericLocale(), "C");
}

}  // namespace
