// Loads one description with one library, once: what a program pays for its first load, from its
// start to its end. Linked once with each library, and dynamically, so that each brings its own
// start.
//   thermika-bench-first-load-<library> FILE
#include <cstdio>

#include "support/Readers.h"

int main(int argc, char** argv) {
    bench::Camera camera;
    if (argc == 2 && bench::THERMIKA_BENCH_READER.read(argv[1], camera) && !camera.optics.empty())
        return 0;
    std::fputs("not loaded\n", stderr);
    return 1;
}
