// See the header.
#include "support/Coverage.h"

#ifdef THERMIKA_COVERAGE

#include <sys/resource.h>

#include <csignal>

extern "C" void __gcov_dump();  // of the compiler's own library

namespace {

[[maybe_unused]] const auto g_formerHandler =
    std::signal(SIGABRT, [](int /*signal*/) { __gcov_dump(); });

}  // namespace

void thermika_test::keepCoverage() {
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);
    __gcov_dump();
}

#else

void thermika_test::keepCoverage() {}

#endif
