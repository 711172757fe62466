// The one place that reads the time of day for log lines and stopwatches.
#include "sdk/base/WallClock.h"

#include <sys/time.h>

namespace kelvra {

long double wallClockMs() {
    timeval now{};
    gettimeofday(&now, nullptr);
    // Volatile: an x87 processor rounds to a double only what it stores.
    const volatile double fraction = static_cast<double>(now.tv_usec) / 1000.0;
    const volatile double ms = static_cast<double>(now.tv_sec) * 1000.0 + fraction;
    return ms;
}

}  // namespace kelvra
