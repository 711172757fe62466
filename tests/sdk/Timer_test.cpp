// The stopwatch, on a clock that the test moves.
#include "sdk/Timer.h"

#include <cstdint>

#include <gtest/gtest.h>

#include "support/ProcessState.h"

namespace {

using dax::Timer;
using thermika_test::ScopedClock;

constexpr std::int64_t kStartUs = 1'700'000'000'250'000;

TEST(Timer, startsWhenItIsMade) {
    ScopedClock clock(kStartUs);
    Timer timer;
    EXPECT_EQ(timer.getTime(), 0.0L);
    clock.advance(1'500'500);
    EXPECT_EQ(timer.getTime(), 1500.5L);
}

TEST(Timer, keepsRunningWhenItIsRead) {
    ScopedClock clock(kStartUs);
    Timer timer;
    for (const long double expected : {250.0L, 500.0L, 750.0L}) {
        clock.advance(250'000);
        EXPECT_EQ(timer.getTime(), expected);
    }
}

TEST(Timer, givesTheTimeOfDayWhateverItsStart) {
    ScopedClock clock(kStartUs);
    Timer timer;
    EXPECT_EQ(timer.getTimeNow(), 1700000000250.0L);
    clock.advance(1'000'000);
    timer.reset();
    EXPECT_EQ(timer.getTimeNow(), 1700000001250.0L);
    EXPECT_EQ(timer.getTime(), 0.0L) << "reading the time of day must not move the start";
}

TEST(Timer, resetGivesTheTimeSinceTheFormerStart) {
    ScopedClock clock(kStartUs);
    Timer timer;
    clock.advance(3'000'000);
    EXPECT_EQ(timer.reset(), 3000.0L);
    EXPECT_EQ(timer.getTime(), 0.0L);
    clock.advance(500);
    EXPECT_EQ(timer.reset(), 0.5L);
    clock.advance(125'000);
    EXPECT_EQ(timer.getTime(), 125.0L);
}

TEST(Timer, givesNegativeTimesWhenTheClockGoesBackwards) {
    ScopedClock clock(kStartUs);
    Timer timer;
    clock.advance(-2'000'000);
    EXPECT_EQ(timer.getTime(), -2000.0L);
    EXPECT_EQ(timer.reset(), -2000.0L);
    EXPECT_EQ(timer.getTime(), 0.0L);
}

TEST(Timer, keepsItsStartApartFromOtherTimers) {
    ScopedClock clock(kStartUs);
    Timer first;
    clock.advance(1'000'000);
    Timer second;
    clock.advance(1'000'000);
    EXPECT_EQ(second.reset(), 1000.0L);
    EXPECT_EQ(first.getTime(), 2000.0L);
}

// The clock's milliseconds are doubles: at this time their steps are a quarter of a microsecond.
TEST(Timer, resetTwiceInQuickSuccessionGivesTheFewStepsOfTheClockBetween) {
    ScopedClock clock(kStartUs);
    Timer timer;
    clock.advance(1'000'000);
    timer.reset();
    EXPECT_EQ(timer.reset(), 0.0L);
    clock.advance(1);
    EXPECT_EQ(timer.reset(), 4 / 4096.0L);
    EXPECT_EQ(timer.getTime(), 0.0L);
}

}  // namespace
