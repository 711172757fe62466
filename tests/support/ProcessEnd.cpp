// See the header. Each of the two belongs to a build of its own.
#include "support/ProcessEnd.h"

#include <sys/resource.h>

namespace {

/// Reports are written through descriptors, which a test may have forbidden.
[[maybe_unused]] void allowDescriptors() {
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);
}

}  // namespace

#if defined(THERMIKA_COVERAGE)

#include <csignal>

extern "C" void __gcov_dump();  // of the compiler's own library

namespace {

[[maybe_unused]] const auto g_formerHandler =
    std::signal(SIGABRT, [](int /*signal*/) { __gcov_dump(); });

}  // namespace

int thermika_test::statusAtEnd(int status) {
    allowDescriptors();
    __gcov_dump();
    return status;
}

#elif defined(THERMIKA_LOOKS_FOR_LEAKS)

#include <sanitizer/lsan_interface.h>

int thermika_test::statusAtEnd(int status) {
    allowDescriptors();
    return __lsan_do_recoverable_leak_check() != 0 ? kLeaked : status;
}

#else

int thermika_test::statusAtEnd(int status) { return status; }

#endif
