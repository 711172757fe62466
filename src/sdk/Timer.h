// A millisecond stopwatch on the wall clock that log lines use. Not monotonic: when the system's
// clock is set back, elapsed times can be negative.
#pragma once

namespace dax {

/// A stopwatch.
class Timer {
public:
    /// Starts at once.
    Timer();
    ~Timer() = default;

    /// Milliseconds since the Unix epoch; independent of this timer's start.
    long double getTimeNow();

    /// Milliseconds since the start; the timer keeps running.
    long double getTime();

    /// Milliseconds since the previous start; the timer starts again at this instant.
    long double reset();

private:
    long double m_start;
};

}  // namespace dax
