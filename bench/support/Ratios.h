// Runs the registered benchmarks and sets the times of each group against one another.
#pragma once

namespace bench {

/// Benchmarks are named "<group>/<contestant>". After the usual report, prints for every group how
/// many times as long as each of the others its first contestant took. Returns the exit status of
/// the program.
int runAndCompare(int argc, char** argv);

}  // namespace bench
