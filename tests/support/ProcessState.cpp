// See the header. The two functions of the C library are defined here under their own names, so the
// statically linked product code calls these.
#include "support/ProcessState.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <stdexcept>

namespace {

constexpr std::int64_t kUsPerSecond = 1000000;

bool g_stands = false;
std::int64_t g_nowUs = 0;

timeval timeOfDay() noexcept {
    if (!g_stands) {
        timespec real{};
        clock_gettime(CLOCK_REALTIME, &real);
        return {real.tv_sec, real.tv_nsec / 1000};
    }
    std::int64_t seconds = g_nowUs / kUsPerSecond;
    if (g_nowUs % kUsPerSecond < 0) --seconds;  // microseconds count upwards before the epoch too
    return {seconds, g_nowUs - seconds * kUsPerSecond};
}

}  // namespace

extern "C" int gettimeofday(timeval* __restrict now, void* __restrict /*zone*/) noexcept {
    *now = timeOfDay();
    return 0;
}

extern "C" std::time_t time(std::time_t* now) noexcept {
    const std::time_t seconds = timeOfDay().tv_sec;
    if (now != nullptr) *now = seconds;
    return seconds;
}

namespace thermika_test {

WorkingDirectory::WorkingDirectory(const std::string& path)
    : m_former(open(".", O_PATH | O_CLOEXEC)) {
    if (m_former < 0 || chdir(path.c_str()) != 0)
        throw std::runtime_error("cannot work in " + path);
}

WorkingDirectory::~WorkingDirectory() {
    if (fchdir(m_former) != 0) std::abort();
    close(m_former);
}

Umask::Umask(mode_t mask) : m_former(umask(mask)) {}

Umask::~Umask() { umask(m_former); }

ScopedLocale::ScopedLocale(std::initializer_list<std::pair<int, const char*>> categories)
    : m_former(std::setlocale(LC_ALL, nullptr)) {
    std::setlocale(LC_ALL, "C");
    for (const auto& [category, name] : categories) {
        if (std::setlocale(category, name) != nullptr) continue;
        std::setlocale(LC_ALL, m_former.c_str());
        throw std::runtime_error(std::string("the locale ") + name +
                                 " is missing (install the package locales-all)");
    }
}

ScopedLocale::~ScopedLocale() { std::setlocale(LC_ALL, m_former.c_str()); }

std::string numericLocale() { return std::setlocale(LC_NUMERIC, nullptr); }

ScopedClock::ScopedClock(std::int64_t nowUs) {
    g_stands = true;
    g_nowUs = nowUs;
}

ScopedClock::~ScopedClock() { g_stands = false; }

void ScopedClock::set(std::int64_t nowUs) { g_nowUs = nowUs; }

void ScopedClock::advance(std::int64_t us) { g_nowUs += us; }

ScopedTimeZone::ScopedTimeZone(const char* zone) : m_hadZone(std::getenv("TZ") != nullptr) {
    if (m_hadZone) m_former = std::getenv("TZ");
    setenv("TZ", zone, 1);
    tzset();
}

ScopedTimeZone::~ScopedTimeZone() {
    if (m_hadZone)
        setenv("TZ", m_former.c_str(), 1);
    else
        unsetenv("TZ");
    tzset();
}

}  // namespace thermika_test
