// When a call ends early, and what is said then.
#include "fetch/Stop.h"

#include <atomic>
#include <chrono>
#include <thread>

#include <gtest/gtest.h>

namespace {

using std::chrono::seconds;
using thermika::fetch::Stop;

TEST(Stop, isNeverDueWithoutALimitAndACaller) {
    const Stop stop(seconds(0), nullptr);
    EXPECT_FALSE(stop.isDue());
    EXPECT_EQ(stop.reason(), "");
}

TEST(Stop, isDueWhenItsTimeIsOver) {
    const Stop stop(seconds(1), nullptr);
    EXPECT_FALSE(Stop(seconds(1000), nullptr).isDue());
    std::this_thread::sleep_for(seconds(1));
    EXPECT_TRUE(stop.isDue());
    EXPECT_EQ(stop.reason(), "the time limit of 1 s is over");
}

TEST(Stop, isDueWhenItsCallerSaysSo) {
    std::atomic<bool> cancel{false};
    const Stop stop(seconds(1000), &cancel);
    EXPECT_FALSE(stop.isDue());
    cancel = true;
    EXPECT_TRUE(stop.isDue());
    EXPECT_EQ(stop.reason(), "cancelled");
}

}  // namespace
