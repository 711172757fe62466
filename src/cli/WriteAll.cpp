// With write(): the C library's dprintf() asks for the position first, and stays silent where that
// fails.
#include "cli/WriteAll.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace thermika::cli {

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            return false;
    }
    return true;
}

}  // namespace thermika::cli
