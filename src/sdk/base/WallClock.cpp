// The one place that reads the time of day for log lines and stopwatches.
#include "sdk/base/WallClock.h"

#include <sys/time.h>

namespace kelvra {

long double wallClockMs() {
    timeval now{};
    gettimeofday(&now, nullptr);
    const double ms =
        static_cast<double>(now.tv_sec) * 1000.0 + static_cast<double>(now.tv_usec) / 1000.0;
    return ms;
}

}  // namespace kelvra
