// The wall clock that log lines and the stopwatch share. It follows the system's clock, so it can
// go backwards.
#pragma once

namespace kelvra {

/// Milliseconds since the Unix epoch, computed in double precision: seconds * 1000.0 +
/// microseconds / 1000.0.
long double wallClockMs();

}  // namespace kelvra
