#ifndef THERMIKA_TESTS_SUPPORT_MOMENTS_H
#define THERMIKA_TESTS_SUPPORT_MOMENTS_H

#include <chrono>
#include <functional>

namespace thermika_test {

// Fifty moments for each kind of interruption, in rounds that end in time on a busy machine too.
constexpr unsigned kRounds = 5;

/// When an interruption came: before the program minded it, while it was at work, or after its end.
enum class Came { kTooEarly, kInTime, kTooLate };

/// Calls `interruptAfter` with moments between the beginning and the end of what takes about
/// `whole`, others in each round, until ten have come in time; fails where that does not happen.
/// How long it takes changes with what else the machine does, and so do the moments.
void interruptAtMoments(std::chrono::steady_clock::duration whole, unsigned round,
                        const std::function<Came(std::chrono::microseconds)>& interruptAfter);

}  // namespace thermika_test

#endif
