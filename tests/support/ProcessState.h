// Time for tests: a wall clock that stands where it was put, and the local time zone. A test that
// uses ScopedClock has its own gettimeofday() and time() linked in; they give the system's time
// while no ScopedClock lives.
#pragma once

#include <cstdint>
#include <string>

namespace thermika_test {

/// While it lives, the clock stands still. One at a time.
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
