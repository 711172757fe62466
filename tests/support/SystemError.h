// How test support says that the system refused something: by an exception, which fails the test.
#pragma once

#include <cerrno>
#include <string>
#include <system_error>

namespace thermika_test {

/// With the reason in errno.
[[noreturn]] inline void throwSystemError(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace thermika_test
