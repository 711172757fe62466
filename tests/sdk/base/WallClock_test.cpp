// The wall clock: its unit, its precision, and times that nobody expects.
#include "sdk/base/WallClock.h"

#include <chrono>

#include <gtest/gtest.h>

#include "support/ProcessState.h"

namespace {

using kelvra::wallClockMs;
using thermika_test::ScopedClock;

TEST(WallClock, givesMillisecondsSinceTheEpoch) {
    ScopedClock clock;
    EXPECT_EQ(wallClockMs(), 0.0L);
    clock.set(1);
    EXPECT_EQ(wallClockMs(), 0.001);
    clock.set(2'000'000);
    EXPECT_EQ(wallClockMs(), 2000.0L);
    clock.set(86'400'250'000);
    EXPECT_EQ(wallClockMs(), 86400250.0L);
}

TEST(WallClock, isComputedInDoublePrecision) {
    const ScopedClock clock(1'700'000'000'000'731);
    constexpr double kRounded = 1700000000 * 1000.0 + 731 / 1000.0;
    EXPECT_EQ(wallClockMs(), kRounded);
    if (sizeof(long double) > sizeof(double)) {  // not on 32-bit ARM
        EXPECT_NE(wallClockMs(), 1700000000 * 1000.0L + 731 / 1000.0L);
    }
}

TEST(WallClock, isNegativeBeforeTheEpoch) {
    const ScopedClock clock(-1'750'000);
    EXPECT_EQ(wallClockMs(), -1750.0L);
}

TEST(WallClock, followsTheSystemsClock) {
    const auto systemMs = [] {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        return static_cast<long double>(std::chrono::nanoseconds(now).count()) / 1e6L;
    };
    // Somebody may set the clock meanwhile, but not each time.
    bool isBetween = false;
    for (int attempt = 0; attempt < 10 && !isBetween; ++attempt) {
        const long double before = systemMs() - 1;  // the last millisecond may be rounded
        const long double now = wallClockMs();
        isBetween = before <= now && now <= systemMs() + 1;
    }
    EXPECT_TRUE(isBetween) << wallClockMs() << " is not " << systemMs();
}

}  // namespace
