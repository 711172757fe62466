// Locales for tests: sets some categories of the process's locale for as long as a test needs them.
#pragma once

#include <clocale>
#include <initializer_list>
#include <locale>
#include <string>
#include <utility>

namespace thermika_test {

constexpr const char* kDecimalCommaLocale = "de_DE.UTF-8";
constexpr const char* kLatin1Locale = "de_DE.ISO-8859-1";
constexpr const char* kLatin9Locale = "de_DE.ISO-8859-15@euro";  // has a capital for byte 0xFF

/// The whole locale is "C" but for the categories given; the former one returns at the end. Throws,
/// which fails the test, when the system lacks a locale.
class ScopedLocale {
public:
    explicit ScopedLocale(std::initializer_list<std::pair<int, const char*>> categories);
    ~ScopedLocale();
    ScopedLocale(const ScopedLocale&) = delete;
    ScopedLocale& operator=(const ScopedLocale&) = delete;

private:
    std::string m_former;
};

/// Groups digits by three, as many locales do.
class Grouping : public std::numpunct<char> {
protected:
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// The name that LC_NUMERIC bears now.
std::string numericLocale();

}  // namespace thermika_test
