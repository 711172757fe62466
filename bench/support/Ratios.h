// Runs the registered benchmarks and sets the times of each group against one another.
#pragma once

namespace bench {

/// Benchmarks are named "<group>/<contestant>". After the usual report, prints for every group how
/// many times as long as each of the others its first contestant took, each in the shortest of its
/// repetitions. Returns the exit status of the program: a failure, with a message on standard
/// error, when one of them failed or a group has nobody to be compared with.
int runAndCompare(int argc, char** argv);

}  // namespace bench
