// Whether files may be written, found out with a file that is made to be removed at once.
#include "sdk/camera/WriteAccess.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace dax {

namespace {

constexpr const char* kTestFile = "/.thermika_access";
constexpr mode_t kFileMode = 0666;  // less the umask, as fopen() creates files

}  // namespace

int writeAccessError(const std::string& directory) {
    const std::string path = directory + kTestFile;
    // What fopen() does for "w", but without waiting for the reader of a pipe of that name.
    const int file =
        open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK, kFileMode);
    if (file < 0) return errno;
    close(file);
    std::remove(path.c_str());
    return 0;
}

}  // namespace dax
