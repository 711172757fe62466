// What the whole process shares, as a test needs it: working directory, mask of file modes, locale,
// time zone, and a wall clock that stands where it was put. All comes back at the end of the test.
#pragma once

#include <sys/types.h>

#include <clocale>
#include <cstdint>
#include <initializer_list>
#include <locale>
#include <string>
#include <utility>

namespace thermika_test {

/// Works in another directory while it lives; throws, which fails the test, when that cannot be.
class WorkingDirectory {
public:
    explicit WorkingDirectory(const std::string& path);
    ~WorkingDirectory();
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

private:
    int m_former;
};

/// While it lives, files are created with their modes less `mask`.
class Umask {
public:
    explicit Umask(mode_t mask);
    ~Umask();
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;

private:
    mode_t m_former;
};

constexpr const char* kDecimalCommaLocale = "de_DE.UTF-8";
constexpr const char* kLatin1Locale = "de_DE.ISO-8859-1";
constexpr const char* kLatin9Locale = "de_DE.ISO-8859-15@euro";  // has a capital for byte 0xFF

/// The whole locale is "C" but for the categories given. Throws when the system lacks a locale.
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

/// While it lives, the clock stands still. One at a time. A program that is linked with this has
/// gettimeofday() and time() of its own, which give the system's time otherwise.
class ScopedClock {
public:
    /// Microseconds since the Unix epoch.
    explicit ScopedClock(std::int64_t nowUs = 0);
    ~ScopedClock();
    ScopedClock(const ScopedClock&) = delete;
    ScopedClock& operator=(const ScopedClock&) = delete;

    void set(std::int64_t nowUs);
    void advance(std::int64_t us);
};

/// While it lives, local time is that of `zone`, a name in the system's time zone database.
class ScopedTimeZone {
public:
    explicit ScopedTimeZone(const char* zone);
    ~ScopedTimeZone();
    ScopedTimeZone(const ScopedTimeZone&) = delete;
    ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;

private:
    bool m_hadZone;
    std::string m_former;
};

}  // namespace thermika_test
