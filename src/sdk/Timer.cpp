// The stopwatch: differences of the wall clock.
#include "sdk/Timer.h"

#include "sdk/base/WallClock.h"

namespace dax {

Timer::Timer() : m_start(kelvra::wallClockMs()) {}

long double Timer::getTimeNow() { return kelvra::wallClockMs(); }

long double Timer::getTime() { return kelvra::wallClockMs() - m_start; }

long double Timer::reset() {
    const long double now = kelvra::wallClockMs();
    const long double elapsed = now - m_start;
    m_start = now;
    return elapsed;
}

}  // namespace dax
