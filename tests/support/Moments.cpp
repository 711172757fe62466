#include "support/Moments.h"

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

namespace thermika_test {

void interruptAtMoments(std::chrono::steady_clock::duration whole, unsigned round,
                        const std::function<Came(std::chrono::microseconds)>& interruptAfter) {
    using std::chrono::microseconds;
    constexpr int kMomentsOfARound = 10;
    constexpr int kMostTries = 500;
    std::mt19937 random(1408 + round);
    microseconds longest = std::chrono::duration_cast<microseconds>(whole);
    int inTime = 0;
    for (int i = 0; inTime < kMomentsOfARound && i < kMostTries; ++i) {
        std::uniform_int_distribution<microseconds::rep> any(0, longest.count());
        const microseconds moment(any(random));
        switch (interruptAfter(moment)) {
            case Came::kTooEarly:
                longest += longest / 2;
                break;
            case Came::kInTime:
                ++inTime;
                break;
            case Came::kTooLate:
                longest = std::max(moment, microseconds(1));
                break;
        }
    }
    // Otherwise it would have shown less than it says.
    EXPECT_EQ(inTime, kMomentsOfARound);
}

}  // namespace thermika_test
