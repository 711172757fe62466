// Keeps what a build that measures coverage has counted, where a process ends without its usual
// end. Does nothing in other builds.
#pragma once

namespace thermika_test {

/// To be called right before _exit(). Programs that link this in keep their counters in an abort()
/// too. Process: lifts the soft limit on open files.
void keepCoverage();

}  // namespace thermika_test
